// 4x4 matrices, and the products of points and vectors with them.
#pragma once

#include <cstddef>
#include <cstdio>

#include <kilnbase/geometry/T3dDblPoint.h>
#include <kilnbase/geometry/T4dDblPoint.h>
#include <kilnbase/geometry/T4dDblVector.h>

/// A 4x4 matrix of doubles, row-major: element (r, c) is the (4*r + c)-th double.
///
/// Points and vectors are rows: a point p is transformed as p * M. The translation is row 3. In
/// A * B the transform A acts first. Rotations are right-handed. Angles are in radians. Indices are
/// not checked. Comparisons return 0 or 1.
///
///     T4dDblMatrix m;
///     m.setToAxisRotate(T4dDblVector(0, 0, 1), Tangle(90.0).radians());
///     m.postmultBy(T4dDblVector(5, 0, 0));    // turns, then moves
///     T3dDblPoint p(1, 0, 0);
///     p.postmultBy(m);                        // (5, 1, 0)
///
/// Vectors, scales and quaternions convert to matrices. The matrix of a vector v is the translation
/// T(v), as in the example, so `m *= v` is m := m * T(v). The column product `m * v` is a vector
/// instead, and `m = m * v` does not compile.
class T4dDblMatrix {
 public:
  /// The identity; T4dDblMatrix() is the constexpr form.
  KILNBASE_API static const T4dDblMatrix identity;

  /// The identity.
  constexpr T4dDblMatrix() : T4dDblMatrix(1, 0, 0, 0, 1, 0, 0, 0, 1) {}

  /// Row r, column c; not checked.
  constexpr double& operator()(short r, short c) { return element_[r][c]; }
  constexpr const double& operator()(short r, short c) const { return element_[r][c]; }
  /// The four elements of row r.
  constexpr double* operator[](std::size_t r) { return element_[r]; }
  constexpr const double* operator[](std::size_t r) const { return element_[r]; }

  /// Exact: all elements are equal.
  constexpr int operator==(const T4dDblMatrix& m) const;
  constexpr int operator!=(const T4dDblMatrix& m) const { return !(*this == m); }
  /// Whether all elements differ by at most `tol`.
  [[nodiscard]] KILNBASE_API int equivalent(const T4dDblMatrix& m, double tol) const;

  /// this := A * B. Either may be this matrix.
  constexpr T4dDblMatrix& setToProduct(const T4dDblMatrix& a, const T4dDblMatrix& b);
  /// this := this * M.
  constexpr T4dDblMatrix& postmultBy(const T4dDblMatrix& m) { return setToProduct(*this, m); }
  /// this := M * this.
  constexpr T4dDblMatrix& premultBy(const T4dDblMatrix& m) { return setToProduct(m, *this); }
  /// The product this * M, new or in place.
  constexpr T4dDblMatrix operator*(const T4dDblMatrix& m) const;
  constexpr T4dDblMatrix& operator*=(const T4dDblMatrix& m) { return postmultBy(m); }

  /// Sets this matrix to the identity.
  constexpr T4dDblMatrix& setToIdentity() { return *this = T4dDblMatrix(); }
  /// The transposed matrix, new or in place.
  [[nodiscard]] constexpr T4dDblMatrix transpose() const;
  constexpr T4dDblMatrix& transposeIt() { return *this = transpose(); }
  /// Inverts by Gauss-Jordan elimination with partial pivoting. The inverse of a singular matrix
  /// has infinite or NaN elements.
  KILNBASE_API T4dDblMatrix& invertIt();
  /// The same, new.
  [[nodiscard]] KILNBASE_API T4dDblMatrix inverse() const;
  /// The determinant of the upper left 3x3.
  [[nodiscard]] constexpr double det3x3() const;

  /// this := the rotation by `angle` radians about an axis through the origin. For a pure rotation
  /// the axis must be of unit length. An angle of exactly 0 gives the identity.
  KILNBASE_API T4dDblMatrix& setToAxisRotate(const T4dDblVector& axis, double angle);
  /// this := R * this, where R is the rotation of `setToAxisRotate`. An angle of 0 changes nothing.
  KILNBASE_API T4dDblMatrix& axisRotateIt(const T4dDblVector& axis, double angle);

