// Growable arrays of points.
#pragma once

#include <kilnbase/auto/containers/TobjArray.h>
#include <kilnbase/auto/containers/detail/TypedArray.h>
#include <kilnbase/geometry/T3dDblPoint.h>

/// A growable array of points. A new point without a value is the origin. See TobjArray, and
/// vxKilnBase::detail::TypedArray for the calls.
class KILNBASE_API T3dDblPointArray : public vxKilnBase::detail::TypedObjArray<T3dDblPoint> {
 public:
  /// An empty array that grows by so many points.
  explicit constexpr T3dDblPointArray(std::size_t sizeIncrement) noexcept
      : TypedObjArray(sizeIncrement) {}
  ~T3dDblPointArray() override;
};
