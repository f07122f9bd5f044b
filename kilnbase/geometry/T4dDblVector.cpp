#include <algorithm>
#include <cmath>
#include <numbers>

#include <kilnbase/geometry/T4dDblVector.h>
#include <kilnbase/geometry/TunitQuaternion.h>

constinit const T4dDblVector T4dDblVector::identity;

namespace {

T4dDblVector perpendicularTo(const T4dDblVector& v) {
  const auto i = static_cast<std::size_t>(v.dominantAxis());
  const std::size_t j = (i + 1) % 3;
  T4dDblVector axis;
  axis[i] = -v[j];
  axis[j] = v[i];
  return axis;
}

}  // namespace

TunitQuaternion T4dDblVector::rotateTo(const T4dDblVector& target) const {
  const double lengths = length() * target.length();
  if (lengths < 1e-9) return TunitQuaternion();
  const double angle = std::acos(std::clamp(dotProduct(target) / lengths, -1.0, 1.0));
  const bool opposite = std::fabs(angle - std::numbers::pi) < 1e-9;
  const T4dDblVector axis = opposite ? perpendicularTo(*this) : crossProduct(target);
  return TunitQuaternion().setToPivotAxis(angle, axis);
}
