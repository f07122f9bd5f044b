#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>
// The header of the access lists needs the one of the system before it.
// clang-format off
#include <windows.h>
#include <aclapi.h>
// clang-format on

#include <vx/Directory.h>
#include <vx/Filename.h>
#include <vx/detail/paths.h>
#include <vx/os/Directory.h>
#include <vx/os/File.h>
#include <vx/os/win32/Handle.h>
#include <vx/os/win32/OwnerOnly.h>
#include <vx/os/win32/Path.h>

namespace vxOS {

namespace {

using vxString::CString;
using vxString::IString;
using vxUtil::Error;

constexpr DWORD kAllSharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
// Without following a link, and for folders as well.
constexpr DWORD kAsItIs = FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS;
// The byte that stands for the lock lies beyond all content, which stays readable.
constexpr DWORD kLockByteHigh = 0x40000000;

HANDLE system(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

Error failure(const char* action, const CString& path) {
  const auto error = static_cast<int>(GetLastError());
  return {error, CString("cannot ") + action + " \"" + path + "\": " + file::errorText(error)};
}

std::uint64_t joined(DWORD high, DWORD low) {
  return std::uint64_t{high} << 32 | low;
}

bool query(HANDLE file, BY_HANDLE_FILE_INFORMATION& facts) {
  return GetFileType(file) == FILE_TYPE_DISK && GetFileInformationByHandle(file, &facts) != 0;
}

bool isOwnFile(const BY_HANDLE_FILE_INFORMATION& facts) {
  constexpr DWORD kOther = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  return (facts.dwFileAttributes & kOther) == 0 && facts.nNumberOfLinks == 1;
}

// The system counts steps of 100 ns since 1601-01-01.
std::int64_t unixNanoseconds(std::int64_t steps) {
  return (steps - 116'444'736'000'000'000) * 100;
}

std::int64_t unixNanoseconds(const FILETIME& time) {
  return unixNanoseconds(
      static_cast<std::int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime)));
}

bool isSameFile(HANDLE a, HANDLE b) {
  BY_HANDLE_FILE_INFORMATION first, second;
  return query(a, first) && query(b, second) &&
         first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
         first.nFileIndexHigh == second.nFileIndexHigh &&
         first.nFileIndexLow == second.nFileIndexLow;
}

std::wstring pathIn(const Directory& directory, const CString& name) {
  return systemPath(Filename::join(directory.path(), name));
}

// The system finds a file by other names than its own as well: short ones, those in another case or
// with blanks and full stops at the end, and those with a stream (':').
bool isNamed(HANDLE file, const CString& name) {
  std::wstring path(32768, L'\0');
  path.resize(GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()),
                                        FILE_NAME_NORMALIZED | VOLUME_NAME_DOS));
  const std::wstring own = path.substr(path.find_last_of(L'\\') + 1);
  return IString(own.c_str()).asMultibyte() == name && !name.contains(":");
}

bool writeAll(HANDLE file, std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1U << 30));
    if (WriteFile(file, bytes.data(), size, &written, nullptr) == 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

CString readAll(HANDLE file, std::size_t most) {
  LARGE_INTEGER length;
  const LARGE_INTEGER start = {};
  if (GetFileSizeEx(file, &length) == 0 || SetFilePointerEx(file, start, nullptr, FILE_BEGIN) == 0)
    return {};
  std::string text(std::min(most, static_cast<std::size_t>(length.QuadPart)), '\0');
  std::size_t size = 0;
  DWORD count = 1;
  while (size < text.size() && count > 0) {
    const auto wanted = static_cast<DWORD>(std::min<std::size_t>(text.size() - size, 1U << 30));
    if (ReadFile(file, &text[size], wanted, &count, nullptr) == 0) break;
    size += count;
  }
  return CString(std::string_view(text).substr(0, size));
}

// The owner and the access list of a folder.
struct Security {
  explicit Security(HANDLE folder) {
    GetSecurityInfo(folder, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                    &owner, nullptr, &list, nullptr, &memory);
  }
  ~Security() { LocalFree(memory); }
  Security(const Security&) = delete;
  Security& operator=(const Security&) = delete;

  PSID owner = nullptr;
  ACL* list = nullptr;  // null: everybody has all rights
  PSECURITY_DESCRIPTOR memory = nullptr;
};

bool isOfKind(PSID id, WELL_KNOWN_SID_TYPE kind) {
  return IsWellKnownSid(id, kind) != 0;
}

// Whether the identifier stands for this user, or for those who may do everything anyway.
bool isTrusted(PSID id) {
  const auto user = currentUser();
  return (user != nullptr &&
          EqualSid(id, reinterpret_cast<const TOKEN_USER*>(user.get())->User.Sid) != 0) ||
         isOfKind(id, WinLocalSystemSid) || isOfKind(id, WinBuiltinAdministratorsSid) ||
         isOfKind(id, WinCreatorOwnerSid);
}

// Whether an access list lets somebody else change what is in the folder.
bool letsOthersWrite(ACL* list) {
  constexpr DWORD kWriting = FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY | FILE_DELETE_CHILD | DELETE |
                             WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
  if (list == nullptr) return true;
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    if (GetAce(list, i, &entry) == 0) return true;
    auto* allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    if (allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE && (allowed->Mask & kWriting) != 0 &&
        !isTrusted(&allowed->SidStart))
      return true;
  }
  return false;
}

}  // namespace

