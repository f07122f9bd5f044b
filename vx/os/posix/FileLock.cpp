#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <vx/FileLock.h>

namespace vxOS {

// The lock belongs to the open file, not to the process: a second one in this process is refused.
bool FileLock::acquire(const vxString::CString& path) {
  release();
  const int file = open(path.replaced("\\", "/").c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
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
