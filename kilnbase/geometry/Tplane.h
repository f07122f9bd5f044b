// Oriented planes.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblPoint.h>
#include <kilnbase/geometry/T4dDblVector.h>

/// The plane a*x + b*y + c*z + d = 0. The unit normal is (a, b, c).
class Tplane {
 public:
  /// The coefficients.
  double a = 0.0;
  double b = 0.0;
  double c = 1.0;
  double d = 0.0;
  /// For the caller's use: no operation of the plane reads it.
  double tolerance;

  /// The plane z = 0, with this tolerance.
  constexpr explicit Tplane(double tol) : tolerance(tol) {}
  /// As `setPlane`. Kept as it is: the tolerance becomes 1e-9, whatever `tol` says.
  Tplane(const T4dDblPoint& p, const T4dDblVector& n, double tol) : tolerance(tol) {
    setPlane(p, n);
  }
  constexpr Tplane(const Tplane&) = default;
  constexpr virtual ~Tplane() {}
  constexpr Tplane& operator=(const Tplane&) = default;

  /// Sets the plane through the point and the tolerance to 1e-9. Kept as it is: the stored x, y and
  /// z are used, whatever the weight. The normal is normalised unless its length is 1e-9 or less.
  KILNBASE_API Tplane& setPlane(const T4dDblPoint& p, T4dDblVector n);
  /// The normal, (a, b, c).
  [[nodiscard]] constexpr T4dDblVector normal() const { return {a, b, c}; }

  /// Intersects the plane with the line p + t*v and sets `out` to the intersection, a Cartesian
  /// point. Returns 2 for t >= 0, when the plane lies ahead along v, and 3 when it lies behind.
  ///
  /// Returns 1 for a parallel line and leaves `out` unchanged: the dot product of v and the normal
  /// is below 1e-9 in magnitude. So a line with a very short v counts as parallel.
  KILNBASE_API int intersection(T4dDblPoint p, T4dDblVector v, T4dDblPoint& out) const;

  /// Writes "(a, b, c, d)".
  friend KILNBASE_API std::ostream& operator<<(std::ostream& stream, const Tplane& plane);
};
