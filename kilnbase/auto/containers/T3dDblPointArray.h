// Growable arrays of points.
#pragma once

#include <kilnbase/auto/containers/TobjArray.h>
#include <kilnbase/auto/containers/detail/TypedArray.h>
#include <kilnbase/geometry/T3dDblPoint.h>

/// A growable array of points, new ones of which are the origin; see TobjArray and, for the calls,
/// vxKilnBase::detail::TypedArray.
class KILNBASE_API T3dDblPointArray : public vxKilnBase::detail::TypedObjArray<T3dDblPoint> {
 public:
  explicit constexpr T3dDblPointArray(std::size_t sizeIncrement) noexcept
      : TypedObjArray(sizeIncrement) {}
  ~T3dDblPointArray() override;
};
