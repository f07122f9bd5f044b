// Files and memory mapped into the address space, on each operating system.
//
// No path holds a zero byte, no length is 0, and no length is above PTRDIFF_MAX.
#pragma once

#include <cstddef>
#include <cstdint>

#include <vx/String.h>

namespace vxOS::mapping {

/// No descriptor or handle of the system.
constexpr std::intptr_t kNone = -1;

/// Makes a file of zero bytes for this user alone and takes its space on the disk. `kNone`, and no
/// file is left behind, when that fails or there is something under `path`.
std::intptr_t createFile(const vxString::CString& path, std::size_t size);
void closeFile(std::intptr_t file);

/// Maps a part of a file that begins at a multiple of 65536. The mapping stays when the file is
/// closed. Null when the system refuses.
void* mapFile(std::intptr_t file, bool isWritable, std::uint64_t offset, std::size_t length);
/// Maps zero bytes of the paging file. Null when the system refuses.
void* mapMemory(std::size_t length);

/// What `mapTemporaryFile` answers.
struct TemporaryMapping {
  void* start = nullptr;  ///< Null when the system refuses.
  int error = 0;          ///< The number of the system's error.
};

/// As `createFile` and `mapFile` of the whole file, which nobody else can open on Windows.
TemporaryMapping mapTemporaryFile(const vxString::CString& path, std::size_t length);
/// Whether a file of `mapTemporaryFile` outlives the mapping.
extern const bool kTemporaryFileStays;

/// Unmaps the whole of a mapping.
void unmap(void* start, std::size_t length);

}  // namespace vxOS::mapping
