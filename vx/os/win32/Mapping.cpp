#include <windows.h>

#include <vx/os/Mapping.h>
#include <vx/os/win32/Handle.h>
#include <vx/os/win32/Path.h>
#include <vx/os/win32/Space.h>

namespace vxOS::mapping {

namespace {

using vxString::CString;

DWORD high(std::uint64_t value) {
  return static_cast<DWORD>(value >> 32);
}

DWORD low(std::uint64_t value) {
  return static_cast<DWORD>(value);
}

// Maps a part of a section, which the mapping keeps alive.
void* mapSection(const Handle& section, bool isWritable, std::uint64_t offset, std::size_t length) {
  const DWORD access = isWritable ? FILE_MAP_READ | FILE_MAP_WRITE : FILE_MAP_READ;
  return section ? MapViewOfFile(section.get(), access, high(offset), low(offset), length)
                 : nullptr;
}

// A section as long as the file; without a file, `length` bytes of the paging file.
HANDLE makeSection(HANDLE file, DWORD protection, std::size_t length) {
  return CreateFileMappingW(file, nullptr, protection, high(length), low(length), nullptr);
}

void* mapOpenFile(HANDLE file, bool isWritable, std::uint64_t offset, std::size_t length) {
  const Handle section(makeSection(file, isWritable ? PAGE_READWRITE : PAGE_READONLY, 0));
  return mapSection(section, isWritable, offset, length);
}

}  // namespace

std::intptr_t createFile(const CString& path, std::size_t size) {
  const std::wstring name = systemPath(path);
  const DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  Handle file(makeUncompressed(name, sharing, FILE_ATTRIBUTE_NORMAL));
  if (!file) return kNone;
  if (takeSpace(file.get(), size)) return reinterpret_cast<std::intptr_t>(file.release());
  DeleteFileW(name.c_str());  // now or when the handle is closed
  return kNone;
}

void closeFile(std::intptr_t file) {
  CloseHandle(reinterpret_cast<HANDLE>(file));
}

void* mapFile(std::intptr_t file, bool isWritable, std::uint64_t offset, std::size_t length) {
  return mapOpenFile(reinterpret_cast<HANDLE>(file), isWritable, offset, length);
}

void* mapMemory(std::size_t length) {
  const Handle section(makeSection(INVALID_HANDLE_VALUE, PAGE_READWRITE, length));
  return mapSection(section, true, 0, length);
}

TemporaryMapping mapTemporaryFile(const CString& path, std::size_t length) {
  const Handle file(makeUncompressed(
      systemPath(path), 0,
      FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_RANDOM_ACCESS));
  if (!file) return {nullptr, static_cast<int>(GetLastError())};
  if (!takeSpace(file.get(), length)) return {nullptr, ERROR_DISK_FULL};
  void* start = mapOpenFile(file.get(), true, 0, length);
  return {start, start != nullptr ? 0 : ERROR_NOT_ENOUGH_MEMORY};
}

const bool kTemporaryFileStays = false;

void unmap(void* start, std::size_t) {
  UnmapViewOfFile(start);
}

}  // namespace vxOS::mapping
