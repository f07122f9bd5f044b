// The growth and moving logic that all arrays share.
#pragma once

#include <cstddef>
#include <limits>
#include <optional>

#include <kilnbase/export.h>

namespace vxKilnBase::detail {

/// Elements of one size, one after the other in one block of the heap: the common half of `Tarray`
/// and `TobjArray`, which are `Array`. It decides when a block grows and which elements move; how
/// elements begin, are copied, move and end is for `Array` to say:
///
/// - `construct(first, count)` begins the elements of `count` unused slots;
/// - `destruct(first, count)` ends elements;
/// - `destroy(block, count)` ends the first elements of a block whose elements have been copied to
///   another;
/// - `initialize(to, from, count)` begins elements in unused memory as copies of others;
/// - `shuffle(first, distance, count)` assigns each element to the one `distance` (a
///   `Array::Distance`) slots away, in an order that allows for overlap;
/// - `moveElements(n)` returns a new block of `n` slots with the elements that fit, having freed
///   the old one, or null when there is no memory.
///
/// The elements before `length` have begun and not ended, those from there on have not begun.
///
/// An operation that cannot get memory leaves the array as it was, but for the step that `create`
/// sets. `create`, `createAndInitialise`, `changePhysicalSizeTo`, `buffer` and `pack` then give 2;
/// the others do not tell but by `length`. Where `Result` is void, no result is given at all. An
/// array is for one thread at a time.
template <class Array, class Result>
class KILNBASE_API GrowableArray {
 public:
  /// Frees the block.
  virtual ~GrowableArray();

  /// Starts anew with `n` elements in a block of just that size and with another growth step. With
  /// `n` 0 the old block is kept, though as one of no slots.
  virtual Result create(std::size_t n, std::size_t increment);
  /// Removes `count` elements, or as many as there are, from `index` on. Of the last element one is
  /// removed whatever `count` says; an index beyond the end changes nothing. Returns 0.
  virtual Result removeAt(std::size_t index, std::size_t count);
  /// Removes the last `count` elements, or all. Returns 0.
  virtual Result removeLast(std::size_t count);
  /// Sets the growth step, in elements; it must not be 0. Returns 0.
  virtual Result setSizeIncrement(std::size_t increment);
  /// Changes the number of elements in use to `n`. The block grows where it must, by whole steps,
  /// and never shrinks. Returns 0.
  virtual Result changeLogicalSizeTo(std::size_t n);
  /// The same by a difference, which must not lead below 0. Returns 0.
  virtual Result changeLogicalSizeBy(long difference);
  /// Changes the number of slots of the block to `n`; elements beyond it are gone. With 0 the block
  /// is freed. Returns 0, or 2 when there is no memory.
  virtual Result changePhysicalSizeTo(std::size_t n);
  /// Makes room for `n` more elements, and for no others.
  virtual Result buffer(std::size_t n);
  /// Gives up the slots that are not in use.
  virtual Result pack();
  /// Removes all elements and keeps the block.
  virtual Result reset();

  /// Elements in use.
  std::size_t length() const { return length_; }
  /// Slots of the block.
  std::size_t capacity() const { return capacity_; }
  /// The slots that the next growth adds, unless more are needed. Each growth of a block raises it
  /// by a quarter and 1.
  std::size_t sizeIncrement() const { return sizeIncrement_; }
  /// Bytes an element.
  std::size_t elementSize() const { return elementSize_; }

 protected:
  /// What `findElement` and `removeElement` give for an element that is absent.
  static constexpr long kNotFound = 150;

  /// `create`, then every slot becomes a copy of `value`. The slots are counted with 16 bits: `n`
  /// must be below 65536, as slots from there on are not reached and stay as `create` left them.
  /// `value` must not lie in this array, which else stays as it is.
  virtual Result createAndInitialise(void* value, std::size_t n, std::size_t increment);

  /// Inserts copies of `count` elements before `index` (beyond the end: at the end). They may be
  /// elements of this array. Returns 0.
  Result insertElement(const void* source, std::size_t index, std::size_t count);
  /// Makes room for `count` elements before `index`, which must not lie beyond the end: the new
  /// elements have begun, with any value. Returns whether there was memory.
  bool insertSlots(std::size_t index, std::size_t count) {
    const std::size_t behind = length_ - index;
    const std::size_t n = length_ + count;
    if (n < length_ || !changeLength(n)) return false;
    moveBy(index, static_cast<std::ptrdiff_t>(count), behind);
    return true;
  }
  /// Finds the first element with the same bytes: `index` is its place and the result 0, or, when
  /// there is none, `index` is the length and the result 150. The bytes are counted with 16 bits:
  /// elements are taken for equal when their first 65536 bytes are.
  long findElement(const void* element, std::size_t& index) const;
  /// Removes the first element with the same bytes. Returns 0, or 150 when there is none.
  long removeElement(const void* element);
  /// Changes the length to `index + count` and makes the elements from `index` on copies of those
  /// at `source`, which may be elements of this array. Returns 0.
  Result copyElements(std::size_t index, const void* source, std::size_t count);

  /// The first slot; null as long as there is no block.
  char* block() const { return buffer_; }

 private:
  friend Array;

  constexpr GrowableArray(std::size_t elementSize, std::size_t sizeIncrement) noexcept
      : sizeIncrement_(sizeIncrement), elementSize_(elementSize) {}
  GrowableArray(const GrowableArray&) = delete;
  GrowableArray& operator=(const GrowableArray&) = delete;

  // Takes a new block of `n` slots, all in use.
  virtual Result allocateArray(std::size_t n);
  // Changes the length to `n`, growing the block where it must.
  virtual Result expandArray(std::size_t n);

  Array& self() { return static_cast<Array&>(*this); }
  char* slot(std::size_t i) const { return buffer_ + i * elementSize_; }
  // The slot that the element is in; nothing for one that lies elsewhere.
  std::optional<std::size_t> placeOf(const void* element) const;

  void setLength(std::size_t n) {
    if (n > length_) self().construct(length_, n - length_);
    if (n < length_) self().destruct(n, length_ - n);
    length_ = n;
  }
  // `expandArray`, without a call where the block need not grow; tells whether there was memory.
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
