#include <cwctype>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <string>
#include <string_view>
// The header of the access lists needs the one of the system before it.
// clang-format off
#include <windows.h>
#include <aclapi.h>
// clang-format on

#include <vx/OwnFile.h>
#include <vx/os/File.h>
#include <vx/os/win32/Handle.h>
#include <vx/os/win32/OwnerOnly.h>
#include <vx/os/win32/Path.h>

namespace vxOS {

namespace {

using vxString::CString;
using vxUtil::Error;

Error failure(const char* action, const CString& path) {
  const auto error = static_cast<int>(GetLastError());
  return {error, CString("cannot ") + action + " \"" + path + "\": " + file::errorText(error)};
}

// "C:\..." with or without the prefix of long paths, and no stream of a file (':'). Paths of
// devices, pipes and shares look otherwise.
bool isOnDrive(std::wstring_view path) {
  if (path.starts_with(L"\\\\?\\")) path.remove_prefix(4);
  return path.size() > 3 && std::iswalpha(path[0]) != 0 && path.substr(1, 2) == L":\\" &&
         path.find(L':', 2) == std::wstring_view::npos;
}

bool isOnLocalDrive(std::wstring_view path) {
  if (!isOnDrive(path)) return false;
  const wchar_t root[] = {path[path.find(L':') - 1], L':', L'\\', L'\0'};
  const UINT type = GetDriveTypeW(root);
  return type == DRIVE_FIXED || type == DRIVE_REMOVABLE || type == DRIVE_RAMDISK;
}

// Where the file really lies: a link among the folders may lead to a share.
std::wstring finalPath(HANDLE file) {
  std::wstring path(32768, L'\0');
  path.resize(GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()),
                                        FILE_NAME_NORMALIZED | VOLUME_NAME_DOS));
  return path;
}

bool isIdentifier(PSID owner, const std::unique_ptr<std::byte[]>& information) {
  static_assert(offsetof(TOKEN_USER, User.Sid) == 0 && offsetof(TOKEN_OWNER, Owner) == 0);
  return information != nullptr &&
         EqualSid(owner, *reinterpret_cast<const PSID*>(information.get())) != 0;
}

bool belongsToUser(HANDLE file) {
  PSID owner = nullptr;
  PSECURITY_DESCRIPTOR memory = nullptr;
  if (GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr,
                      nullptr, &memory) != ERROR_SUCCESS)
    return false;
  const std::unique_ptr<void, HLOCAL(WINAPI*)(HLOCAL)> kept(memory, LocalFree);
  return isIdentifier(owner, currentUser()) || isIdentifier(owner, ownerOfNewFiles());
}

const char* flawOf(HANDLE file, const BY_HANDLE_FILE_INFORMATION& facts) {
  constexpr DWORD kOther = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  if ((facts.dwFileAttributes & kOther) != 0) return "is no regular file";
  if (facts.nNumberOfLinks != 1) return "has other names";
  if (!isOnLocalDrive(finalPath(file))) return "lies on no disk of this machine";
  if (!belongsToUser(file)) return "belongs to another user";
  return nullptr;
}

HANDLE handleOf(std::FILE* stream) {
  return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

// The stream closes the handle from then on.
std::FILE* streamOf(Handle& file) {
  const int number = _open_osfhandle(reinterpret_cast<std::intptr_t>(file.get()),
                                     _O_RDONLY | _O_BINARY | _O_NOINHERIT);
  if (number == -1) return nullptr;
  file.release();
  std::FILE* stream = _fdopen(number, "rb");
  if (stream == nullptr) _close(number);
  return stream;
}

}  // namespace

// A share is not even asked for: the system would tell the other machine who the user is.
Error OwnFile::openOwn(const CString& path) {
  const auto refusal = [&path](const char* why) { return Error(1, "\"" + path + "\" " + why); };
  const std::wstring name = systemPath(path);
  if (!isOnLocalDrive(name)) return refusal("lies on no disk of this machine");
  constexpr DWORD kAsItIs = FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS |
                            SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
  Handle file(CreateFileW(name.c_str(), GENERIC_READ | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                          nullptr, OPEN_EXISTING, kAsItIs, nullptr));
  BY_HANDLE_FILE_INFORMATION facts;
  if (!file) return failure("open", path);
  if (GetFileType(file.get()) != FILE_TYPE_DISK) return refusal("is no regular file");
  if (GetFileInformationByHandle(file.get(), &facts) == 0) return failure("look at", path);
  if (const char* flaw = flawOf(file.get(), facts)) return refusal(flaw);
  stream_ = streamOf(file);
  if (stream_ == nullptr) return failure("open", path);
  size_ = std::uint64_t{facts.nFileSizeHigh} << 32 | facts.nFileSizeLow;
  return {};
}

// The open file itself is deleted, wherever somebody has moved it.
Error OwnFile::remove() {
  FILE_DISPOSITION_INFO deleted = {TRUE};
  if (SetFileInformationByHandle(handleOf(stream_), FileDispositionInfo, &deleted,
                                 sizeof deleted) == 0)
    return failure("delete", path_);
  close();
  return {};
}

void OwnFile::closeFolder() noexcept {}

}  // namespace vxOS
