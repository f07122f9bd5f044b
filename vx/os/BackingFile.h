// The file behind a store of memory, on each operating system.
#pragma once

#include <cstddef>
#include <cstdint>

#include <vx/String.h>

namespace vxOS {

/// A file that no other process can open and that the system deletes when the file is closed.
class BackingFile {
 public:
  /// Offsets of views are multiples of this many bytes.
  static constexpr std::uint64_t kGranularity = 65536;

  BackingFile() = default;
  ~BackingFile();
  BackingFile(const BackingFile&) = delete;
  BackingFile& operator=(const BackingFile&) = delete;

  /// Makes the file, which is empty. `path` holds no zero. False when there is something under it.
  bool create(const vxString::CString& path);

  std::uint64_t size() const { return size_; }
  /// Makes the file longer or shorter. The space on the disk is taken now. False, and the size is
  /// as before, when there is no space, and on Windows when the file has views and would be
  /// shorter.
  bool resize(std::uint64_t size);

  /// Maps a part of the file. All views of a byte show the same. Null when the system refuses.
  void* map(std::uint64_t offset, std::size_t length) const;
  static void unmap(void* view, std::size_t length);

 private:
  std::intptr_t file_ = -1;  // the system's descriptor or handle
  std::uint64_t size_ = 0;
};

}  // namespace vxOS
