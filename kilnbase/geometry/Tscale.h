// Scales along the axes that never become zero.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblMatrix.h>

/// A scale along each axis. A negative scale mirrors. Constructors and `set` clamp each component:
/// a value between -0.0001 and 0.0001 becomes 0.0001, also a negative one, and all others are kept.
/// Copies, `invertIt` and writes to the fields are not clamped. Comparisons return 0 or 1.
class Tscale {
 public:
  /// The factors along the axes.
  double x = 1.0;
  double y = 1.0;
  double z = 1.0;

  /// (1, 1, 1); Tscale() is the constexpr form.
  KILNBASE_API static const Tscale identity;

  constexpr Tscale() = default;
  /// Each value is clamped.
  constexpr Tscale(double x_, double y_, double z_) { set(x_, y_, z_); }
  constexpr Tscale(const Tscale&) = default;
  constexpr virtual ~Tscale() {}
  constexpr Tscale& operator=(const Tscale&) = default;
  /// Each value is clamped.
  constexpr Tscale& set(double s) { return set(s, s, s); }
  constexpr Tscale& set(double newX, double newY, double newZ) {
    x = clamped(newX);
    y = clamped(newY);
    z = clamped(newZ);
    return *this;
  }

  /// The matrix with the clamped components on the diagonal.
  constexpr operator T4dDblMatrix() const {
    return {clamped(x), 0, 0, 0, clamped(y), 0, 0, 0, clamped(z)};
  }

  /// The reciprocals of the clamped components. The reciprocals are clamped, too.
  [[nodiscard]] constexpr Tscale inverse() const {
    Tscale s = *this;
    s.invertIt();
    return s.set(s.x, s.y, s.z);
  }
  /// Stores the reciprocals of the clamped components. The reciprocals are not clamped.
  constexpr Tscale& invertIt() {
    set(x, y, z);
    x = 1.0 / x;
    y = 1.0 / y;
    z = 1.0 / z;
    return *this;
  }

  /// Whether each component differs by at most `tol`. Kept as it is: `tol` is clamped like a scale,
  /// so a `tol` of 0 counts as 0.0001.
  [[nodiscard]] KILNBASE_API int equivalent(const Tscale& s, double tol) const;
  /// Whether each two components differ by at most 1e-9.
  [[nodiscard]] KILNBASE_API int proportionalScale() const;

  /// Writes "(x, y, z)".
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const Tscale& s);

 private:
  static constexpr double clamped(double value) {
    return value > -0.0001 && value < 0.0001 ? 0.0001 : value;
  }
};
