// Growable arrays of elements that are constructed and destructed.
#pragma once

#include <cstddef>

#include <kilnbase/auto/containers/detail/GrowableArray.h>
#include <kilnbase/export.h>

/// A growable array like `Tarray`, for elements that need construction and destruction. It works on
/// its elements through hooks, which the array of a type implements (`T3dDblPointArray`; see
/// vxKilnBase::detail::TypedObjArray) and which must not throw. The operations return nothing but
/// for the search.
///
/// As a hook moves elements by an int, there are at most 2^31 - 1 elements. Elements have the
/// alignment of the heap, 16 bytes.
class KILNBASE_API TobjArray : public vxKilnBase::detail::GrowableArray<TobjArray, void> {
 public:
  using Result = void;

  /// No elements and no block yet; neither size must be 0.
  constexpr TobjArray(std::size_t elementSize, std::size_t sizeIncrement) noexcept
      : GrowableArray(elementSize, sizeIncrement) {}
  /// There must be no elements any more: the hooks that end them are gone by now. The destructor of
  /// the class that has the hooks calls `changePhysicalSizeTo(0)`.
  ~TobjArray() override;

 protected:
  /// Begins the elements of `count` slots from `first` on, with the value that new ones have.
  virtual void construct(std::size_t first, std::size_t count) = 0;
  /// Ends `count` elements from `first` on.
  virtual void destruct(std::size_t first, std::size_t count) = 0;
  /// Ends the `count` elements at an address.
  virtual void destroy(char* elements, std::size_t count) = 0;
  /// Begins `count` elements in the unused memory `to` as copies of those at `from`.
  virtual void initialize(char* to, char* from, std::size_t count) = 0;
  /// Assigns to each element its counterpart: element `first + distance + i` becomes what element
  /// `first + i` is, for all i below `count`. The two runs may overlap.
  virtual void shuffle(std::size_t first, int distance, std::size_t count) = 0;

 private:
  friend GrowableArray;
  using Distance = int;

  char* moveElements(std::size_t n);
};
