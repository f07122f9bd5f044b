// Files and memory mapped into the address space.
#pragma once

#include <cstddef>
#include <cstdint>

#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// A file made for mapping. The object keeps the file open; the file stays when the object goes.
///
///     vxOS::MemoryMappedFile file;
///     if (file.createFile("ring.dat", 4096, vxOS::MemoryMappedFile::kReadWrite)) {
///       vxOS::FileMapping view;
///       if (void* bytes = view.map(file, 0, 4096)) *static_cast<char*>(bytes) = 'x';
///     }
///     file.close();
///     vxOS::File::remove("ring.dat");
class VX_API MemoryMappedFile {
 public:
  /// How views may use the file.
  enum Access { kReadOnly = 0, kReadWrite = 1 };

  MemoryMappedFile() = default;
  ~MemoryMappedFile() { close(); }
  MemoryMappedFile(const MemoryMappedFile&) = delete;
  MemoryMappedFile& operator=(const MemoryMappedFile&) = delete;

  /// Makes a new file of `size` zero bytes that only this user may read and write, and closes the
  /// file that the object had. The space on the disk is taken now: a full disk makes this call fail
  /// and never a view. False, and no file is left behind, when the file exists, when there is no
  /// space, or when `size` is 0.
  bool createFile(const vxString::CString& path, std::size_t size, int access);

  /// Whether `createFile` has made a file that is not closed.
  bool isOpen() const { return file_ != kNone; }
  /// In bytes; 0 when no file is open.
  std::size_t size() const { return size_; }
  /// Closes the file, which stays on the disk. Views stay valid.
  void close();

 private:
  friend class FileMapping;
  static constexpr std::intptr_t kNone = -1;
  std::intptr_t file_ = kNone;  // the system's descriptor or handle
  std::size_t size_ = 0;
  int access_ = kReadOnly;
};

/// A view of a part of a mapped file. The view outlives the `MemoryMappedFile`.
class VX_API FileMapping {
 public:
  FileMapping() = default;
  ~FileMapping() { unmap(); }
  FileMapping(const FileMapping&) = delete;
  FileMapping& operator=(const FileMapping&) = delete;

  /// The number of bytes of which offsets of views are multiples: 65536 on every system.
  static std::size_t getGranularity();

  /// Maps `length` bytes from `offset` on and unmaps the view before. Null, and no view, when
  /// `offset` is no multiple of the granularity, when `length` is 0, when the part does not lie in
  /// the file, and when the system refuses.
  void* map(const MemoryMappedFile& file, std::uint64_t offset, std::size_t length);
  /// Ends the view. Nothing happens without one.
  void unmap();

  /// The first byte, the place in the file and the size of the view; null and 0 without one.
  void* data() const { return data_; }
  std::uint64_t offset() const { return offset_; }
  std::size_t length() const { return length_; }

 private:
  void* data_ = nullptr;
  std::uint64_t offset_ = 0;
  std::size_t length_ = 0;
};

/// Maps `bytes` zero bytes that stand in no file of their own (the system's paging file). Null when
/// the system refuses. A system that promises more memory than there is may not refuse.
VX_API void* mapMemory(std::size_t bytes);

/// Maps a new temporary file of `bytes` zero bytes, whose space on the disk is taken now. `name` is
/// a path that ends in "XXXXXX", which six other characters replace. The file is made new, for this
/// user alone. Null, and no file is left behind, when that fails; `name` stays as it was then.
///
/// On Windows nobody can open the file, and the file goes with the mapping. Elsewhere the file
/// stays when the mapping goes, and the caller deletes the file then; a file whose mapping is there
/// still when the process ends is deleted at that time, unless the process is killed.
VX_API void* mapTemporaryFile(char* name, std::size_t bytes);

/// Unmaps the whole of what `mapMemory` or `mapTemporaryFile` returned. `inside` points to any byte
/// of the mapping, up to the end of the last page; any other pointer is ignored, and the result is
/// false. Any thread may map and unmap.
VX_API bool unmapMemory(const void* inside);

}  // namespace vxOS
