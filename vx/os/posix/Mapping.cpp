#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vx/os/Mapping.h>
#include <vx/os/posix/BlockedSignals.h>
#include <vx/os/posix/Path.h>

namespace vxOS::mapping {

namespace {

using vxString::CString;

int writeZeros(int file, std::size_t size) {
  static constexpr std::array<char, 65536> kZeros = {};
  while (size > 0) {
    const ssize_t written = write(file, kZeros.data(), std::min(size, kZeros.size()));
    if (written == -1 && errno != EINTR) return errno;
    if (written > 0) size -= static_cast<std::size_t>(written);
  }
  return 0;
}

// Growing a file beyond the limit of the process sends a signal that ends the process.
bool isBeyondLimit(std::size_t size) {
  rlimit limit;
  return getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
         size > limit.rlim_cur;
}

// Returns the number of the system's error.
int takeSpace(int file, std::size_t size) {
  if (isBeyondLimit(size)) return EFBIG;
  const BlockedSignals blocked;  // an interrupted allocation begins again, maybe for ever
  int error;
  do {
    error = posix_fallocate(file, 0, static_cast<off_t>(size));
  } while (error == EINTR);
  const bool cannot = error == EINVAL || error == EOPNOTSUPP;  // this kind of file system
  return cannot ? writeZeros(file, size) : error;
}

void* orNull(void* mapping) {
  return mapping != MAP_FAILED ? mapping : nullptr;
}

}  // namespace

std::intptr_t createFile(const CString& path, std::size_t size) {
  const CString name = systemPath(path);
  const int file = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file == -1) return kNone;
  const int error = takeSpace(file, size);
  if (error == 0) return file;
  unlink(name.c_str());
  close(file);
  errno = error;
  return kNone;
}

void closeFile(std::intptr_t file) {
  close(static_cast<int>(file));
}

void* mapFile(std::intptr_t file, bool isWritable, std::uint64_t offset, std::size_t length) {
  const int protection = isWritable ? PROT_READ | PROT_WRITE : PROT_READ;
  return orNull(mmap(nullptr, length, protection, MAP_SHARED, static_cast<int>(file),
                     static_cast<off_t>(offset)));
}

void* mapMemory(std::size_t length) {
  return orNull(mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
}

TemporaryMapping mapTemporaryFile(const CString& path, std::size_t length) {
  const std::intptr_t file = createFile(path, length);
  if (file == kNone) return {nullptr, errno};
  void* start = mapFile(file, true, 0, length);
  const TemporaryMapping mapping = {start, start != nullptr ? 0 : errno};
  closeFile(file);
  if (mapping.start == nullptr) unlink(systemPath(path).c_str());
  return mapping;
}

const bool kTemporaryFileStays = true;

void unmap(void* start, std::size_t length) {
  munmap(start, length);
}

}  // namespace vxOS::mapping
