// Rotations as unit quaternions.
#pragma once

#include <kilnbase/geometry/Tquaternion.h>

/// A rotation: a quaternion of unit length. It comes from a matrix, from an axis and an angle, or
/// from operations that keep unit length; `inverse` takes that length for granted. A quaternion and
/// its negative are the same rotation. Call `renormalizeIt` after long chains of products.
///
///     TunitQuaternion turn;
///     turn.setToPivotAxis(pi / 2, T4dDblVector(0, 0, 1));
///     T4dDblVector y = T4dDblVector(1, 0, 0) * turn;
class TunitQuaternion : public Tquaternion {
 public:
  /// No rotation.
  constexpr TunitQuaternion() = default;
  /// Takes the rotation of the upper left 3x3, which must be one.
  template <std::derived_from<T4dDblMatrix> Matrix>
  TunitQuaternion& operator=(const Matrix& m) {
    Tquaternion::operator=(m);
    return *this;
  }

  constexpr TunitQuaternion operator*(const TunitQuaternion& q) const {
    return TunitQuaternion(Tquaternion::operator*(q));
  }
  constexpr Tquaternion operator*(const Tquaternion& q) const { return Tquaternion::operator*(q); }
  using Tquaternion::operator-;
  constexpr TunitQuaternion operator-() const { return TunitQuaternion(Tquaternion::operator-()); }
  constexpr TunitQuaternion& negateIt() { return *this = -*this; }

  constexpr TunitQuaternion conjugate() const { return TunitQuaternion(Tquaternion::conjugate()); }
  constexpr TunitQuaternion& conjugateIt() { return *this = conjugate(); }
  /// The conjugate: nothing is divided.
  constexpr TunitQuaternion inverse() const { return conjugate(); }
  constexpr TunitQuaternion& invertIt() { return conjugateIt(); }

  TunitQuaternion& normalizeIt() {
    Tquaternion::normalizeIt();
    return *this;
  }
  TunitQuaternion& renormalizeIt() { return normalizeIt(); }

  TunitQuaternion& setToPivotAxis(double angle, const T4dDblVector& axis) {
    Tquaternion::setToPivotAxis(angle, axis);
    return *this;
  }
  /// (0, half the angle times the axis); (0, 0, 0, 0) when there is no vector part.
  KILNBASE_API Tquaternion log() const;

 protected:
  friend class Tquaternion;
  constexpr explicit TunitQuaternion(const Tquaternion& q) : Tquaternion(q) {}
};

inline TunitQuaternion Tquaternion::normalize() const {
  return TunitQuaternion(*this).normalizeIt();
}
