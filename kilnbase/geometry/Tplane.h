// Oriented planes.
#pragma once

#include <kilnbase/export.h>
#include <kilnbase/geometry/T4dDblPoint.h>
#include <kilnbase/geometry/T4dDblVector.h>

/// The plane a*x + b*y + c*z + d = 0, where (a, b, c) is the unit normal.
class Tplane {
 public:
  double a = 0.0;
  double b = 0.0;
  double c = 1.0;
  double d = 0.0;
  /// Kept for the caller: no operation here reads it.
  double tolerance;

  /// The plane z = 0, with this tolerance.
  constexpr explicit Tplane(double tol) : tolerance(tol) {}
  /// As `setPlane`, whose tolerance of 1e-9 replaces `tol`.
  Tplane(const T4dDblPoint& p, const T4dDblVector& n, double tol) : tolerance(tol) {
    setPlane(p, n);
  }
  constexpr Tplane(const Tplane&) = default;
  constexpr virtual ~Tplane() {}
  constexpr Tplane& operator=(const Tplane&) = default;

  /// The plane through the stored x, y, z of the point (which is not made Cartesian), with a
  /// tolerance of 1e-9. The normal is normalised, unless its length is 1e-9 or less.
  KILNBASE_API Tplane& setPlane(const T4dDblPoint& p, T4dDblVector n);
  constexpr T4dDblVector normal() const { return {a, b, c}; }

  /// Intersects with the line p + t * v. Returns 2 when the plane lies ahead along `v` (t >= 0), 3
  /// when it lies behind; `out` is the intersection, a Cartesian point. Returns 1 and leaves `out`
  /// alone when v and the normal have a dot product of magnitude below 1e-9: the line is parallel.
  /// A short v counts as parallel, too.
  KILNBASE_API int intersection(T4dDblPoint p, T4dDblVector v, T4dDblPoint& out) const;
};
