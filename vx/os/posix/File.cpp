#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>

#include <vx/os/File.h>
#include <vx/os/posix/Path.h>

namespace vxOS::file {

namespace {

using vxString::CString;

int errorOf(int result) {
  return result == -1 ? errno : 0;
}

// Exact without a number of bytes, which might not fit into 64 bits.
std::uint64_t kilobytes(std::uint64_t blocks, std::uint64_t blockSize) {
  return blocks / 1024 * blockSize + blocks % 1024 * blockSize / 1024;
}

}  // namespace

const char kSeparator = '/';
const char* const kTemporaryFolder = "/tmp";
const int kNotAFolder = ENOTDIR;

// "e" keeps the file from the programs that this process starts.
std::FILE* open(const CString& path, const char* mode) {
  const CString given = mode;
  const CString uninherited = given.substring(0, 1) + "e" + given.substring(1);
  return std::fopen(systemPath(path).c_str(), uninherited.c_str());
}

int query(const CString& path, FileStatus& status) {
  struct stat facts;
  if (stat(systemPath(path).c_str(), &facts) != 0) return errno;
  status.exists = true;
  status.isDirectory = S_ISDIR(facts.st_mode);
  status.type = facts.st_mode & S_IFMT;
  status.size = static_cast<std::uint64_t>(facts.st_size);
  status.modified = facts.st_mtime;
  return 0;
}

bool isWritable(const CString& path) {
  FileStatus status;
  if (query(path, status) != 0) return false;
  const int wanted = status.isDirectory ? W_OK | X_OK : W_OK;
  return faccessat(AT_FDCWD, systemPath(path).c_str(), wanted, AT_EACCESS) == 0;
}

int makeFolder(const CString& path) {
  return errorOf(mkdir(systemPath(path).c_str(), 0777));
}

int makeFile(const CString& path) {
  const int file = ::open(systemPath(path).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  return file == -1 ? errno : errorOf(close(file));
}

int readFolder(const CString& path, vx::vector<CString>& names) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(systemPath(path).c_str()), closedir);
  if (!folder) return errno;
  for (;;) {
    errno = 0;
    const dirent* const entry = readdir(folder.get());
    if (!entry) return errno;
    names.emplace_back(entry->d_name);
  }
}

int remove(const CString& path) {
  return errorOf(unlink(systemPath(path).c_str()));
}

int queryFilesystem(const CString& path, FilesystemStatus& status) {
  struct statvfs facts;
  if (statvfs(systemPath(path).c_str(), &facts) != 0) return errno;
  status.totalKilobytes = kilobytes(facts.f_blocks, facts.f_frsize);
  status.freeKilobytes = kilobytes(facts.f_bavail, facts.f_frsize);
  return 0;
}

bool meansMissing(int error) {
  return error == ENOENT || error == ENOTDIR;
}

bool meansExists(int error) {
  return error == EEXIST;
}

CString errorText(int error) {
  return CString(std::generic_category().message(error).c_str());
}

}  // namespace vxOS::file
