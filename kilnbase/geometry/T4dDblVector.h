// Free directions and displacements.
#pragma once

#include <cmath>
#include <concepts>
#include <cstddef>
#include <iosfwd>

#include <kilnbase/export.h>

class T3dDblPoint;
class T4dDblMatrix;
class T4dDblPoint;
class Tangle;
class TunitQuaternion;

/// An axis, by the index of its component.
enum class Taxis { X, Y, Z };

/// A direction or displacement: three contiguous doubles. The class has no fourth component,
/// despite its name. Products with a matrix take 0 for it: a translation never acts on a vector.
///
/// A vector is a row: v * M. In v * A * B the transform A acts first. T4dDblMatrix.h defines the
/// products, Tangle.h the rotations about the axes. Comparisons return 0 or 1. Normalisation leaves
/// a vector of length 1e-9 or less unchanged.
///
///     T4dDblVector v(3, 0, 4);
///     v.normalizeIt();                  // (0.6, 0, 0.8)
///     v.postmultBy(Tscale(2, 1, 1));    // (1.2, 0, 0.8)
class T4dDblVector {
 public:
  /// The components.
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  /// (0, 0, 0): no displacement; T4dDblVector() is the constexpr form.
  KILNBASE_API static const T4dDblVector identity;

  constexpr T4dDblVector() = default;
  /// The components as given; a point counts as its displacement from the origin.
  constexpr T4dDblVector(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
  constexpr T4dDblVector(const T3dDblPoint& p);
  /// Drops `w`, without dividing by it.
  constexpr T4dDblVector(const T4dDblPoint& p);
  /// Sets the components.
  constexpr T4dDblVector& set(double newX, double newY, double newZ) {
    x = newX;
    y = newY;
    z = newZ;
    return *this;
  }
  /// Takes the translation of a matrix: (M(3,0), M(3,1), M(3,2)).
  template <std::derived_from<T4dDblMatrix> Matrix>
  constexpr T4dDblVector& operator=(const Matrix& m);
  /// The pure translation by this vector.
  constexpr operator T4dDblMatrix() const;

  /// 0 is x, 1 is y, every other index z.
  constexpr double& operator[](std::size_t i) { return i == 0 ? x : i == 1 ? y : z; }
  constexpr double operator[](std::size_t i) const { return i == 0 ? x : i == 1 ? y : z; }
  constexpr double& operator()(short i) { return (*this)[static_cast<std::size_t>(i)]; }
  constexpr double operator()(short i) const { return (*this)[static_cast<std::size_t>(i)]; }
  /// The three components, contiguous.
  double* array() { return reinterpret_cast<double*>(this); }
  const double* array() const { return reinterpret_cast<const double*>(this); }

  /// Exact: all components are equal.
  constexpr int operator==(const T4dDblVector& v) const { return x == v.x && y == v.y && z == v.z; }
  constexpr int operator!=(const T4dDblVector& v) const { return !(*this == v); }
  constexpr int operator==(const T3dDblPoint& p) const;
  constexpr int operator!=(const T3dDblPoint& p) const;
  /// Whether the difference is shorter than `tol`. Kept as it is: a difference of exactly `tol` is
  /// too long, unlike for points.
  [[nodiscard]] int equivalent(const T4dDblVector& v, double tol) const {
    return (*this - v).length() < tol;
  }
  /// Whether the length differs from 1 by less than `tol`.
  [[nodiscard]] int unitLength(double tol) const { return std::fabs(length() - 1.0) < tol; }
  /// Whether both directions, normalised, are `equivalent`, or one and the opposite of the other.
  [[nodiscard]] int parallel(const T4dDblVector& v, double tol) const {
    const T4dDblVector normal = getNormal();
    const T4dDblVector other = v.getNormal();
    return normal.equivalent(other, tol) || normal.equivalent(-other, tol);
  }

  /// Component by component.
  constexpr T4dDblVector operator+(const T4dDblVector& v) const {
    return {x + v.x, y + v.y, z + v.z};
  }
  constexpr T4dDblVector operator-(const T4dDblVector& v) const {
    return {x - v.x, y - v.y, z - v.z};
  }
  constexpr T4dDblVector operator-() const { return {-x, -y, -z}; }
  constexpr T4dDblVector operator*(double s) const { return {x * s, y * s, z * s}; }
  friend constexpr T4dDblVector operator*(double s, const T4dDblVector& v) { return v * s; }
  /// Component by component.
  constexpr T4dDblVector& operator*=(double s) { return *this = *this * s; }
  constexpr T4dDblVector& operator+=(const T4dDblVector& v) { return *this = *this + v; }
  /// Deleted: the weight of the point would be lost. Write T4dDblVector(p) where that is meant.
  int operator==(const T4dDblPoint& p) const = delete;
  int operator!=(const T4dDblPoint& p) const = delete;
  T4dDblVector operator+(const T4dDblPoint& p) const = delete;
  T4dDblVector operator-(const T4dDblPoint& p) const = delete;
  T4dDblVector operator^(const T4dDblPoint& p) const = delete;
  T4dDblVector& operator+=(const T4dDblPoint& p) = delete;
  /// The displacement back: the negated vector.
  [[nodiscard]] constexpr T4dDblVector inverse() const { return -*this; }
  constexpr T4dDblVector& invertIt() { return *this = -*this; }

  /// The sum of the products of the components.
  [[nodiscard]] constexpr double dotProduct(const T4dDblVector& v) const {
    return x * v.x + y * v.y + z * v.z;
  }
  /// The squared length.
  [[nodiscard]] constexpr double norm() const { return dotProduct(*this); }
  /// The length.
  [[nodiscard]] double length() const { return std::sqrt(norm()); }
  /// The cross product, right-handed.
  [[nodiscard]] constexpr T4dDblVector crossProduct(const T4dDblVector& v) const {
    return {y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x};
  }
  /// The cross product. The operator `^` binds more loosely than `+` and `==`: use parentheses.
  constexpr T4dDblVector operator^(const T4dDblVector& v) const { return crossProduct(v); }
  constexpr T4dDblVector& setToCrossProduct(const T4dDblVector& a, const T4dDblVector& b) {
    return *this = a.crossProduct(b);
  }

  /// Divides the vector by its length, unless that is 1e-9 or less.
  T4dDblVector& normalizeIt() { return normalizeIt(length()); }
  /// Normalises a vector whose length the caller knows.
  constexpr T4dDblVector& normalizeIt(double len) {
    if (len > 1e-9) *this *= 1.0 / len;
    return *this;
  }
  /// The vector divided by its length, as `normalizeIt` does.
  [[nodiscard]] T4dDblVector getNormal() const {
    T4dDblVector normal = *this;
    return normal.normalizeIt();
  }

  /// The axis of the component of largest magnitude; of equal components the later axis.
  [[nodiscard]] Taxis dominantAxis() const {
    const double sizeX = std::fabs(x);
    const double sizeY = std::fabs(y);
    const double sizeZ = std::fabs(z);
    if (sizeX > sizeY) return sizeX > sizeZ ? Taxis::X : Taxis::Z;
    return sizeY > sizeZ ? Taxis::Y : Taxis::Z;
  }

  /// Right-handed rotations about the axes.
  inline T4dDblVector& rotateItX(const Tangle& angle);
  inline T4dDblVector& rotateItY(const Tangle& angle);
  inline T4dDblVector& rotateItZ(const Tangle& angle);
  /// The rotation that turns this direction into the target's. The axis is the cross product of
  /// both vectors. Opposite directions turn about an axis perpendicular to this vector, made of two
  /// of its components.
  ///
  /// Kept as it is: the result is the identity when the product of the lengths is below 1e-9, and
  /// when the squared length of the axis is 1e-9 or less. So normalise both vectors first. Unit
  /// vectors that are within 3e-5 of parallel still give the identity.
  ///
  /// Kept as it is: directions count as opposite only when the computed cosine is exactly -1. Other
  /// unit vectors within 3e-5 of opposite give the identity, and long vectors turn about the
  /// rounding errors of their cross product.
  [[nodiscard]] KILNBASE_API TunitQuaternion rotateTo(const T4dDblVector& target) const;

  /// this := v * M and this := M * v. Both use the upper left 3x3 of M only.
  constexpr T4dDblVector& setToProduct(const T4dDblVector& v, const T4dDblMatrix& m);
  constexpr T4dDblVector& setToProduct(const T4dDblMatrix& m, const T4dDblVector& v);
  constexpr T4dDblVector& postmultBy(const T4dDblMatrix& m);
  constexpr T4dDblVector& premultBy(const T4dDblMatrix& m);
  constexpr T4dDblVector operator*(const T4dDblMatrix& m) const;

  /// Writes "(x, y, z)" with the stream's formatting, the field width for every number. So do
  /// all values of this folder with their numbers; only boxes and angles take it for their first
  /// character or number.
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const T4dDblVector& v);
};
