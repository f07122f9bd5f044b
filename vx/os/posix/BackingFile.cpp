#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <vx/os/BackingFile.h>
#include <vx/os/posix/Path.h>
#include <vx/os/posix/Space.h>

namespace vxOS {

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
  if (size < size_ && ftruncate(file, static_cast<off_t>(size)) != 0) return false;
  if (size > size_ && takeSpace(file, size_, size - size_) != 0) {
    // A part may have been taken. When the file cannot be cut, that part is taken again.
    [[maybe_unused]] const int ignored = ftruncate(file, static_cast<off_t>(size_));
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
