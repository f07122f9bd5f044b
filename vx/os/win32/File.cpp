#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <io.h>
#include <iterator>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <windows.h>

#include <vx/Filename.h>
#include <vx/os/File.h>
#include <vx/os/win32/Handle.h>
#include <vx/os/win32/OwnerOnly.h>
#include <vx/os/win32/Path.h>

namespace vxOS::file {

namespace {

using vxString::CString;

int lastError() {
  return static_cast<int>(GetLastError());
}

int errorOf(BOOL success) {
  return success != 0 ? 0 : lastError();
}

// The other end of a pipe, which a path may name as well, must not act as this user.
constexpr DWORD kNoImpersonation = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

HANDLE openExisting(const std::wstring& path, DWORD access) {
  return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                     nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | kNoImpersonation,
                     nullptr);
}

std::uint64_t joined(DWORD high, DWORD low) {
  return (std::uint64_t{high} << 32) | low;
}

// The system counts steps of 100 ns since 1601-01-01.
std::int64_t unixSeconds(const FILETIME& time) {
  const auto steps = static_cast<std::int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime));
  return steps / 10'000'000 - 11'644'473'600;
}

// The flags of _wopen for a mode of fopen. Not every C library knows 'x' there, and a way to keep
// the file from the programs that this process starts.
int openFlags(std::string_view mode) {
  const auto has = [mode](char c) { return mode.find(c) != std::string_view::npos; };
  int flags = _O_NOINHERIT;
  flags |= has('+') ? _O_RDWR : mode[0] == 'r' ? _O_RDONLY : _O_WRONLY;
  if (mode[0] == 'w') flags |= _O_CREAT | _O_TRUNC;
  if (mode[0] == 'a') flags |= _O_CREAT | _O_APPEND;
  if (has('x')) flags |= _O_EXCL;
  if (has('b')) flags |= _O_BINARY;
  if (has('t')) flags |= _O_TEXT;
  return flags;
}

}  // namespace

const char kSeparator = '\\';
const char* const kTemporaryFolder = "c:\\Temp";
const int kNotAFolder = ERROR_DIRECTORY;

std::FILE* open(const CString& path, const char* mode) {
  const CString given = mode;
  if (given.isEmpty() || std::strchr("rwa", mode[0]) == nullptr) return nullptr;
  const int file = _wopen(systemPath(path).c_str(), openFlags(mode), _S_IREAD | _S_IWRITE);
  if (file == -1) return nullptr;
  std::FILE* stream = _fdopen(file, given.replaced("x", "").c_str());
  if (stream == nullptr) _close(file);
  return stream;
}

int query(const CString& path, FileStatus& status) {
  const Handle file(openExisting(systemPath(path), FILE_READ_ATTRIBUTES));
  if (!file) return lastError();
  BY_HANDLE_FILE_INFORMATION facts = {};
  const DWORD medium = GetFileType(file.get());
  const bool isOnDisk = medium == FILE_TYPE_DISK;
  if (isOnDisk && GetFileInformationByHandle(file.get(), &facts) == 0) return lastError();
  status.exists = true;
  status.isDirectory = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  status.type = status.isDirectory         ? _S_IFDIR
                : isOnDisk                 ? _S_IFREG
                : medium == FILE_TYPE_PIPE ? _S_IFIFO
                                           : _S_IFCHR;
  status.size = joined(facts.nFileSizeHigh, facts.nFileSizeLow);
  status.modified = unixSeconds(facts.ftLastWriteTime);
  return 0;
}

// Opening tells what the access lists and the medium allow together. A file that another program
// has locked is writable for this user all the same.
bool isWritable(const CString& path) {
  static_assert(FILE_ADD_FILE == FILE_WRITE_DATA);
  constexpr DWORD kKind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
  const std::wstring name = systemPath(path);
  if ((GetFileAttributesW(name.c_str()) & kKind) == FILE_ATTRIBUTE_READONLY) return false;
  return Handle(openExisting(name, FILE_ADD_FILE)) || GetLastError() == ERROR_SHARING_VIOLATION;
}

int makeFolder(const CString& path) {
  return errorOf(CreateDirectoryW(systemPath(path).c_str(), nullptr));
}

int makeFile(const CString& path) {
  OwnerOnly owner;
  const Handle file(CreateFileW(systemPath(path).c_str(), GENERIC_WRITE, 0, owner.get(), CREATE_NEW,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
  return file ? 0 : lastError();
}

// A folder without entries, such as an empty drive, has not even "." and "..".
int readFolder(const CString& path, vx::vector<CString>& names) {
  WIN32_FIND_DATAW entry;
  const std::wstring pattern = systemPath(Filename::join(path, "*"));
  const HANDLE first = FindFirstFileW(pattern.c_str(), &entry);
  if (first == INVALID_HANDLE_VALUE) return lastError() == ERROR_FILE_NOT_FOUND ? 0 : lastError();
  const std::unique_ptr<void, BOOL(WINAPI*)(HANDLE)> search(first, FindClose);
  do {
    names.push_back(vxString::IString(entry.cFileName).asMultibyte());
  } while (FindNextFileW(search.get(), &entry) != 0);
  return lastError() == ERROR_NO_MORE_FILES ? 0 : lastError();
}

int remove(const CString& path) {
  return errorOf(DeleteFileW(systemPath(path).c_str()));
}

int queryFilesystem(const CString& path, FilesystemStatus& status) {
  FileStatus holder;
  if (const int error = query(path, holder); error != 0) return error;
  const std::wstring name = systemPath(path);
  std::wstring volume(name.size() + 2, L'\0');
  ULARGE_INTEGER free, total;
  if (GetVolumePathNameW(name.c_str(), volume.data(), static_cast<DWORD>(volume.size())) == 0 ||
      GetDiskFreeSpaceExW(volume.c_str(), &free, &total, nullptr) == 0)
    return lastError();
  status = {total.QuadPart / 1024, free.QuadPart / 1024};
  return 0;
}

bool meansMissing(int error) {
  constexpr int kMissing[] = {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_INVALID_NAME,
                              ERROR_BAD_PATHNAME,   ERROR_INVALID_DRIVE,  ERROR_BAD_NETPATH,
                              ERROR_BAD_NET_NAME,   ERROR_DIRECTORY};
  return std::find(std::begin(kMissing), std::end(kMissing), error) != std::end(kMissing);
}

bool meansExists(int error) {
  return error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS;
}

CString errorText(int error) {
  wchar_t text[512] = L"";
  const DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  FormatMessageW(flags, nullptr, static_cast<DWORD>(error), 0, text, std::size(text), nullptr);
  const CString message = vxString::IString(text).asMultibyte().trimmed();
  if (message.isEmpty()) return CString::format("error %d", error);
  return message.endsWith(".") ? message.substring(0, message.length() - 1) : message;
}

}  // namespace vxOS::file
