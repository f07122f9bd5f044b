// Growable arrays of doubles.
#pragma once

#include <kilnbase/auto/containers/Tarray.h>
#include <kilnbase/auto/containers/detail/TypedArray.h>

/// A growable array of doubles; see Tarray and, for the calls, vxKilnBase::detail::TypedArray.
class KILNBASE_API TdoubleArray : public vxKilnBase::detail::TypedArray<Tarray, double> {
 public:
  explicit constexpr TdoubleArray(std::size_t sizeIncrement) noexcept : TypedArray(sizeIncrement) {}
  ~TdoubleArray() override;
};
