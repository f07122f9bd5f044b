#include <windows.h>

#include <vx/os/BackingFile.h>
#include <vx/os/win32/Handle.h>
#include <vx/os/win32/Path.h>
#include <vx/os/win32/Space.h>

namespace vxOS {

namespace {

HANDLE handle(std::intptr_t file) {
  return reinterpret_cast<HANDLE>(file);
}

}  // namespace

BackingFile::~BackingFile() {
  if (file_ != -1) CloseHandle(handle(file_));
}

bool BackingFile::create(const vxString::CString& path) {
  const HANDLE file = makeUncompressed(
      systemPath(path), 0,
      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_RANDOM_ACCESS);
  file_ = reinterpret_cast<std::intptr_t>(file);
  return file_ != -1;
}

bool BackingFile::resize(std::uint64_t size) {
  const bool isDone = takeSpace(handle(file_), size);
  if (isDone) size_ = size;
  return isDone;
}

// The view keeps the mapping that it was made from.
void* BackingFile::map(std::uint64_t offset, std::size_t length) const {
  const Handle mapping(CreateFileMappingW(handle(file_), nullptr, PAGE_READWRITE, 0, 0, nullptr));
  if (!mapping) return nullptr;
  return MapViewOfFile(mapping.get(), FILE_MAP_WRITE, static_cast<DWORD>(offset >> 32U),
                       static_cast<DWORD>(offset), length);
}

void BackingFile::unmap(void* view, std::size_t) {
  UnmapViewOfFile(view);
}

}  // namespace vxOS
