// Growable arrays of pointers to text.
#pragma once

#include <kilnbase/auto/containers/Tarray.h>
#include <kilnbase/auto/containers/detail/TypedArray.h>

/// A growable array of `char*`; see Tarray and, for the calls, vxKilnBase::detail::TypedArray. It
/// holds the pointers only: the strings stay the caller's, and a search compares addresses.
class KILNBASE_API TcharPtrArray : public vxKilnBase::detail::TypedArray<Tarray, char*> {
 public:
  explicit constexpr TcharPtrArray(std::size_t sizeIncrement) noexcept
      : TypedArray(sizeIncrement) {}
  ~TcharPtrArray() override;
};
