// The growth and moving logic that all arrays share.
#pragma once

#include <cstddef>
#include <limits>
#include <optional>

#include <kilnbase/export.h>

namespace vxKilnBase::detail {

/// The common half of `Tarray` and `TobjArray`: elements of one size, one after the other in one
/// block of the heap. This class decides when the block grows and which elements move. The derived
/// class `Array` says how elements begin, are copied, move and end:
///
/// - `construct(first, count)` begins the elements of `count` unused slots;
/// - `destruct(first, count)` ends elements;
/// - `initialize(to, from, count)` begins elements in unused memory as copies of others;
/// - `shuffle(first, distance, count)` assigns each element to the slot `distance` slots away. Both
///   runs may overlap. The distance is an `Array::Distance`;
/// - `moveElements(n)` moves the elements that fit into a new block of `n` slots, frees the old
///   block and returns the new one. Without memory it returns null.
///
/// Exactly the elements i < `length` have begun and not ended.
///
/// An operation that cannot get memory leaves the elements unchanged. `create`,
/// `createAndInitialise`, `changePhysicalSizeTo`, `buffer` and `pack` then return `kNoMemory`. The
/// other operations return 0 even then: `length` tells whether they succeeded. When `Result` is
/// void, these operations return nothing. An array is for one thread at a time.
template <class Array, class Result>
class KILNBASE_API GrowableArray {
 public:
  /// Results of the operations. All other results are 0.
  static constexpr long kNoMemory = 2;
  static constexpr long kNotFound = 150;

  /// Frees the block.
  virtual ~GrowableArray();

  /// Sets the growth step, then replaces all elements by `n` new ones in a new block of `n` slots.
  /// With n = 0 the old block stays, and `capacity` becomes 0.
  virtual Result create(std::size_t n, std::size_t increment);
  /// Removes the elements from `index` to index + count - 1 that exist. Kept as it is: when `index`
  /// is the last element, that element is removed even with a `count` of 0. Returns 0.
  virtual Result removeAt(std::size_t index, std::size_t count);
  /// Removes the last `count` elements, or all. Returns 0.
  virtual Result removeLast(std::size_t count);
  /// Sets the growth step, in elements. Returns 0. The step must not be 0 when the array grows.
  /// Asserted in debug builds; in release builds a step of 0 counts as 1.
  virtual Result setSizeIncrement(std::size_t increment);
  /// Changes the number of elements in use to `n`. The block grows by whole steps where it must and
  /// never shrinks. Returns 0.
  virtual Result changeLogicalSizeTo(std::size_t n);
  /// Adds `difference` to the number of elements in use. Returns 0. The sum must not be negative.
  /// Asserted in debug builds; in release builds nothing changes.
  virtual Result changeLogicalSizeBy(long difference);
  /// Changes the number of slots to `n`, which ends all elements from `n` on. With n = 0 the block
  /// is freed. Returns 0, or `kNoMemory`.
  virtual Result changePhysicalSizeTo(std::size_t n);
  /// Makes room for exactly `n` more elements where there is less room.
  virtual Result buffer(std::size_t n);
  /// Frees the slots that are not in use.
  virtual Result pack();
  /// Removes all elements and keeps the block.
  virtual Result reset();

  /// Elements in use.
  std::size_t length() const { return length_; }
  /// Slots of the block.
  std::size_t capacity() const { return capacity_; }
  /// The slots that the next growth adds, unless it needs more. Each growth of an existing block
  /// raises the step by a quarter and 1.
  std::size_t sizeIncrement() const { return sizeIncrement_; }
  /// Bytes per element.
  std::size_t elementSize() const { return elementSize_; }

 protected:
  /// `create`, then every slot becomes a copy of `value`. Kept as it is: the slots are counted with
  /// 16 bits, so `n` must be below 65536. Asserted in debug builds; in release builds slots from
  /// 65536 on stay as `create` left them. `value` must not be in this array. Asserted in debug
  /// builds; in release builds nothing changes.
  virtual Result createAndInitialise(void* value, std::size_t n, std::size_t increment);

  /// Inserts copies of the `count` elements at `source` before `index`, or at the end when `index`
  /// lies beyond it. The source may be in this array. Returns 0.
  Result insertElement(const void* source, std::size_t index, std::size_t count);
  /// Inserts `count` elements of any value before `index` <= `length`. Returns whether there was
  /// memory.
  bool insertSlots(std::size_t index, std::size_t count) {
    const std::size_t behind = length_ - index;
    const std::size_t n = length_ + count;
    if (n < length_ || !changeLength(n)) return false;
    moveBy(index, static_cast<std::ptrdiff_t>(count), behind);
    return true;
  }
  /// Finds the first element with the same bytes as `element`: sets `index` to its place and
  /// returns 0. When there is none, sets `index` to the length and returns `kNotFound`. Kept as it
  /// is: the bytes are counted with 16 bits, so `elementSize` must be below 65536. Asserted in
  /// debug builds; in release builds the first 65536 bytes are compared.
  long findElement(const void* element, std::size_t& index) const;
  /// Removes the first element with the same bytes as `element`. Returns 0, or `kNotFound` when
  /// there is none.
  long removeElement(const void* element);
  /// Changes the length to index + count, even when that is less, and makes the elements from
  /// `index` on copies of the `count` elements at `source`. The source may be in this array.
  /// Returns 0.
  Result copyElements(std::size_t index, const void* source, std::size_t count);

  /// The first slot, or null without a block.
  char* block() const { return buffer_; }

 private:
  friend Array;

  constexpr GrowableArray(std::size_t elementSize, std::size_t sizeIncrement) noexcept
      : sizeIncrement_(sizeIncrement), elementSize_(elementSize) {}
  GrowableArray(const GrowableArray&) = delete;
  GrowableArray& operator=(const GrowableArray&) = delete;

  // Replaces the block by a new one of `n` slots, all in use.
  virtual Result allocateArray(std::size_t n);
  // Changes the length to `n`. Grows the block when n > capacity.
  virtual Result expandArray(std::size_t n);

  Array& self() { return static_cast<Array&>(*this); }
  char* slot(std::size_t i) const { return buffer_ + i * elementSize_; }
  // The slot of an element, or nothing for an address outside of the block.
  std::optional<std::size_t> placeOf(const void* element) const;

  void setLength(std::size_t n) {
    if (n > length_) self().construct(length_, n - length_);
    if (n < length_) self().destruct(n, length_ - n);
    length_ = n;
  }
  // `expandArray`, without a virtual call when n <= capacity. Returns whether there was memory.
  bool changeLength(std::size_t n) {
    if (n > capacity_) {
      expandArray(n);
      return length_ == n;
    }
    setLength(n);
    return true;
  }
  bool fits(std::size_t n) const;
  bool resizeBlock(std::size_t n);
  bool grow(std::size_t n);
  std::size_t missingSlots(std::size_t n) const;
  void moveBy(std::size_t first, std::ptrdiff_t distance, std::size_t count) {
    if (count == 0 || distance == 0) return;
    self().shuffle(first, static_cast<typename Array::Distance>(distance), count);
  }
  void replace(std::size_t index, const char* source, std::size_t count);

  std::size_t length_ = 0;
  std::size_t capacity_ = 0;
  std::size_t sizeIncrement_;
  std::size_t elementSize_;
  char* buffer_ = nullptr;
};

}  // namespace vxKilnBase::detail
