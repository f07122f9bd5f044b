// Quaternions.
#pragma once

#include <cmath>
#include <concepts>
#include <type_traits>

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblMatrix.h>

class TunitQuaternion;

namespace vxKilnBase::detail {

/// Compilers for any x86-64 processor keep a pair in one register.
typedef double DoublePair __attribute__((vector_size(2 * sizeof(double))));

}  // namespace vxKilnBase::detail

/// A quaternion w + xi + yj + zk: four doubles, the scalar part first.
///
/// The rotation of a quaternion q is that of the matrix T4dDblMatrix(q): v * q turns the row v,
/// right-handed, whatever the length of q. Products are Hamilton's: in p * q the rotation of q acts
/// first. So T4dDblMatrix(p * q) = T4dDblMatrix(q) * T4dDblMatrix(p). Angles are in radians.
/// Comparisons return 0 or 1.
class Tquaternion {
 public:
  /// The components.
  double w = 1.0;
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  /// The identity, (1, 0, 0, 0).
  constexpr Tquaternion() = default;
  /// Takes the rotation of the upper left 3x3. The result is of unit length when the 3x3 is a
  /// rotation. The first component found is w for a positive trace, else the one of the largest
  /// diagonal element: this component is not small, and the others come from a division by it
  /// (Shoemake, "Animating rotation with quaternion curves", 1985).
  template <std::derived_from<T4dDblMatrix> Matrix>
  Tquaternion& operator=(const Matrix& m) {
    return setToRotation(m);
  }

  /// Exact: all components are equal.
  constexpr int operator==(const Tquaternion& q) const {
    return w == q.w && x == q.x && y == q.y && z == q.z;
  }
  constexpr int operator!=(const Tquaternion& q) const { return !(*this == q); }
  /// Whether the quaternions, as points of four-dimensional space, are at most `tol` apart. A
  /// negative `tol` counts as 0.
  [[nodiscard]] int equivalent(const Tquaternion& q, double tol) const {
    return std::sqrt((*this - q).norm()) <= (tol > 0.0 ? tol : 0.0);
  }

  /// Component by component.
  constexpr Tquaternion operator+(const Tquaternion& q) const {
    return {w + q.w, x + q.x, y + q.y, z + q.z};
  }
  constexpr Tquaternion operator-(const Tquaternion& q) const {
    return {w - q.w, x - q.x, y - q.y, z - q.z};
  }
  constexpr Tquaternion operator-() const { return {-w, -x, -y, -z}; }
  constexpr Tquaternion& negateIt() { return *this = -*this; }
  constexpr Tquaternion& scaleIt(double s) { return *this = {w * s, x * s, y * s, z * s}; }
  /// The product of Hamilton: the rotation of `q` acts first.
  constexpr Tquaternion operator*(const Tquaternion& q) const;

  /// (w, -x, -y, -z).
  [[nodiscard]] constexpr Tquaternion conjugate() const { return {w, -x, -y, -z}; }
  constexpr Tquaternion& conjugateIt() { return *this = conjugate(); }
  /// The conjugate divided by the squared length; infinite or NaN for the quaternion 0.
  [[nodiscard]] constexpr Tquaternion inverse() const {
    const double n = norm();
    return {w / n, -x / n, -y / n, -z / n};
  }
  constexpr Tquaternion& invertIt() { return *this = inverse(); }

  /// The quaternion divided by its length. A length of 1e-9 or less gives the identity.
  [[nodiscard]] TunitQuaternion normalize() const;
  /// The same in place.
  Tquaternion& normalizeIt() {
    const double n = std::sqrt(norm());
    return *this = n <= 1e-9 ? Tquaternion() : Tquaternion(w / n, x / n, y / n, z / n);
  }

  /// Sets the rotation by `angle` radians about an axis of any length. Kept as it is: an axis whose
  /// squared length is 1e-9 or less gives the identity.
  KILNBASE_API Tquaternion& setToPivotAxis(double angle, const T4dDblVector& axis);
  /// Sets `angle` to 2*acos(w), in radians, and `axis` to (x, y, z)/sin(angle/2): the unit axis of
  /// a unit quaternion. For w = 1 `angle` becomes 0 and `axis` stays unchanged. Every rotation by
  /// less than 2.1e-8 has w = 1, because the cosine of half its angle rounds to 1. The next `angle`
  /// is 3.0e-8. For |w| > 1 both become NaN.
  KILNBASE_API void getPivotAxis(double& angle, T4dDblVector& axis) const;
  /// The exponential of (0, x, y, z): `w` is not used.
  [[nodiscard]] KILNBASE_API TunitQuaternion exp() const;

  /// The matrix of the rotation, which divides by the squared length.
  constexpr void convertToMatrix(T4dDblMatrix& m) const { m = *this; }
  constexpr operator T4dDblMatrix() const;

  /// Writes "(w, x, y, z)".
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const Tquaternion& q);

 protected:
  /// 0 is w, 1 is x, 2 is y, every other index z.
  constexpr double& operator()(int i) { return i == 0 ? w : i == 1 ? x : i == 2 ? y : z; }

 private:
  friend class TunitQuaternion;
  constexpr Tquaternion(double w_, double x_, double y_, double z_) : w(w_), x(x_), y(y_), z(z_) {}

  KILNBASE_API Tquaternion& setToRotation(const T4dDblMatrix& m);
  Tquaternion& setFromLargestDiagonal(const T4dDblMatrix& m);
  constexpr double norm() const { return (w * w + x * x) + (y * y + z * z); }
};

// Compilers do not find the pairs of the first formula, and have no elements of vectors at compile
// time. The digits of both are the same where the compiler fuses no products with sums.
constexpr Tquaternion Tquaternion::operator*(const Tquaternion& q) const {
  if (std::is_constant_evaluated()) {
    return {(w * q.w - z * q.z) - (x * q.x + y * q.y), (w * q.x - z * q.y) + (x * q.w + y * q.z),
            (w * q.y + z * q.x) - (x * q.z - y * q.w), (w * q.z + z * q.w) + (x * q.y - y * q.x)};
  }
  using Pair = vxKilnBase::detail::DoublePair;
  const Pair wx = {q.w, q.x}, xw = {q.x, q.w}, yz = {q.y, q.z}, zy = {q.z, q.y};
  const Pair minusPlus = {-1.0, 1.0};
  const Pair productWx = (w * wx - z * zy) + minusPlus * (x * xw + y * yz);
  const Pair productYz = (w * yz + z * xw) + minusPlus * (x * zy - y * wx);
  return {productWx[0], productWx[1], productYz[0], productYz[1]};
}

constexpr Tquaternion::operator T4dDblMatrix() const {
  const double s = 2.0 / norm();
  return {1.0 - (y * y + z * z) * s, (x * y + w * z) * s,       (x * z - w * y) * s,
          (x * y - w * z) * s,       1.0 - (x * x + z * z) * s, (y * z + w * x) * s,
          (x * z + w * y) * s,       (y * z - w * x) * s,       1.0 - (x * x + y * y) * s};
}

/// Deleted: the column product would turn the vector the other way. Use v * q.
T4dDblVector operator*(const Tquaternion& q, const T4dDblVector& v) = delete;
