#include <cmath>

#include <kilnbase/geometry/Tscale.h>

constinit const Tscale Tscale::identity;

namespace {

int areNear(double a, double b, double tolerance) {
  return std::fabs(a - b) <= tolerance;
}

}  // namespace

int Tscale::equivalent(const Tscale& s, double tol) const {
  const double tolerance = clamped(tol);
  return areNear(x, s.x, tolerance) && areNear(y, s.y, tolerance) && areNear(z, s.z, tolerance);
}

int Tscale::proportionalScale() const {
  return areNear(x, y, 1e-9) && areNear(y, z, 1e-9) && areNear(x, z, 1e-9);
}
