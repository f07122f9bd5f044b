// Growable arrays of elements that can be moved as plain bytes.
#pragma once

#include <cstddef>
#include <cstring>

#include <kilnbase/auto/containers/detail/GrowableArray.h>
#include <kilnbase/export.h>

/// A growable array of elements of any fixed size, which are copied and moved as plain bytes. No
/// constructor and no destructor runs. New elements have any value. Elements that need construction
/// go into a `TobjArray`. Users take the array of their type (`TdoubleArray`, `TcharPtrArray`),
/// which has calls to insert, find and read elements.
///
/// All results are 0 but `kNotFound`, for an absent element, and `kNoMemory`, for `create`,
/// `createAndInitialise`, `changePhysicalSizeTo`, `buffer` and `pack`.
/// vxKilnBase::detail::GrowableArray describes the operations.
///
///     TdoubleArray heights(32);    // grows by 32 slots, then by 32, 41, 52, ...
///     heights.addLast(0.5);
///     heights.removeAt(0, 1);
class KILNBASE_API Tarray : public vxKilnBase::detail::GrowableArray<Tarray, long> {
 public:
  /// What the operations of the base return.
  using Result = long;

  /// No elements and no block yet. With an `elementSize` of 0 the array never gets one.
  constexpr Tarray(std::size_t elementSize, std::size_t sizeIncrement) noexcept
      : GrowableArray(elementSize, sizeIncrement) {}
  ~Tarray() override;

 private:
  friend GrowableArray;
  using Distance = std::ptrdiff_t;

  void construct(std::size_t, std::size_t) {}
  void destruct(std::size_t, std::size_t) {}
  void initialize(char* to, const char* from, std::size_t count) {
    std::memcpy(to, from, count * elementSize_);
  }
  void shuffle(std::size_t first, std::ptrdiff_t distance, std::size_t count) {
    char* const from = slot(first);
    std::memmove(from + distance * static_cast<std::ptrdiff_t>(elementSize_), from,
                 count * elementSize_);
  }
  char* moveElements(std::size_t n);
};