int directory::makePrivate(const CString& path) {
  OwnerOnly owner;
  if (CreateDirectoryW(systemPath(path).c_str(), owner.get()) != 0) return 0;
  const auto error = static_cast<int>(GetLastError());
  return file::meansExists(error) ? 0 : error;
}

Directory::~Directory() {
  if (isOpen()) CloseHandle(system(handle_));
}

// As long as the handle is open, nobody can rename or delete the folder.
Error Directory::open(const CString& path) {
  if (detail::holdsZero(path.view())) return {1, "the path holds a zero byte"};
  Handle opened(CreateFileW(systemPath(path).c_str(), FILE_READ_ATTRIBUTES | READ_CONTROL,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                            FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION facts;
  if (!opened || !vxOS::query(opened.get(), facts)) return failure("open the folder", path);
  if ((facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    return {ERROR_DIRECTORY, "\"" + path + "\" is no folder"};
  *this = Directory();
  handle_ = reinterpret_cast<std::intptr_t>(opened.release());
  path_ = path;
  return {};
}

Error Directory::requirePrivate() const {
  const Security security(system(handle_));
  if (security.owner == nullptr) return failure("look at", path_);
  if (!isTrusted(security.owner))
    return {1, "the folder \"" + path_ + "\" belongs to another user"};
  if (letsOthersWrite(security.list))
    return {1, "the folder \"" + path_ + "\" can be written by other users"};
  return {};
}

bool Directory::isAt(const CString& path) const {
  if (detail::holdsZero(path.view())) return false;
  const Handle other(CreateFileW(systemPath(path).c_str(), FILE_READ_ATTRIBUTES, kAllSharing,
                                 nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  return other && isSameFile(system(handle_), other.get());
}

vx::vector<CString> Directory::names() const {
  vx::vector<CString> found;
  WIN32_FIND_DATAW entry;
  const HANDLE search = FindFirstFileW(pathIn(*this, "*").c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return found;
  do {
    const CString name = IString(entry.cFileName).asMultibyte();
    if (name != CString(".") && name != CString("..")) found.push_back(name);
  } while (FindNextFileW(search, &entry) != 0);
  FindClose(search);
  return found;
}

FileFacts Directory::query(const CString& name) const {
  const Handle file(CreateFileW(pathIn(*this, name).c_str(), FILE_READ_ATTRIBUTES, kAllSharing,
                                nullptr, OPEN_EXISTING, kAsItIs, nullptr));
  BY_HANDLE_FILE_INFORMATION facts;
  if (!file || !vxOS::query(file.get(), facts) || !isNamed(file.get(), name)) return {};
  return {isOwnFile(facts), joined(facts.nFileSizeHigh, facts.nFileSizeLow),
          unixNanoseconds(facts.ftLastWriteTime),
          joined(facts.nFileIndexHigh, facts.nFileIndexLow)};
}

std::int64_t Directory::lastChange(const CString& name) const {
  const Handle file(CreateFileW(pathIn(*this, name).c_str(), FILE_READ_ATTRIBUTES, kAllSharing,
                                nullptr, OPEN_EXISTING, kAsItIs, nullptr));
  FILE_BASIC_INFO facts;
  if (!file || GetFileInformationByHandleEx(file.get(), FileBasicInfo, &facts, sizeof facts) == 0)
    return 0;
  return unixNanoseconds(std::max(facts.LastWriteTime.QuadPart, facts.ChangeTime.QuadPart));
}

Error Directory::read(const CString& name, std::size_t most, CString& content) const {
  const Handle file(CreateFileW(pathIn(*this, name).c_str(), GENERIC_READ, kAllSharing, nullptr,
                                OPEN_EXISTING, kAsItIs, nullptr));
  BY_HANDLE_FILE_INFORMATION facts;
  if (!file || !vxOS::query(file.get(), facts)) return failure("read", name);
  content = readAll(file.get(), most);
  return {};
}

Error Directory::replace(const CString& name, std::string_view content) const {
  const CString written = temporaryName();
  const std::wstring path = pathIn(*this, written);
  Error error;
  {
    OwnerOnly owner;
    const Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, owner.get(), CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return failure("write", name);
    if (!writeAll(file.get(), content)) error = failure("write", name);
  }
  if (!error &&
      MoveFileExW(path.c_str(), pathIn(*this, name).c_str(), MOVEFILE_REPLACE_EXISTING) == 0)
    error = failure("write", name);
  if (error) DeleteFileW(path.c_str());
  return error;
}

bool Directory::remove(const CString& name) const {
  return DeleteFileW(pathIn(*this, name).c_str()) != 0;
}

// Nobody can delete the file while it is open.
Error DirectoryFile::open(const Directory& directory, const CString& name) {
  OwnerOnly owner;
  Handle file(CreateFileW(pathIn(directory, name).c_str(), GENERIC_READ | GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE, owner.get(), OPEN_ALWAYS,
                          FILE_ATTRIBUTE_NORMAL | kAsItIs, nullptr));
  BY_HANDLE_FILE_INFORMATION facts;
  if (!file || !query(file.get(), facts)) return failure("open", name);
  if (!isOwnFile(facts)) return {1, "\"" + name + "\" is no file of this user's own"};
  close();
  handle_ = reinterpret_cast<std::intptr_t>(file.release());
  name_ = name;
  size_ = joined(facts.nFileSizeHigh, facts.nFileSizeLow);
  return {};
}

void DirectoryFile::close() noexcept {
  if (const auto handle = std::exchange(handle_, Directory::kNone); handle != Directory::kNone)
    CloseHandle(system(handle));
}

Error DirectoryFile::tryLock(const Directory&, bool& isTaken) {
  OVERLAPPED place = {};
  place.OffsetHigh = kLockByteHigh;
  const bool isLocked =
      LockFileEx(system(handle_), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                 &place) != 0;
  const DWORD error = GetLastError();
  isTaken = !isLocked && (error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING);
  return isLocked || isTaken ? Error() : failure("lock", name_);
}

// Nobody can rename or delete a file that is open here.
bool DirectoryFile::isInPlace(const Directory&) const {
  return true;
}

CString DirectoryFile::read() const {
  return readAll(system(handle_), static_cast<std::size_t>(size_));
}

bool DirectoryFile::append(std::string_view bytes) {
  LARGE_INTEGER end;
  end.QuadPart = static_cast<LONGLONG>(size_);
  if (SetFilePointerEx(system(handle_), end, nullptr, FILE_BEGIN) == 0 ||
      !writeAll(system(handle_), bytes)) {
    if (!truncate(size_)) close();  // nothing may follow a torn end
    return false;
  }
  size_ += bytes.size();
  return true;
}

bool DirectoryFile::truncate(std::uint64_t size) {
  LARGE_INTEGER end;
  end.QuadPart = static_cast<LONGLONG>(size);
  if (SetFilePointerEx(system(handle_), end, nullptr, FILE_BEGIN) == 0 ||
      SetEndOfFile(system(handle_)) == 0)
    return false;
  size_ = size;
  return true;
}

}  // namespace vxOS
