#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vx/Directory.h>
#include <vx/detail/paths.h>
#include <vx/os/Directory.h>
#include <vx/os/File.h>
#include <vx/os/posix/Owned.h>
#include <vx/os/posix/Path.h>

namespace vxOS {

namespace {

using vxString::CString;
using vxUtil::Error;

constexpr mode_t kOwnFile = 0600;
constexpr mode_t kOwnFolder = 0700;
constexpr mode_t kGroupOrOthersWrite = S_IWGRP | S_IWOTH;

int descriptor(std::intptr_t handle) {
  return static_cast<int>(handle);
}

Error failure(const char* action, const CString& path) {
  const int error = errno;
  return {error, CString("cannot ") + action + " \"" + path + "\": " + file::errorText(error)};
}

// The user stays the same; asking the system each time would cost as much as looking at a file.
uid_t currentUser() {
  static const uid_t kUser = geteuid();
  return kUser;
}

bool isOwnFile(const struct stat& facts) {
  return S_ISREG(facts.st_mode) && facts.st_nlink == 1 && facts.st_uid == currentUser();
}

std::int64_t nanoseconds(const timespec& time) {
  return time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec;
}

bool writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

CString readAll(int file, std::size_t most) {
  struct stat facts;
  if (fstat(file, &facts) != 0 || !S_ISREG(facts.st_mode)) return {};
  std::string text(std::min(most, static_cast<std::size_t>(facts.st_size)), '\0');
  std::size_t size = 0;
  ssize_t count = 0;
  while (size < text.size() &&
         (count = pread(file, &text[size], text.size() - size, static_cast<off_t>(size))) > 0)
    size += static_cast<std::size_t>(count);
  return CString(std::string_view(text).substr(0, size));
}

// How any other user could lead to another place what is below this folder or behind this link;
// null when nobody can. A sticky folder lets nobody rename what belongs to somebody else. The owner
// of a folder above can, and is trusted by whoever puts something there: a tree of another user
// that is shown to a container, say.
const char* flawOf(const struct stat& facts) {
  if (S_ISLNK(facts.st_mode) && facts.st_uid != 0 && facts.st_uid != currentUser())
    return "is reached by a link of another user";
  const bool isOpenToAll = S_ISDIR(facts.st_mode) && (facts.st_mode & S_IWOTH) != 0;
  return isOpenToAll && (facts.st_mode & S_ISVTX) == 0
             ? "lies in a folder where other users can rename it"
             : nullptr;
}

// The flaw of the folders above an open one, up to the root.
const char* flawAbove(int folder) {
  struct stat facts, above;
  Owned parent(openat(folder, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (fstat(folder, &facts) != 0 || !parent || fstat(parent.get(), &above) != 0)
    return "lies in a folder that cannot be looked at";
  if (facts.st_ino == above.st_ino && facts.st_dev == above.st_dev) return nullptr;
  const char* flaw = flawOf(above);
  return flaw != nullptr ? flaw : flawAbove(parent.get());
}

// The flaw of the links and folders that the path names.
const char* flawAlong(std::string_view path) {
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    struct stat facts;
    if (lstat(systemPath(CString(path.substr(0, end))).c_str(), &facts) != 0)
      return "lies in a folder that cannot be looked at";
    if (const char* flaw = flawOf(facts)) return flaw;
    if (end == std::string_view::npos) return nullptr;
  }
}

}  // namespace

int directory::makePrivate(const CString& path) {
  return mkdir(systemPath(path).c_str(), kOwnFolder) == 0 || errno == EEXIST ? 0 : errno;
}

Directory::~Directory() {
  if (isOpen()) ::close(descriptor(handle_));
}

Error Directory::open(const CString& path) {
  if (detail::holdsZero(path.view())) return {1, "the path holds a zero byte"};
  const int opened = ::open(systemPath(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened == -1) return failure("open the folder", path);
  *this = Directory();
  handle_ = opened;
  path_ = path;
  return {};
}

Error Directory::requirePrivate() const {
  const auto refusal = [this](const char* why) {
    return Error(1, "the folder \"" + path_ + "\" " + why);
  };
  struct stat facts;
  if (fstat(descriptor(handle_), &facts) != 0) return failure("look at", path_);
  if (facts.st_uid != geteuid()) return refusal("belongs to another user");
  if ((facts.st_mode & kGroupOrOthersWrite) != 0) return refusal("can be written by other users");
  if (const char* flaw = flawAbove(descriptor(handle_))) return refusal(flaw);
  if (const char* flaw = flawAlong(detail::withoutSeparators(path_.view()))) return refusal(flaw);
  return {};
}

bool Directory::isAt(const CString& path) const {
  struct stat own, other;
  return !detail::holdsZero(path.view()) && fstat(descriptor(handle_), &own) == 0 &&
         stat(systemPath(path).c_str(), &other) == 0 && own.st_ino == other.st_ino &&
         own.st_dev == other.st_dev;
}

vx::vector<CString> Directory::names() const {
  vx::vector<CString> found;
  Owned copy(openat(descriptor(handle_), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(copy ? fdopendir(copy.get()) : nullptr,
                                                   &closedir);
  if (stream == nullptr) return found;
  copy.release();
  while (const dirent* entry = readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") found.emplace_back(name);
  }
  return found;
}

std::int64_t Directory::lastChange(const CString& name) const {
  struct stat facts;
  if (fstatat(descriptor(handle_), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) return 0;
  return std::max(nanoseconds(facts.st_mtim), nanoseconds(facts.st_ctim));
}

FileFacts Directory::query(const CString& name) const {
  struct stat facts;
  if (fstatat(descriptor(handle_), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) return {};
  return {isOwnFile(facts), static_cast<std::uint64_t>(facts.st_size), nanoseconds(facts.st_mtim),
          facts.st_ino};
}

Error Directory::read(const CString& name, std::size_t most, CString& content) const {
  const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const Owned file(openat(descriptor(handle_), name.c_str(), flags));
  struct stat facts;
  if (!file || fstat(file.get(), &facts) != 0) return failure("read", name);
  if (!S_ISREG(facts.st_mode)) return {1, "\"" + name + "\" is no regular file"};
  content = readAll(file.get(), most);
  return {};
}

Error Directory::replace(const CString& name, std::string_view content) const {
  const CString written = temporaryName();
  const int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
  const int folder = descriptor(handle_);
  Error error;
  {
    const Owned file(openat(folder, written.c_str(), flags, kOwnFile));
    if (!file) return failure("write", name);
    if (!writeAll(file.get(), content)) error = failure("write", name);
  }
  if (!error && renameat(folder, written.c_str(), folder, name.c_str()) != 0)
    error = failure("write", name);
  if (error) remove(written);
  return error;
}

bool Directory::remove(const CString& name) const {
  return unlinkat(descriptor(handle_), name.c_str(), 0) == 0;
}

Error DirectoryFile::open(const Directory& directory, const CString& name) {
  const int flags = O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  Owned file(openat(descriptor(directory.handle_), name.c_str(), flags, kOwnFile));
  struct stat facts;
  if (!file || fstat(file.get(), &facts) != 0) return failure("open", name);
  if (!isOwnFile(facts)) return {1, "\"" + name + "\" is no file of this user's own"};
  if ((facts.st_mode & ~kOwnFile & 07777) != 0 && fchmod(file.get(), kOwnFile) != 0)
    return failure("protect", name);
  close();
  handle_ = file.release();
  name_ = name;
  size_ = static_cast<std::uint64_t>(facts.st_size);
  return {};
}

void DirectoryFile::close() noexcept {
  if (const auto handle = std::exchange(handle_, Directory::kNone); handle != Directory::kNone)
    ::close(descriptor(handle));
}

// Not the directory is locked: everybody who may read the directory could hold that lock for ever.
Error DirectoryFile::tryLock(const Directory& directory, bool& isTaken) {
  const bool isLocked = flock(descriptor(handle_), LOCK_EX | LOCK_NB) == 0;
  isTaken = isLocked ? !isInPlace(directory) : errno == EWOULDBLOCK;
  return isLocked || isTaken ? Error() : failure("lock", name_);
}

bool DirectoryFile::isInPlace(const Directory& directory) const {
  struct stat own, named;
  return fstat(descriptor(handle_), &own) == 0 &&
         fstatat(descriptor(directory.handle_), name_.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         own.st_ino == named.st_ino && own.st_dev == named.st_dev;
}

CString DirectoryFile::read() const {
  return readAll(descriptor(handle_), static_cast<std::size_t>(size_));
}

bool DirectoryFile::append(std::string_view bytes) {
  if (!writeAll(descriptor(handle_), bytes)) {
    if (!truncate(size_)) close();  // nothing may follow a torn end
    return false;
  }
  size_ += bytes.size();
  return true;
}

bool DirectoryFile::truncate(std::uint64_t size) {
  if (ftruncate(descriptor(handle_), static_cast<off_t>(size)) != 0) return false;
  size_ = size;
  return true;
}

}  // namespace vxOS
