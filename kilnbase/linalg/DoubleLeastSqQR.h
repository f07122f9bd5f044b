// Linear least squares by QR decomposition.
#pragma once

#include <initializer_list>

#include <kilnbase/linalg/DoubleQRDecomp.h>

/// Finds the x for which |A x - b| is least. Each row of A is an equation, each column an unknown.
///
///     DoubleGenMat a(3, 2, 1.0);
///     a.col(1) = DoubleVec(3, 0.0, 1.0);  // row i is the equation x(0) + i x(1) = b(i)
///     const DoubleVec b(3, 1.0, 2.0);
///     DoubleLeastSqQR fit(a);
///     fit.setTolerance(1e-12 * std::abs(fit(0, 0)));
///     const DoubleVec x = fit.solve(b);  // (1, 2)
///     const DoubleVec misfits = fit.residual(b);
///
/// Unknowns that the equations do not determine are free, and become 0. Free are the unknowns in
/// excess of the equations, and those whose columns come last in pivot order with diagonal elements
/// of R that are at most the tolerance in size. The tolerance is absolute and initially 0; the one
/// above takes columns for dependent that are so but for rounding.
///
/// The solution is not the shortest one where unknowns are free. docs/decompositions.md compares
/// all decompositions. Copying, assigning, moving and swapping are those of DoubleQRDecomp. For one
/// thread at a time.
class KILNBASE_API DoubleLeastSqQR : public DoubleQRDecomp {
 public:
  /// Nothing factored: no equations, no unknowns.
  DoubleLeastSqQR() = default;
  /// Factors a copy of `a`.
  explicit DoubleLeastSqQR(const DoubleGenMat& a) : DoubleQRDecomp(a) {}
  /// Would factor the matrix part, which holds R and the Householder vectors.
  explicit DoubleLeastSqQR(const DoubleQRDecomp&) = delete;
  DoubleLeastSqQR(const DoubleLeastSqQR& other) = default;
  /// Takes over `other`, which is empty afterwards and may be assigned any other.
  DoubleLeastSqQR(DoubleLeastSqQR&& other) noexcept = default;
  DoubleLeastSqQR& operator=(const DoubleLeastSqQR& other) = default;
  DoubleLeastSqQR& operator=(DoubleLeastSqQR&& other) = default;
  ~DoubleLeastSqQR() = default;

  /// Factors a copy of `a`, forgets the earlier factors, and resets the tolerance to 0.
  void factor(const DoubleGenMat& a);
  void factor(const DoubleQRDecomp&) = delete;

  /// Sets the size up to which a trailing diagonal element of R counts as 0, and returns the old
  /// tolerance.
  double setTolerance(double tolerance);

  /// The number of free unknowns.
  [[nodiscard]] unsigned numFreeCols() const;
  [[nodiscard]] bool isUnderDetermined() const { return numFreeCols() != 0; }
  /// The number of rows of A.
  [[nodiscard]] unsigned numEquations() const { return rows(); }

  /// The x, new, for which |A x - b| is least with all free unknowns 0. Errors are those of the QR
  /// `solve`. From the first 0 on the diagonal of R on, unknowns are 0 too.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;
  [[nodiscard]] DoubleVec solve(std::initializer_list<double> b) const {
    return solve(DoubleVec(b));
  }
  /// Solves for each column of B; see the QR `solve`.
  [[nodiscard]] DoubleGenMat solve(const DoubleGenMat& b) const;
  /// b - A x, new, for the x of `solve`, without the rounding errors of x. Raises
  /// kRightSideLengthError unless b has as many elements as A has rows; then returns an empty
  /// vector.
  [[nodiscard]] DoubleVec residual(const DoubleVec& b) const;
  /// `residual` of each column of B up to rounding. kRightSideLengthError tells the number of rows
  /// of B and returns a 0 by 0 matrix.
  [[nodiscard]] DoubleGenMat residual(const DoubleGenMat& b) const;

 private:
  unsigned determinedColumns() const;

  double tolerance_ = 0.0;
};
