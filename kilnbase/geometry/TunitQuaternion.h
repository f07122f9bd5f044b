// Rotations as unit quaternions.
#pragma once

#include <kilnbase/geometry/Tquaternion.h>

/// A rotation: a quaternion of unit length. Callers get one from a matrix, from an axis and an
/// angle, or from operations that keep unit length. `inverse` relies on unit length, so call
/// `renormalizeIt` after long chains of products. A quaternion and its negative are the same
/// rotation.
///
///     TunitQuaternion turn;
///     turn.setToPivotAxis(Tangle(90.0).radians(), T4dDblVector(0, 0, 1));
///     T4dDblVector v(1, 0, 0);
///     v.postmultBy(turn);    // (0, 1, 0)
class TunitQuaternion : public Tquaternion {
 public:
  /// No rotation.
  constexpr TunitQuaternion() = default;
  /// Takes the rotation of the upper left 3x3, which must be a rotation.
  template <std::derived_from<T4dDblMatrix> Matrix>
  TunitQuaternion& operator=(const Matrix& m) {
    Tquaternion::operator=(m);
    return *this;
  }

  /// The product of Hamilton: the rotation of `q` acts first.
  constexpr TunitQuaternion operator*(const TunitQuaternion& q) const {
    return TunitQuaternion(Tquaternion::operator*(q));
  }
  constexpr Tquaternion operator*(const Tquaternion& q) const { return Tquaternion::operator*(q); }
  using Tquaternion::operator-;
  /// The negated quaternion, which is the same rotation.
  constexpr TunitQuaternion operator-() const { return TunitQuaternion(Tquaternion::operator-()); }
  constexpr TunitQuaternion& negateIt() { return *this = -*this; }

  /// The rotation back.
  [[nodiscard]] constexpr TunitQuaternion conjugate() const {
    return TunitQuaternion(Tquaternion::conjugate());
  }
  constexpr TunitQuaternion& conjugateIt() { return *this = conjugate(); }
  /// The conjugate, without a division.
  [[nodiscard]] constexpr TunitQuaternion inverse() const { return conjugate(); }
  constexpr TunitQuaternion& invertIt() { return conjugateIt(); }

  /// Makes the length 1 again, which rounding has changed.
  TunitQuaternion& normalizeIt() {
    Tquaternion::normalizeIt();
    return *this;
  }
  TunitQuaternion& renormalizeIt() { return normalizeIt(); }

  /// As `Tquaternion::setToPivotAxis`: `angle` is in radians.
  TunitQuaternion& setToPivotAxis(double angle, const T4dDblVector& axis) {
    Tquaternion::setToPivotAxis(angle, axis);
    return *this;
  }
  /// The logarithm: (0, angle/2 * axis). It is 0 for x = y = z = 0, also when w is -1.
  [[nodiscard]] KILNBASE_API Tquaternion log() const;

 protected:
  friend class Tquaternion;
  /// The components as they are; not normalised.
  constexpr explicit TunitQuaternion(const Tquaternion& q) : Tquaternion(q) {}
};

inline TunitQuaternion Tquaternion::normalize() const {
  return TunitQuaternion(*this).normalizeIt();
}
