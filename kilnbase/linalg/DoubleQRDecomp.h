// QR decomposition with column pivoting.
#pragma once

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntVec.h>

/// The QR decomposition A P = Q R of an m by n matrix, by Householder transformations, with column
/// pivoting by default.
///
/// R is the upper triangle of this object's own matrix part; below it stand the Householder
/// vectors. Pivoting takes the columns of A in the order in which they add most to those before, so
/// that a column that depends on others comes late and shows as a small or zero diagonal element of
/// R. Factor once, solve for many right-hand sides; for least squares with a tolerance that decides
/// which columns are dependent use DoubleLeastSqQR.
///
///     DoubleQRDecomp qr(a);
///     if (!qr.isSingular()) x = qr.solve(b);
///
/// The members that take a count k use the first k columns in pivot order; a k above min(m, n)
/// counts as min(m, n). Copy construction shares the factors and pivots with the original,
/// **assignment copies elements** between decompositions of the same size, both factored. Errors
/// are raised by number through MathError.h. For one thread at a time.
class KILNBASE_API DoubleQRDecomp : public DoubleGenMat {
 public:
  /// Nothing factored: 0 by 0.
  DoubleQRDecomp() = default;
  /// Factors a copy of `a`.
  explicit DoubleQRDecomp(const DoubleGenMat& a) { factor(a); }
  DoubleQRDecomp(const DoubleQRDecomp& other) = default;
  DoubleQRDecomp& operator=(const DoubleQRDecomp& other) = default;
  ~DoubleQRDecomp() = default;

  /// Factors a copy of `a` in place of what was here before; all its columns take part in pivoting.
  void factor(const DoubleGenMat& a);

  /// Turns pivoting on or off for the next `factor`, and returns the old setting (initially 1).
  int doPivoting(int on);
  /// Element j tells which column of A, from 0, is the j-th of the decomposition.
  IntVec pivots() const { return pvts_; }

  /// min(m, n) less the number of diagonal elements of R that are exactly 0.
  unsigned rank() const;
  /// Whether the rank is neither the number of rows nor that of columns.
  bool isSingular() const;

  /// The x, of n elements, that makes |A x - b| least; where rows < columns, one whose unknowns
  /// beyond the first m in pivot order are 0. From the first 0 on the diagonal of R on, unknowns
  /// are 0 too: rank deficiency is no error. Raises 0x5002 unless b has m elements, returning an
  /// empty vector, and 0x5011 when the decomposition has no columns.
  DoubleVec solve(const DoubleVec& b) const;
  /// The k unknowns, in pivot order, that fit b best with the first k columns alone; 0 from the
  /// first 0 on the diagonal of R on. Raises 0x5002 as `solve` does.
  DoubleVec partialSolve(const DoubleVec& b, unsigned k) const;

  /// Each of these takes and returns m elements, and raises 0x5002 for another length, returning an
  /// empty vector. Q y and Qᵀ y, Q being the product of the first k transformations:
  DoubleVec computeQy(const DoubleVec& y, unsigned k) const;
  DoubleVec computeQTy(const DoubleVec& y, unsigned k) const;
  /// The projection of y on the first k columns: what the best fit by them makes of it.
  DoubleVec computeXb(const DoubleVec& y, unsigned k) const;
  /// y less its projection on the first k columns.
  DoubleVec computeResidualVec(const DoubleVec& y, unsigned k) const;

  /// A new vector of the elements of `v`, one for each column of A, in pivot order. Raises 0x5004
  /// unless it has n elements, returning a copy.
  DoubleVec permute(const DoubleVec& v) const;
  /// Undoes `permute`.
  DoubleVec unpermute(const DoubleVec& v) const;

 protected:
  /// The length of the diagonal of R.
  unsigned diagonalLength() const;
  /// How many of the first k columns come before the first 0 on the diagonal of R.
  unsigned regularColumns(unsigned k) const;
  /// The solution by the first k columns, all other unknowns being 0, in the order of A.
  DoubleVec solveLeading(const DoubleVec& b, unsigned k) const;

 private:
  void dofactor();
  bool lengthAgrees(const DoubleVec& y) const;
  DoubleVec transform(const DoubleVec& y, unsigned k, int job) const;
  unsigned usableColumns(unsigned k) const;
  void run(int job, unsigned k, double* y, double* coefficients) const;

  IntVec pvts_;
  int pivoting_ = 1;
  DoubleVec qraux_;
};
