#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <vx/os/Mapping.h>
#include <vx/os/posix/Path.h>
#include <vx/os/posix/Space.h>

namespace vxOS::mapping {

namespace {

using vxString::CString;

void* orNull(void* mapping) {
  return mapping != MAP_FAILED ? mapping : nullptr;
}

}  // namespace

std::intptr_t createFile(const CString& path, std::size_t size) {
  const CString name = systemPath(path);
  const int file = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file == -1) return kNone;
  const int error = takeSpace(file, 0, size);
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
