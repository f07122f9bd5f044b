#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vx/os/BackingFile.h>
#include <vx/os/posix/BlockedSignals.h>
#include <vx/os/posix/Path.h>

namespace vxOS {

namespace {

// The limit for the size of files must not be passed: the system would send a signal.
bool isAllowed(std::uint64_t size) {
  rlimit limit;
  return size <= INT64_MAX && getrlimit(RLIMIT_FSIZE, &limit) == 0 && size <= limit.rlim_cur;
}

bool allocate(int file, off_t start, off_t length) {
  const BlockedSignals blocked;  // an interrupted allocation begins again, maybe for ever
  int error;
  do {
    error = posix_fallocate(file, start, length);
  } while (error == EINTR);
  return error == 0;
}

}  // namespace

BackingFile::~BackingFile() {
  if (file_ != -1) close(static_cast<int>(file_));
}

bool BackingFile::create(const vxString::CString& path) {
  const vxString::CString name = systemPath(path);
  file_ = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  return file_ != -1 && unlink(name.c_str()) == 0;
}

bool BackingFile::resize(std::uint64_t size) {
  const int file = static_cast<int>(file_);
  const auto before = static_cast<off_t>(size_);
  const auto after = static_cast<off_t>(size);
  if (size < size_ && ftruncate(file, after) != 0) return false;
  if (size > size_ && !(isAllowed(size) && allocate(file, before, after - before))) {
    // A part may have been allocated. When the file cannot be cut, that part is allocated again.
    [[maybe_unused]] const int ignored = ftruncate(file, before);
    return false;
  }
  size_ = size;
  return true;
}

void* BackingFile::map(std::uint64_t offset, std::size_t length) const {
  void* view = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, static_cast<int>(file_),
                    static_cast<off_t>(offset));
  return view != MAP_FAILED ? view : nullptr;
}

void BackingFile::unmap(void* view, std::size_t length) {
  munmap(view, length);
}

}  // namespace vxOS
