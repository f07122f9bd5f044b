// Growable arrays of pointers to text.
#pragma once

#include <kilnbase/auto/containers/Tarray.h>
#include <kilnbase/auto/containers/detail/TypedArray.h>

/// A growable array of `char*`. The array holds the pointers only: the caller owns the strings, and
/// a search compares addresses. See Tarray, and vxKilnBase::detail::TypedArray for the calls.
class KILNBASE_API TcharPtrArray : public vxKilnBase::detail::TypedArray<Tarray, char*> {
 public:
  /// An empty array that grows by so many pointers.
  explicit constexpr TcharPtrArray(std::size_t sizeIncrement) noexcept
      : TypedArray(sizeIncrement) {}
  ~TcharPtrArray() override;
};
