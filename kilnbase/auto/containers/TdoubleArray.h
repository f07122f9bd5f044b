// Growable arrays of doubles.
#pragma once

#include <kilnbase/auto/containers/Tarray.h>
#include <kilnbase/auto/containers/detail/TypedArray.h>

/// A growable array of doubles. See Tarray, and vxKilnBase::detail::TypedArray for the calls.
class KILNBASE_API TdoubleArray : public vxKilnBase::detail::TypedArray<Tarray, double> {
 public:
  /// An empty array that grows by so many doubles.
  explicit constexpr TdoubleArray(std::size_t sizeIncrement) noexcept : TypedArray(sizeIncrement) {}
  ~TdoubleArray() override;
};
