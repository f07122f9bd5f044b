// Memory for big data outside the heap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <vx/Reference.h>
#include <vx/String.h>
#include <vx/export.h>

namespace vxOS {

/// Blocks of memory in a file, for data that outgrows the heap. A block is in the address space
/// while it is locked, and the system may move its bytes to the disk at any time.
///
///     vxOS::MoveableMemory store;
///     store.initializeFiles(vxOS::temporaryDirectory().asWide(), L"points-");
///     if (const vxOS::MoveableMemory::Handle block = store.allocate(1000 * sizeof(double))) {
///       if (auto* numbers = static_cast<double*>(store.lock(block))) numbers[999] = 0.5;
///       store.unlock(block);
///     }
///
/// The store has one file, which no other process can open and which goes with the store, also when
/// the process crashes. The space on the disk is taken when a block is allocated: a full disk makes
/// `allocate` or `resize` fail and never an access to a block. Freed space is used again.
///
/// A store is used by one thread at a time. A handle that is 0 or freed names no block. Such a
/// handle is allowed everywhere: nothing happens, and the answer is null, 0 or false. Handles are
/// never used again.
class VX_API MoveableMemory : public vx::ReferenceCount {
 public:
  /// Names a block for as long as the store lives; 0 names none.
  using Handle = std::uint64_t;

  /// A store without room, until `initializeFiles`.
  MoveableMemory();
  /// Ends all locks.
  ~MoveableMemory() override;
  MoveableMemory(const MoveableMemory&) = delete;
  MoveableMemory& operator=(const MoveableMemory&) = delete;

  /// Makes the file in `directory`, which must exist. `prefix` begins its name and may be empty.
  /// False, and the store has no room, when the file cannot be made and when `prefix` holds a
  /// separator, ':' or a zero. False, and the store stays as it is, when it has a file already.
  bool initializeFiles(const vxString::IString& directory, const vxString::IString& prefix);

  /// A new block, whose bytes are not initialised. 0 when there is no space or no memory, and
  /// before `initializeFiles`. May move blocks that are not locked. A block takes a multiple of 64
  /// bytes.
  Handle allocate(std::size_t bytes);

  /// Changes the size of a block and keeps its bytes up to the lesser size. False, and the block is
  /// as before, when there is no space or no memory, and when a locked block would have to move. A
  /// locked block that shrinks gives its space back when its locks have ended.
  bool resize(Handle block, std::size_t bytes);

  /// Ends all locks of the block and the block.
  void free(Handle block);

  /// The number of bytes that were asked for.
  std::size_t size(Handle block) const;

  /// The bytes of the block, at a multiple of 64. The pointer holds until as many calls of `unlock`
  /// as there were of `lock`. Null when the address space has no room. A lock that is the only one
  /// costs some calls of the system.
  void* lock(Handle block);
  /// Gives one `lock` back.
  void unlock(Handle block);

  /// Moves the blocks that are not locked together and gives the rest of the file back to the disk.
  /// The cost is that of copying these blocks. False, and no block moves, without memory for a list
  /// of the blocks.
  bool compact();

  /// The size of the file in bytes.
  std::uint64_t fileSize() const;

 private:
  class VX_LOCAL Store;
  std::unique_ptr<Store> store_;
};

}  // namespace vxOS
