// Linear least squares by QR decomposition.
#pragma once

#include <kilnbase/linalg/DoubleQRDecomp.h>

/// Solves A x ≈ b, each row of A being an equation and each column an unknown, in the least-squares
/// sense.
///
/// Unknowns that the equations do not determine are free, and become 0: those whose columns come
/// last in pivot order with diagonal elements of R that are at most the tolerance in size, and
/// those in excess of the equations. The tolerance is absolute; a value such as 1e-12 times the
/// first diagonal element takes columns for dependent that are so but for rounding.
///
///     DoubleLeastSqQR fit(a);
///     fit.setTolerance(1e-12 * std::abs(fit(0, 0)));
///     const DoubleVec x = fit.solve(b);
///     const double misfit = fit.residual(b).vecLen();
class KILNBASE_API DoubleLeastSqQR : public DoubleQRDecomp {
 public:
  /// Nothing factored: no equations, no unknowns.
  DoubleLeastSqQR() = default;
  /// Factors a copy of `a`.
  explicit DoubleLeastSqQR(const DoubleGenMat& a) : DoubleQRDecomp(a) {}
  DoubleLeastSqQR(const DoubleLeastSqQR& other) = default;
  DoubleLeastSqQR& operator=(const DoubleLeastSqQR& other) = default;
  ~DoubleLeastSqQR() = default;

  /// Factors a copy of `a` in place of what was here before, and resets the tolerance to 0.
  void factor(const DoubleGenMat& a);

  /// Sets the size up to which a trailing diagonal element of R counts as 0, and returns the old
  /// one.
  double setTolerance(double tolerance);

  /// The number of free unknowns.
  unsigned numFreeCols() const;
  bool isUnderDetermined() const { return numFreeCols() != 0; }
  /// The number of rows of A.
  unsigned numEquations() const { return rows(); }

  /// The x that makes |A x - b| least, free unknowns being 0. Errors are those of the QR `solve`; a
  /// 0 on the diagonal of R before the free columns makes the unknowns from there on 0.
  DoubleVec solve(const DoubleVec& b) const;
  /// b - A x for the x of `solve`, without its rounding errors. Raises 0x5002 unless b has as many
  /// elements as A rows, returning an empty vector.
  DoubleVec residual(const DoubleVec& b) const;

 private:
  double tolerance_ = 0.0;
};
