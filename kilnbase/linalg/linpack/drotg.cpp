#include <cmath>

#include <kilnbase/linalg/linpack/drotg.h>

namespace vxKilnBase::linpack {

void drotg(double& a, double b, double& c, double& s) {
  const double scale = std::fabs(a) + std::fabs(b);
  if (scale == 0.0) {
    c = 1.0;
    s = 0.0;
    a = 0.0;
    return;
  }
  const double larger = std::fabs(a) > std::fabs(b) ? a : b;
  const double scaledA = a / scale;
  const double scaledB = b / scale;
  const double norm = scale * std::sqrt(scaledA * scaledA + scaledB * scaledB);
  const double r = std::copysign(norm, larger);
  c = a / r;
  s = b / r;
  a = r;
}

}  // namespace vxKilnBase::linpack
