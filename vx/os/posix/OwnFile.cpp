#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iterator>
#include <string_view>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <utility>

#include <vx/OwnFile.h>
#include <vx/os/File.h>
#include <vx/os/posix/Owned.h>
#include <vx/os/posix/Path.h>

namespace vxOS {

namespace {

using vxString::CString;
using vxUtil::Error;

Error failure(const char* action, const CString& path) {
  const int error = errno;
  return {error, CString("cannot ") + action + " \"" + path + "\": " + file::errorText(error)};
}

int descriptor(std::intptr_t handle) {
  return static_cast<int>(handle);
}

// The path without its last name, and the last name.
std::pair<CString, CString> parted(const CString& path) {
  const std::size_t slash = path.findLast("/");
  if (slash == CString::npos) return {".", path};
  return {path.substring(0, slash + 1), path.substring(slash + 1)};
}

const char* flawOf(const struct stat& facts) {
  if (!S_ISREG(facts.st_mode)) return "is no regular file";
  if (facts.st_uid != geteuid()) return "belongs to another user";
  if (facts.st_nlink != 1) return "has other names";
  return nullptr;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The numbers of linux/magic.h, and those of systems that keep their numbers to themselves.
bool isOnNetwork(int file) {
  constexpr std::uint32_t kShares[] = {
      0x6969,      // NFS
      0x517b,      // SMB
      0xff534d42,  // CIFS
      0xfe534d42,  // SMB 2
      0x564c,      // NCP
      0x5346414f,  // AFS
      0x6b414653,  // AFS of the kernel
      0x73757245,  // Coda
      0x00c36400,  // Ceph
  };
  struct statfs facts;
  if (fstatfs(file, &facts) != 0) return true;
  const auto type = static_cast<std::uint32_t>(facts.f_type);
  return std::find(std::begin(kShares), std::end(kShares), type) != std::end(kShares);
}

}  // namespace

// What is under the path is looked at before it is opened: opening a device may do something.
Error OwnFile::openOwn(const CString& path) {
  const auto refusal = [&path](const char* why) { return Error(1, "\"" + path + "\" " + why); };
  const auto [folder, name] = parted(systemPath(path));
  folder_ = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  struct stat seen, opened;
  if (folder_ == kNone ||
      fstatat(descriptor(folder_), name.c_str(), &seen, AT_SYMLINK_NOFOLLOW) != 0)
    return failure("look at", path);
  if (const char* flaw = flawOf(seen)) return refusal(flaw);
  const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  Owned file(openat(descriptor(folder_), name.c_str(), flags));
  if (!file || fstat(file.get(), &opened) != 0) return failure("open", path);
  if (!isSameFile(seen, opened)) return refusal("changes its place");
  if (isOnNetwork(file.get())) return refusal("lies on a network share");
  stream_ = fdopen(file.get(), "rb");
  if (stream_ == nullptr) return failure("open", path);
  file.release();
  size_ = static_cast<std::uint64_t>(opened.st_size);
  return {};
}

Error OwnFile::remove() {
  const CString name = parted(systemPath(path_)).second;
  struct stat named, own;
  if (fstatat(descriptor(folder_), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) != 0 ||
      fstat(fileno(stream_), &own) != 0)
    return failure("look at", path_);
  if (!isSameFile(named, own)) return {1, "\"" + path_ + "\" is another file by now"};
  if (unlinkat(descriptor(folder_), name.c_str(), 0) != 0) return failure("delete", path_);
  close();
  return {};
}

void OwnFile::closeFolder() noexcept {
  if (const auto folder = std::exchange(folder_, kNone); folder != kNone)
    ::close(descriptor(folder));
}

}  // namespace vxOS
