// Matrices that are built up step by step.
#pragma once

#include <concepts>
#include <cstddef>

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/Tangle.h>

/// A matrix built up from elementary transforms E. Each call is this := E * this, so a later call
/// acts on a point before the earlier ones. Rotations are right-handed. Scales are not clamped.
/// Arguments may be rows of this matrix.
///
/// A rotation uses the cosine and sine of a `Tangle`, which knows its unit. A plain number converts
/// to a `Tangle` in degrees.
///
///     TgenXformMatrix m;
///     m.translate(1, 0, 0);
///     m.scale(2);
///     double p[4] = {1, 0, 0, 1};
///     m.transformPoint(p);    // scaled, then moved: 3, 0, 0
class KILNBASE_API TgenXformMatrix : public T4dDblMatrix {
 public:
  /// this := T * this, where T is the translation.
  TgenXformMatrix& translate(double x, double y, double z);
  TgenXformMatrix& translate(const double v[3]) { return translate(v[0], v[1], v[2]); }
  /// Deleted: a literal 0 would be a null pointer.
  TgenXformMatrix& translate(std::nullptr_t) = delete;
  /// this := S * this, where S is the scale.
  TgenXformMatrix& scale(double s) { return scale(s, s, s); }
  /// Makes a literal 0 a scale instead of a null pointer.
  template <std::integral Integer>
  TgenXformMatrix& scale(Integer s) {
    return scale(static_cast<double>(s));
  }
  /// this := S * this, where S is the scale along the axes.
  TgenXformMatrix& scale(double sx, double sy, double sz);
  TgenXformMatrix& scale(const double s[3]) { return scale(s[0], s[1], s[2]); }
  /// Rotates about the X axis. A plain number is an angle in degrees.
  TgenXformMatrix& rotatex(const Tangle& angle) { return rotateRows(1, 2, angle); }
  /// Rotates about the Y axis. A plain number is an angle in degrees.
  TgenXformMatrix& rotatey(const Tangle& angle) { return rotateRows(2, 0, angle); }
  /// Rotates about the Z axis. A plain number is an angle in degrees.
  TgenXformMatrix& rotatez(const Tangle& angle) { return rotateRows(0, 1, angle); }
  /// Rotates about an axis through the origin, of any length. A zero axis changes nothing. A plain
  /// number is an angle in degrees.
  TgenXformMatrix& rotateAxis(const double axis[3], const Tangle& angle);
  /// this := M * this.
  TgenXformMatrix& multiplyBy(const T4dDblMatrix& m);

  /// Turns `v` to the Z axis: about the Y axis, then about the X axis. A zero vector changes
  /// nothing.
  TgenXformMatrix& alignVectorWithZAxis(const double v[3]);
  /// Turns the Z axis to `v`: the inverse of `alignVectorWithZAxis`.
  TgenXformMatrix& alignZAxisWithVector(const double v[3]);
  /// Sets the columns of the upper left 3x3 to a, b and c. Row 3 and column 3 stay unchanged.
  TgenXformMatrix& setOrientation(const double a[3], const double b[3], const double c[3]);

  /// Sets `out` to the first three components of in * this: in[3] weights the translation, and
  /// nothing is divided. The arrays may overlap.
  void transformPoint(const double in[4], double out[3]) const;
  /// The same in place. p[3] stays unchanged.
  void transformPoint(double p[4]) const { transformPoint(p, p); }
  /// `transformPoint` with in[3] = 1. Kept as it is: the translation is added, unlike in
  /// `T4dDblVector::postmultBy`. Callers rely on this.
  void transformVector(const double in[3], double out[3]) const;
  /// The same in place.
  void transformVector(double v[3]) const { transformVector(v, v); }

 private:
  // Rotates about the third axis, from axis `from` towards axis `to`.
  TgenXformMatrix& rotateRows(std::size_t from, std::size_t to, const Tangle& angle);
};