  /// Row by row.
  KILNBASE_API T4dDblMatrix& setFromDouble(const double elements[4][4]);
  KILNBASE_API T4dDblMatrix& setFromFloat(const float elements[4][4]);
  KILNBASE_API void copyToFloat(float elements[4][4]) const;
  /// Writes one line for each row, in the format "%g %g %g %g\n".
  KILNBASE_API void print(std::FILE* file) const;
  /// Writes the same lines with the stream's formatting, the field width for every element.
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const T4dDblMatrix& m);

 private:
  friend class T3dDblPoint;
  friend class T4dDblPoint;
  friend class TgenXformMatrix;
  friend class Tquaternion;
  friend class Tscale;
  // Sets the upper left 3x3, row by row. All else is as in the identity.
  constexpr T4dDblMatrix(double xx, double xy, double xz, double yx, double yy, double yz,
                         double zx, double zy, double zz)
      : element_{{xx, xy, xz, 0}, {yx, yy, yz, 0}, {zx, zy, zz, 0}, {0, 0, 0, 1}} {}

  struct Unset {};
  constexpr explicit T4dDblMatrix(Unset) {}  // the caller sets every element

  // `setToAxisRotate` by the angle of this cosine and sine.
  T4dDblMatrix& setToAxisTurn(const T4dDblVector& axis, double cosine, double sine);

  // (x, y, z, w) * this.
  constexpr T4dDblPoint rowProduct(double x, double y, double z, double w) const {
    return {x * element_[0][0] + y * element_[1][0] + z * element_[2][0] + w * element_[3][0],
            x * element_[0][1] + y * element_[1][1] + z * element_[2][1] + w * element_[3][1],
            x * element_[0][2] + y * element_[1][2] + z * element_[2][2] + w * element_[3][2],
            x * element_[0][3] + y * element_[1][3] + z * element_[2][3] + w * element_[3][3]};
  }

  double element_[4][4];
};

constexpr int T4dDblMatrix::operator==(const T4dDblMatrix& m) const {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      if (element_[r][c] != m.element_[r][c]) return 0;
    }
  }
  return 1;
}

constexpr T4dDblMatrix& T4dDblMatrix::setToProduct(const T4dDblMatrix& a, const T4dDblMatrix& b) {
  return *this = a * b;
}

// Multiplies copies, which compilers keep in vector registers.
constexpr T4dDblMatrix T4dDblMatrix::operator*(const T4dDblMatrix& m) const {
  const T4dDblMatrix left = *this, right = m;
  T4dDblMatrix product{Unset()};
  for (std::size_t r = 0; r < 4; ++r) {
    const auto& row = left.element_[r];
    const auto [x, y, z, w] = right.rowProduct(row[0], row[1], row[2], row[3]);
    product.element_[r][0] = x;
    product.element_[r][1] = y;
    product.element_[r][2] = z;
    product.element_[r][3] = w;
  }
  return product;
}

constexpr T4dDblMatrix T4dDblMatrix::transpose() const {
  T4dDblMatrix transposed;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) transposed.element_[c][r] = element_[r][c];
  }
  return transposed;
}

constexpr double T4dDblMatrix::det3x3() const {
  return element_[0][0] * (element_[1][1] * element_[2][2] - element_[1][2] * element_[2][1]) -
         element_[0][1] * (element_[1][0] * element_[2][2] - element_[1][2] * element_[2][0]) +
         element_[0][2] * (element_[1][0] * element_[2][1] - element_[1][1] * element_[2][0]);
}

template <std::derived_from<T4dDblMatrix> Matrix>
constexpr T4dDblVector& T4dDblVector::operator=(const Matrix& m) {
  return set(m(3, 0), m(3, 1), m(3, 2));
}

