// Cartesian points.
#pragma once

#include <kilnbase/geometry/T4dDblVector.h>

/// A position: three contiguous doubles.
///
/// A point is a row: p * M adds the translation in row 3 of M. The fourth column of M is ignored:
/// nothing is divided. T4dDblMatrix.h defines the products. Comparisons return 0 or 1.
class T3dDblPoint {
 public:
  /// The coordinates.
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  /// (0, 0, 0); T3dDblPoint() is the constexpr form.
  KILNBASE_API static const T3dDblPoint origin;

  constexpr T3dDblPoint() = default;
  /// The coordinates as given; those of a vector count from the origin.
  constexpr T3dDblPoint(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
  constexpr T3dDblPoint(const T4dDblVector& v) : T3dDblPoint(v.x, v.y, v.z) {}

  /// Exact: all coordinates are equal.
  constexpr int operator==(const T3dDblPoint& p) const { return x == p.x && y == p.y && z == p.z; }
  constexpr int operator!=(const T3dDblPoint& p) const { return !(*this == p); }
  constexpr int operator==(const T4dDblVector& v) const { return *this == T3dDblPoint(v); }
  constexpr int operator!=(const T4dDblVector& v) const { return !(*this == v); }
  /// Deleted: the weight would be lost.
  int operator==(const T4dDblPoint& p) const = delete;
  int operator!=(const T4dDblPoint& p) const = delete;
  /// Whether the points are at most `tol` apart: tol*tol >= the squared distance. Kept as it is:
  /// the sign of `tol` does not matter.
  [[nodiscard]] constexpr int equivalent(const T3dDblPoint& p, double tol) const {
    return tol * tol >= distance2To(p);
  }

  /// The displacement from `p` to this point.
  constexpr T4dDblVector operator-(const T3dDblPoint& p) const {
    return {x - p.x, y - p.y, z - p.z};
  }
  /// The point moved by the vector.
  constexpr T3dDblPoint operator+(const T4dDblVector& v) const {
    return {x + v.x, y + v.y, z + v.z};
  }
  constexpr T3dDblPoint operator-(const T4dDblVector& v) const { return *this + -v; }
  /// Deleted: the weight would be lost.
  T3dDblPoint operator+(const T4dDblPoint& p) const = delete;
  T4dDblVector operator-(const T4dDblPoint& p) const = delete;
  /// The squared distance.
  [[nodiscard]] constexpr double distance2To(const T3dDblPoint& p) const {
    return (*this - p).norm();
  }

  /// this := p * M.
  constexpr T3dDblPoint& setToProduct(const T3dDblPoint& p, const T4dDblMatrix& m);
  constexpr T3dDblPoint& postmultBy(const T4dDblMatrix& m);
  /// p * M.
  constexpr T3dDblPoint operator*(const T4dDblMatrix& m) const;

  /// Writes "(x, y, z)".
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const T3dDblPoint& p);
};

constexpr T4dDblVector::T4dDblVector(const T3dDblPoint& p) : T4dDblVector(p.x, p.y, p.z) {}

constexpr int T4dDblVector::operator==(const T3dDblPoint& p) const {
  return p == *this;
}

constexpr int T4dDblVector::operator!=(const T3dDblPoint& p) const {
  return p != *this;
}
