#include <cmath>

#include <kilnbase/geometry/T4dDblVector.h>
#include <kilnbase/geometry/Tquaternion.h>
#include <kilnbase/geometry/TunitQuaternion.h>

Tquaternion& Tquaternion::setToRotation(const T4dDblMatrix& m) {
  const double trace = m[0][0] + m[1][1] + m[2][2];
  if (trace <= 0.0) return setFromLargestDiagonal(m);
  const double s = std::sqrt(trace + 1.0);
  const double k = 0.5 / s;
  return *this = {s / 2.0, (m[1][2] - m[2][1]) * k, (m[2][0] - m[0][2]) * k,
                  (m[0][1] - m[1][0]) * k};
}

// For rotations by 120 degrees and more, where w may be 0.
Tquaternion& Tquaternion::setFromLargestDiagonal(const T4dDblMatrix& m) {
  int i = m[1][1] > m[0][0] ? 1 : 0;
  if (m[2][2] > m[i][i]) i = 2;
  const int j = (i + 1) % 3;
  const int l = (j + 1) % 3;
  const double s = std::sqrt(m[i][i] - (m[j][j] + m[l][l]) + 1.0);
  const double k = 0.5 / s;
  w = (m[j][l] - m[l][j]) * k;
  (*this)(1 + i) = s / 2.0;
  (*this)(1 + j) = (m[i][j] + m[j][i]) * k;
  (*this)(1 + l) = (m[i][l] + m[l][i]) * k;
  return *this;
}

Tquaternion& Tquaternion::setToPivotAxis(double angle, const T4dDblVector& axis) {
  if (axis.norm() <= 1e-9) return *this = Tquaternion();
  const T4dDblVector v = std::sin(angle / 2.0) * axis;
  const double length = axis.length();
  return *this = {std::cos(angle / 2.0), v.x / length, v.y / length, v.z / length};
}

void Tquaternion::getPivotAxis(double& angle, T4dDblVector& axis) const {
  const double half = std::acos(w);
  const bool turns = !(2.0 * half <= 1e-9);
  const double s = std::sin(half);
  if (turns) axis.set(x / s, y / s, z / s);
  angle = turns ? 2.0 * half : 0.0;
}

TunitQuaternion Tquaternion::exp() const {
  const double theta = T4dDblVector(x, y, z).length();
  const double k = theta > 1e-9 ? std::sin(theta) / theta : 1.0;
  return TunitQuaternion({std::cos(theta), k * x, k * y, k * z});
}

Tquaternion TunitQuaternion::log() const {
  const double theta = T4dDblVector(x, y, z).length();
  const double k = theta > 0.0 ? std::atan2(theta, w) / theta : 0.0;
  return {0.0, k * x, k * y, k * z};
}
