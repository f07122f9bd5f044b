#include <algorithm>
#include <cmath>
#include <cstddef>

#include <kilnbase/geometry/TgenXformMatrix.h>

namespace {

// A vector (x, y, z), its length d, and the length r of (x, 0, z).
struct Direction {
  double x, y, z, d, r;
};

Direction directionOf(const double v[3]) {
  return {v[0], v[1], v[2], T4dDblVector(v[0], v[1], v[2]).length(),
          std::sqrt(v[0] * v[0] + v[2] * v[2])};
}

}  // namespace

TgenXformMatrix& TgenXformMatrix::translate(double x, double y, double z) {
  T4dDblMatrix& m = *this;
  for (int c = 0; c < 4; ++c) m[3][c] += x * m[0][c] + y * m[1][c] + z * m[2][c];
  return *this;
}

TgenXformMatrix& TgenXformMatrix::scale(double sx, double sy, double sz) {
  T4dDblMatrix& m = *this;
  for (int c = 0; c < 4; ++c) {
    m[0][c] *= sx;
    m[1][c] *= sy;
    m[2][c] *= sz;
  }
  return *this;
}

TgenXformMatrix& TgenXformMatrix::rotateRows(std::size_t from, std::size_t to,
                                             const Tangle& angle) {
  const double cosine = angle.cos();
  const double sine = angle.sin();
  for (int c = 0; c < 4; ++c) {
    double& a = (*this)[from][c];
    double& b = (*this)[to][c];
    const double turned = cosine * a + sine * b;
    b = cosine * b - sine * a;
    a = turned;
  }
  return *this;
}

TgenXformMatrix& TgenXformMatrix::rotateAxis(const double axis[3], const Tangle& angle) {
  const double length = std::hypot(axis[0], axis[1], axis[2]);
  if (length == 0.0) return *this;
  const T4dDblVector unit(axis[0] / length, axis[1] / length, axis[2] / length);
  return multiplyBy(T4dDblMatrix().setToAxisTurn(unit, angle.cos(), angle.sin()));
}

TgenXformMatrix& TgenXformMatrix::multiplyBy(const T4dDblMatrix& m) {
  premultBy(m);
  return *this;
}

TgenXformMatrix& TgenXformMatrix::alignVectorWithZAxis(const double v[3]) {
  const auto [x, y, z, d, r] = directionOf(v);
  if (d != 0.0) rotatex(Tangle(r / d, y / d));
  if (r != 0.0) rotatey(Tangle(z / r, -x / r));
  return *this;
}

TgenXformMatrix& TgenXformMatrix::alignZAxisWithVector(const double v[3]) {
  const auto [x, y, z, d, r] = directionOf(v);
  if (r != 0.0) rotatey(Tangle(z / r, x / r));
  if (d != 0.0) rotatex(Tangle(r / d, -y / d));
  return *this;
}

TgenXformMatrix& TgenXformMatrix::setOrientation(const double a[3], const double b[3],
                                                 const double c[3]) {
  const double rows[3][3] = {{a[0], b[0], c[0]}, {a[1], b[1], c[1]}, {a[2], b[2], c[2]}};
  for (std::size_t r = 0; r < 3; ++r) std::copy_n(rows[r], 3, (*this)[r]);
  return *this;
}

void TgenXformMatrix::transformPoint(const double in[4], double out[3]) const {
  const T4dDblPoint p = T4dDblPoint(in[0], in[1], in[2], in[3]) * *this;
  std::copy_n(p.array(), 3, out);
}

void TgenXformMatrix::transformVector(const double in[3], double out[3]) const {
  const double p[] = {in[0], in[1], in[2], 1.0};
  transformPoint(p, out);
}
