// Angles, and the rotations of vectors by them.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblVector.h>

/// An angle, kept as degrees, as radians, or as its cosine and sine: as it was last set. A getter
/// derives what it needs from what is there and keeps the result, also in a const angle, which two
/// threads must not read at once for that reason.
///
/// Angles that were set are never wrapped into a range, but for whole degrees; angles derived from
/// a cosine and sine lie in [-180, 180] degrees. Whole degrees, a `long`, and degrees with a
/// fraction, a `double`, are different things: multiples of 15 whole degrees have cosine and sine
/// from a table, in which the sine of 60, 120, 240 and 300 degrees has the magnitude 0.5. An `int`
/// is ambiguous, so that the caller chooses.
///
///     Tangle quarter(90L);            // cosine 0 and sine 1, exactly
///     Tangle(60.0).sin();             // 0.8660254037844386
///     Tangle(60L).sin();              // 0.5
class Tangle {
 public:
  /// 0 degrees.
  constexpr Tangle() = default;
  constexpr Tangle(double degrees) { this->degrees(degrees); }
  Tangle(long degrees) { this->degrees(degrees); }
  constexpr Tangle(double cosine, double sine) { setCosSin(cosine, sine); }

  constexpr void degrees(double value) {
    degrees_ = value;
    valid_ = kDegrees;
  }
  /// Sets the remainder of `value` by 360, which has the sign of `value`; a negative multiple of 15
  /// is raised by 360.
  KILNBASE_API void degrees(long value);
  constexpr void radians(double value) {
    radians_ = value;
    valid_ = kRadians;
  }
  constexpr void setCosSin(double cosine, double sine) {
    cos_ = cosine;
    sin_ = sine;
    valid_ = kCosSin;
  }

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

  /// Snaps the cosine and the sine, each, to 0, 1 or -1 when it is less than 1e-5 away. Degrees and
  /// radians stay as they are.
  KILNBASE_API void clamp();

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
