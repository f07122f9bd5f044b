// Matrices that are built up step by step.
#pragma once

#include <concepts>
#include <cstddef>

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/Tangle.h>

/// A matrix built up from elementary transforms E. Each call is this := E * this: a later call acts
/// on a point before the earlier ones. Rotations are right-handed and take the angle's cosine and
/// sine as they are. Scales are not clamped.
///
///     TgenXformMatrix m;
///     m.translate(1, 0, 0);
///     m.scale(2);
///     double p[4] = {1, 0, 0, 1};
///     m.transformPoint(p);    // scaled, then moved: 3, 0, 0
class KILNBASE_API TgenXformMatrix : public T4dDblMatrix {
 public:
  TgenXformMatrix& translate(double x, double y, double z);
  TgenXformMatrix& translate(const double v[3]) { return translate(v[0], v[1], v[2]); }
  /// A literal 0 would be a null pointer.
  TgenXformMatrix& translate(std::nullptr_t) = delete;
  TgenXformMatrix& scale(double s) { return scale(s, s, s); }
  /// So that a literal 0 is a scale, not a null pointer.
  template <std::integral Integer>
  TgenXformMatrix& scale(Integer s) {
    return scale(static_cast<double>(s));
  }
  TgenXformMatrix& scale(double sx, double sy, double sz);
  TgenXformMatrix& scale(const double s[3]) { return scale(s[0], s[1], s[2]); }
  TgenXformMatrix& rotatex(const Tangle& angle) { return rotateRows(1, 2, angle); }
  TgenXformMatrix& rotatey(const Tangle& angle) { return rotateRows(2, 0, angle); }
  TgenXformMatrix& rotatez(const Tangle& angle) { return rotateRows(0, 1, angle); }
  /// Rotates about the axis through the origin, which need not be of unit length; a zero axis
  /// changes nothing.
  TgenXformMatrix& rotateAxis(const double axis[3], const Tangle& angle);
  TgenXformMatrix& multiplyBy(const T4dDblMatrix& m);

  /// Turns `v` to the Z axis, about Y and then about X.
  TgenXformMatrix& alignVectorWithZAxis(const double v[3]);
  /// Turns the Z axis to `v`: undoes `alignVectorWithZAxis`.
  TgenXformMatrix& alignZAxisWithVector(const double v[3]);
  /// Writes a, b and c into the columns of the upper left 3x3. The rest stays.
  TgenXformMatrix& setOrientation(const double a[3], const double b[3], const double c[3]);

  /// Over all four rows, so that the fourth value weights the translation. The fourth column is
  /// ignored: nothing is divided. In place, the fourth value stays.
  void transformPoint(const double in[4], double out[3]) const;
  void transformPoint(double p[4]) const { transformPoint(p, p); }
  /// Adds the translation, too, unlike `T4dDblVector::postmultBy`.
  void transformVector(const double in[3], double out[3]) const;
  void transformVector(double v[3]) const { transformVector(v, v); }

 private:
  TgenXformMatrix& rotateRows(std::size_t from, std::size_t to, const Tangle& angle);
};
