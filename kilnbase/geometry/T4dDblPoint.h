// Homogeneous points.
#pragma once

#include <kilnbase/geometry/T4dDblVector.h>

/// A position with a weight `w`: four contiguous doubles.
///
/// A point with w = 1 is Cartesian. The rational form of a point is (x/w, y/w, z/w, w), the
/// homogeneous form (x*w, y*w, z*w, w). The caller knows which form a point holds; the point keeps
/// no flag. Constructors, assignments, comparisons and products use the stored components.
/// Differences, and sums with vectors, use the Cartesian form.
///
/// A point is a row: p * M. The column product is `premultBy` or `setToProduct(M, p)`.
/// T4dDblMatrix.h defines the products.
///
/// Comparisons return 0 or 1. Nothing guards against w = 0: the results are infinite or NaN.
class T4dDblPoint {
 public:
  /// The components; the weight is 1 in a Cartesian point.
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double w = 1.0;

  /// (0, 0, 0, 1); T4dDblPoint() is the constexpr form.
  KILNBASE_API static const T4dDblPoint origin;

  constexpr T4dDblPoint() = default;
  /// The components as given; nothing is divided.
  constexpr T4dDblPoint(double x_, double y_, double z_, double w_) : x(x_), y(y_), z(z_), w(w_) {}
  constexpr T4dDblPoint& set(double newX, double newY, double newZ, double newW) {
    x = newX;
    y = newY;
    z = newZ;
    w = newW;
    return *this;
  }

  /// 0 is x, 1 is y, 2 is z, every other index w.
  constexpr double& operator()(short i) { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
  constexpr double operator()(short i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
  /// The four components, contiguous.
  double* array() { return reinterpret_cast<double*>(this); }
  const double* array() const { return reinterpret_cast<const double*>(this); }

  /// Exact: all four components are equal.
  constexpr int operator==(const T4dDblPoint& p) const {
    return x == p.x && y == p.y && z == p.z && w == p.w;
  }
  constexpr int operator!=(const T4dDblPoint& p) const { return !(*this == p); }
  /// Whether the points are at most `tol` apart. Kept as it is: the distance is that of the four
  /// stored components, weight included, in four-dimensional space.
  [[nodiscard]] int equivalent(const T4dDblPoint& p, double tol) const {
    const double dx = x - p.x;
    const double dy = y - p.y;
    const double dz = z - p.z;
    const double dw = w - p.w;
    return tol >= std::sqrt(dx * dx + dy * dy + dz * dz + dw * dw);
  }

  /// The displacement between the Cartesian forms.
  constexpr T4dDblVector operator-(const T4dDblPoint& p) const {
    return T4dDblVector(cartesian()) - T4dDblVector(p.cartesian());
  }
  /// The Cartesian form, moved by the vector.
  constexpr T4dDblPoint operator+(const T4dDblVector& v) const {
    const T4dDblPoint p = cartesian();
    return {p.x + v.x, p.y + v.y, p.z + v.z, 1.0};
  }
  constexpr T4dDblPoint operator-(const T4dDblVector& v) const { return *this + -v; }
  /// Deleted: the weight of the second point would be lost.
  T4dDblPoint operator+(const T4dDblPoint& p) const = delete;
  /// Deleted: the result would be a point instead of the displacement.
  T4dDblVector operator-(const T3dDblPoint& p) const = delete;
  /// The distance of the Cartesian forms.
  [[nodiscard]] double distanceTo(const T4dDblPoint& p) const { return (*this - p).length(); }

  /// (x/w, y/w, z/w, 1).
  constexpr T4dDblPoint& cartesianizeIt() {
    rationalizeIt();
    w = 1.0;
    return *this;
  }
  [[nodiscard]] constexpr T4dDblPoint cartesian() const {
    return T4dDblPoint(*this).cartesianizeIt();
  }
  /// (x/w, y/w, z/w, w).
  constexpr T4dDblPoint& rationalizeIt() { return w == 1.0 ? *this : scaleBy(1.0 / w); }
  [[nodiscard]] constexpr T4dDblPoint rational() const {
    return T4dDblPoint(*this).rationalizeIt();
  }
  /// (x*w, y*w, z*w, w).
  constexpr T4dDblPoint& homogenizeIt() { return w == 1.0 ? *this : scaleBy(w); }
  [[nodiscard]] constexpr T4dDblPoint homogenous() const {
    return T4dDblPoint(*this).homogenizeIt();
  }

  /// this := p * M and this := M * p, over all four components.
  constexpr T4dDblPoint& setToProduct(const T4dDblPoint& p, const T4dDblMatrix& m);
  constexpr T4dDblPoint& setToProduct(const T4dDblMatrix& m, const T4dDblPoint& p);
  constexpr T4dDblPoint& postmultBy(const T4dDblMatrix& m);
  constexpr T4dDblPoint& premultBy(const T4dDblMatrix& m);
  constexpr T4dDblPoint operator*(const T4dDblMatrix& m) const;

  /// Writes "(x, y, z, w)".
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const T4dDblPoint& p);

 private:
  constexpr T4dDblPoint& scaleBy(double s) { return set(x * s, y * s, z * s, w); }
};

constexpr T4dDblVector::T4dDblVector(const T4dDblPoint& p) : T4dDblVector(p.x, p.y, p.z) {}
