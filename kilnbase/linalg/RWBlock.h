// The counted storage behind every vector and matrix.
#pragma once

#include <cstddef>
#include <cstdint>

#include <kilnbase/export.h>

/// A reference-counted block of raw, uninitialised element storage.
///
/// Vectors and matrices obtain their block with `create` and count references with `acquire` and
/// `release`; a constructed block works the same. Counts are plain integers: a block belongs to one
/// thread at a time. A count that reaches 65535 stays there: a block with too many views is never
/// freed, rather than freed too early.
class KILNBASE_API RWBlock {
 public:
  std::uint16_t refs;  ///< Number of references; 1 in a new block.

 private:
  // Of a block that create() made: bytes from the start of the piece of memory to the block,
  // plus 1.
  std::uint16_t pieceOffset_ = 0;

 public:
  void* data;  ///< The storage, or null for an empty block.

  /// Takes `count` times `size` bytes (less than 2^64) from the heap, none when `count` is 0. When
  /// there is not enough memory, raises kOutOfMemoryError (always fatal under the default handler)
  /// and leaves `data` null.
  RWBlock(unsigned count, std::size_t size);
  ~RWBlock();
  RWBlock(const RWBlock&) = delete;
  RWBlock& operator=(const RWBlock&) = delete;

  /// A new block with one reference for the caller, its header and storage in one piece of memory.
  /// Storage of 512 bytes and more is aligned for the widest vector registers. The block must not
  /// be deleted; the last `release` ends it. All blocks of 0 elements are one block. When there is
  /// not enough memory, raises kOutOfMemoryError and returns the block of 0 elements.
  static RWBlock* create(unsigned count, std::size_t size) {
    RWBlock* block;
    create(count, size, block);
    return block;
  }
  /// The same in `block`; returns the storage. Short vectors are faster when they need not read the
  /// block to find its storage.
  static void* create(unsigned count, std::size_t size, RWBlock*& block);

  /// The block, without storage, of all vectors and matrices whose view was moved away.
  static RWBlock* movedFrom() noexcept { return &movedFrom_; }

  /// Adds one reference. At 65535 the count stays, and the block lives for ever.
  void acquire() {
    if (refs != kSaturated) ++refs;
  }

  /// Drops one reference; the last one destroys the block.
  static void release(RWBlock* block) {
    if (block->refs == 1) {
      destroy(block);
    } else if (block->refs != kSaturated) {
      --block->refs;
    }
  }

 private:
  static constexpr std::uint16_t kSaturated = 0xFFFF;

  constexpr explicit RWBlock(std::uint16_t references) noexcept : refs(references), data(nullptr) {}
  static RWBlock empty_;
  static RWBlock movedFrom_;

  static void destroy(RWBlock* block);
};
