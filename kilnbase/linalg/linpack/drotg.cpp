#include <kilnbase/linalg/linpack/drotg.h>

namespace vxKilnBase::linpack {

Rotation scaledRotationOf(double f, double g) {
  const double scale = std::fabs(f) + std::fabs(g);
  if (scale == 0.0) return {1.0, 0.0, 1.0, 0.0};
  const double larger = std::fabs(f) > std::fabs(g) ? f : g;
  const double r = std::copysign(std::hypot(f / scale, g / scale), larger);
  return {f / scale / r, g / scale / r, 1.0, r * scale};
}

}  // namespace vxKilnBase::linpack
