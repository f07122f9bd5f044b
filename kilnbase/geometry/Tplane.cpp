#include <cmath>

#include <kilnbase/geometry/Tplane.h>

Tplane& Tplane::setPlane(const T4dDblPoint& p, T4dDblVector n) {
  n.normalizeIt();
  a = n.x;
  b = n.y;
  c = n.z;
  d = -n.dotProduct(p);
  tolerance = 1e-9;
  return *this;
}

int Tplane::intersection(T4dDblPoint p, T4dDblVector v, T4dDblPoint& out) const {
  const double s = normal().dotProduct(v);
  if (std::fabs(s) < 1e-9) return 1;
  const double t = -(normal().dotProduct(p) + d) / s;
  out = p + t * v;
  return t >= 0.0 ? 2 : 3;
}
