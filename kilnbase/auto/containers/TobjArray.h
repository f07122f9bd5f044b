// Growable arrays of elements that are constructed and destructed.
#pragma once

#include <cstddef>

#include <kilnbase/auto/containers/detail/GrowableArray.h>
#include <kilnbase/export.h>

/// A growable array like `Tarray`, for elements that need construction and destruction. It handles
/// its elements through hooks, which must not throw. The array of a type implements the hooks: see
/// vxKilnBase::detail::TypedObjArray and `T3dDblPointArray`. Only the search returns a result.
///
/// An array has at most 2^31 - 1 elements, because a hook moves elements by an int. Elements have
/// the alignment of the heap, 16 bytes.
class KILNBASE_API TobjArray : public vxKilnBase::detail::GrowableArray<TobjArray, void> {
 public:
  /// What the operations of the base return.
  using Result = void;

  /// No elements and no block yet. With an `elementSize` of 0 the array never gets one.
  constexpr TobjArray(std::size_t elementSize, std::size_t sizeIncrement) noexcept
      : GrowableArray(elementSize, sizeIncrement) {}
  /// The destructor of the class that implements the hooks must call `changePhysicalSizeTo(0)`: no
  /// elements may be left here. Asserted in debug builds; in release builds they are not
  /// destructed.
  ~TobjArray() override;

 protected:
  /// Begins the `count` elements from `first` on, with the value of new elements.
  virtual void construct(std::size_t first, std::size_t count) = 0;
  /// Ends the `count` elements from `first` on.
  virtual void destruct(std::size_t first, std::size_t count) = 0;
  /// Ends the `count` elements at an address.
  virtual void destroy(char* elements, std::size_t count) = 0;
  /// Begins `count` elements in the unused memory `to` as copies of the elements at `from`.
  virtual void initialize(char* to, char* from, std::size_t count) = 0;
  /// Assigns element first + i to element first + distance + i for 0 <= i < count. Both runs may
  /// overlap.
  virtual void shuffle(std::size_t first, int distance, std::size_t count) = 0;
  /// Begins `count` elements in the unused memory `to` with the values of the elements at `from`,
  /// which `destroy` ends afterwards. Copies, unless a class overrides it to move.
  virtual void transfer(char* to, char* from, std::size_t count) { initialize(to, from, count); }

 private:
  friend GrowableArray;
  using Distance = int;

  char* moveElements(std::size_t n);
};
