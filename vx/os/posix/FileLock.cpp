#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <vx/FileLock.h>
#include <vx/os/posix/Path.h>

namespace vxOS {

// The lock belongs to the open file, not to the process: a second one in this process is refused.
// Network file systems lock only files that are open for writing.
bool FileLock::acquire(const vxString::CString& path) {
  release();
  const vxString::CString name = systemPath(path);
  int file = open(name.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
  if (file == -1) file = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file == -1) return false;
  file_ = file;
  if (flock(file, LOCK_EX | LOCK_NB) == 0) return true;
  release();
  return false;
}

void FileLock::release() {
  if (file_ != kNone) close(static_cast<int>(file_));
  file_ = kNone;
}

}  // namespace vxOS