constexpr T4dDblVector::operator T4dDblMatrix() const {
  T4dDblMatrix m;
  m(3, 0) = x;
  m(3, 1) = y;
  m(3, 2) = z;
  return m;
}

constexpr T4dDblVector& T4dDblVector::setToProduct(const T4dDblVector& v, const T4dDblMatrix& m) {
  return set(v.x * m[0][0] + v.y * m[1][0] + v.z * m[2][0],
             v.x * m[0][1] + v.y * m[1][1] + v.z * m[2][1],
             v.x * m[0][2] + v.y * m[1][2] + v.z * m[2][2]);
}

constexpr T4dDblVector& T4dDblVector::setToProduct(const T4dDblMatrix& m, const T4dDblVector& v) {
  return set(m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z,
             m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z,
             m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z);
}

constexpr T4dDblVector& T4dDblVector::postmultBy(const T4dDblMatrix& m) {
  return setToProduct(*this, m);
}

constexpr T4dDblVector& T4dDblVector::premultBy(const T4dDblMatrix& m) {
  return setToProduct(m, *this);
}

constexpr T4dDblVector T4dDblVector::operator*(const T4dDblMatrix& m) const {
  return T4dDblVector().setToProduct(*this, m);
}

namespace vxKilnBase::detail {

/// The vector m * v. It converts to a matrix only explicitly, unlike other vectors. Otherwise
/// `m = m * v` would set m to the translation by the vector m * v, while `m *= v` is the product of
/// m and the translation by v.
class ColumnProduct : public T4dDblVector {
 public:
  constexpr ColumnProduct() = default;
  constexpr explicit ColumnProduct(const T4dDblVector& v) : T4dDblVector(v) {}
  constexpr explicit operator T4dDblMatrix() const { return T4dDblVector::operator T4dDblMatrix(); }
};

}  // namespace vxKilnBase::detail

/// The column product with the upper left 3x3.
constexpr vxKilnBase::detail::ColumnProduct operator*(const T4dDblMatrix& m,
                                                      const T4dDblVector& v) {
  return vxKilnBase::detail::ColumnProduct(T4dDblVector().setToProduct(m, v));
}

/// Deleted: a point would be taken for a vector and lose its weight and the translation.
T4dDblVector operator*(const T4dDblMatrix& m, const T3dDblPoint& p) = delete;
T4dDblVector operator*(const T4dDblMatrix& m, const T4dDblPoint& p) = delete;

constexpr T3dDblPoint& T3dDblPoint::setToProduct(const T3dDblPoint& p, const T4dDblMatrix& m) {
  const T4dDblPoint image = m.rowProduct(p.x, p.y, p.z, 1.0);
  return *this = T3dDblPoint(image.x, image.y, image.z);
}

constexpr T3dDblPoint& T3dDblPoint::postmultBy(const T4dDblMatrix& m) {
  return setToProduct(*this, m);
}

constexpr T3dDblPoint T3dDblPoint::operator*(const T4dDblMatrix& m) const {
  return T3dDblPoint().setToProduct(*this, m);
}

constexpr T4dDblPoint& T4dDblPoint::setToProduct(const T4dDblPoint& p, const T4dDblMatrix& m) {
  return *this = m.rowProduct(p.x, p.y, p.z, p.w);
}

constexpr T4dDblPoint& T4dDblPoint::setToProduct(const T4dDblMatrix& m, const T4dDblPoint& p) {
  return set(m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3] * p.w,
             m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3] * p.w,
             m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3] * p.w,
             m[3][0] * p.x + m[3][1] * p.y + m[3][2] * p.z + m[3][3] * p.w);
}

constexpr T4dDblPoint& T4dDblPoint::postmultBy(const T4dDblMatrix& m) {
  return setToProduct(*this, m);
}

constexpr T4dDblPoint& T4dDblPoint::premultBy(const T4dDblMatrix& m) {
  return setToProduct(m, *this);
}

constexpr T4dDblPoint T4dDblPoint::operator*(const T4dDblMatrix& m) const {
  return T4dDblPoint().setToProduct(*this, m);
}
