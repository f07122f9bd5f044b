// Angles, and the rotations of vectors by them.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblVector.h>

/// An angle, kept in the representation that was last set: degrees, radians, or cosine and sine. A
/// getter derives a missing representation and stores it, even in a const angle. So two threads
/// must not read the same angle at once.
///
/// Only whole degrees are wrapped into a range, by `degrees(long)`. Angles derived from cosine and
/// sine lie in [-180, 180] degrees.
///
/// Whole degrees are a `long`, degrees with a fraction a `double`. An `int` is ambiguous and does
/// not compile. Multiples of 15 whole degrees take cosine and sine from a table. Kept as it is: the
/// sine of 60, 120, 240 and 300 degrees has the magnitude 0.5 in this table. Callers rely on the
/// table as it stands.
///
///     Tangle(90L).cos();     // 0, exactly
///     Tangle(60.0).sin();    // 0.8660254037844386
///     Tangle(60L).sin();     // 0.5
class Tangle {
 public:
  /// 0 degrees.
  constexpr Tangle() = default;
  /// As after `degrees` and `setCosSin`.
  constexpr Tangle(double degrees) { this->degrees(degrees); }
  Tangle(long degrees) { this->degrees(degrees); }
  constexpr Tangle(double cosine, double sine) { setCosSin(cosine, sine); }

  /// Sets the angle in degrees.
  constexpr void degrees(double value) {
    degrees_ = value;
    valid_ = kDegrees;
  }
  /// Sets the remainder of `value` by 360, which has the sign of `value`. A negative multiple of 15
  /// is raised by 360.
  KILNBASE_API void degrees(long value);
  /// Sets the angle in radians.
  constexpr void radians(double value) {
    radians_ = value;
    valid_ = kRadians;
  }
  /// Sets the angle by its cosine and sine, which are stored as they are.
  constexpr void setCosSin(double cosine, double sine) {
    cos_ = cosine;
    sin_ = sine;
    valid_ = kCosSin;
  }

  /// The angle, computed from what was set when it is asked for the first time.
  double degrees() const {
    need(kDegrees);
    return degrees_;
  }
  double radians() const {
    need(kRadians);
    return radians_;
  }
  double cos() const {
    need(kCosSin);
    return cos_;
  }
  double sin() const {
    need(kCosSin);
    return sin_;
  }
  void getCosSin(double& cosine, double& sine) const {
    cosine = cos();
    sine = sin_;
  }

  /// Replaces the cosine by 0, 1 or -1 when it differs by less than 1e-5, and likewise the sine.
  /// Degrees and radians stay unchanged.
  KILNBASE_API void clamp();

  /// Writes the degrees: "90 degrees".
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const Tangle& angle);

 private:
  // The bits of valid_.
  static constexpr int kDegrees = 1;
  static constexpr int kRadians = 2;
  static constexpr int kCosSin = 4;

  void need(int wanted) const {
    if ((valid_ & wanted) == 0) evaluate(wanted);
  }
  KILNBASE_API void evaluate(int wanted) const;

  mutable int valid_ = kDegrees | kRadians | kCosSin;
  mutable double radians_ = 0.0;
  mutable double degrees_ = 0.0;
  mutable double cos_ = 1.0;
  mutable double sin_ = 0.0;
};

inline T4dDblVector& T4dDblVector::rotateItX(const Tangle& angle) {
  const double c = angle.cos();
  const double s = angle.sin();
  return set(x, y * c - z * s, z * c + y * s);
}

inline T4dDblVector& T4dDblVector::rotateItY(const Tangle& angle) {
  const double c = angle.cos();
  const double s = angle.sin();
  return set(x * c + z * s, y, z * c - x * s);
}

inline T4dDblVector& T4dDblVector::rotateItZ(const Tangle& angle) {
  const double c = angle.cos();
  const double s = angle.sin();
  return set(x * c - y * s, y * c + x * s, z);
}
