// QR decomposition with column pivoting.
#pragma once

#include <initializer_list>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntVec.h>

/// The QR decomposition A P = Q R of an m by n matrix, by Householder transformations, with column
/// pivoting by default.
///
/// Factor once, solve for many right-hand sides. For least squares with a tolerance that decides
/// which columns are dependent, use DoubleLeastSqQR. docs/decompositions.md compares all
/// decompositions.
///
///     DoubleGenMat a(3, 2, 1.0);
///     a.col(1) = DoubleVec(3, 0.0, 1.0);  // row i is the equation x(0) + i x(1) = b(i)
///     const DoubleVec b(3, 1.0, 2.0);
///     const DoubleQRDecomp qr(a);
///     if (!qr.isSingular()) {
///       const DoubleVec x = qr.solve(b);  // (1, 2)
///     }
///
/// R is the upper triangle of this object's own matrix part; below the diagonal stand the
/// Householder vectors. Pivoting takes the columns in the order in which they add most to the
/// columns before them. A column that depends on others therefore comes late, and shows as a small
/// or zero diagonal element of R.
///
/// The members that take a count k use the first k columns in pivot order; a k above min(m, n)
/// counts as min(m, n).
///
/// Copy construction shares the factors and the pivots with the original. **Assignment, also from a
/// temporary, copies elements** between decompositions of the same size. Moving takes everything
/// over and leaves an empty object, which may be assigned any other; every way of swapping
/// exchanges everything.
///
/// Errors are raised by number through MathError.h. Each function tells what happens when the
/// handler returns; an assignment between different sizes then leaves wrong factors, but no access
/// outside the storage. For one thread at a time.
class KILNBASE_API DoubleQRDecomp : public DoubleGenMat {
 public:
  /// Nothing factored: 0 by 0.
  DoubleQRDecomp() = default;
  /// Factors a copy of `a`.
  explicit DoubleQRDecomp(const DoubleGenMat& a) { factor(a); }
  DoubleQRDecomp(const DoubleQRDecomp& other) = default;
  /// Takes over `other`, which is empty afterwards and may be assigned any other.
  DoubleQRDecomp(DoubleQRDecomp&& other) noexcept = default;
  DoubleQRDecomp& operator=(const DoubleQRDecomp& other) = default;
  DoubleQRDecomp& operator=(DoubleQRDecomp&& other) = default;
  ~DoubleQRDecomp() = default;

  /// Factors a copy of `a` and forgets the earlier factors. All columns take part in pivoting.
  /// Without memory (kOutOfMemoryError) keeps the earlier factors.
  void factor(const DoubleGenMat& a);

  /// Turns pivoting on or off for the next `factor`, and returns the old setting (initially 1).
  int doPivoting(int on);
  /// A view: column pivots()(j) of A, from 0, is the j-th column of the decomposition.
  [[nodiscard]] IntVec pivots() const { return pvts_; }

  /// min(m, n) minus the number of diagonal elements of R that are exactly 0.
  [[nodiscard]] unsigned rank() const;
  /// Whether the rank is neither the number of rows nor the number of columns.
  [[nodiscard]] bool isSingular() const;

  /// The x, new, of n elements, for which |A x - b| is least.
  ///
  /// Where m < n, the unknowns beyond the first m in pivot order are 0. From the first 0 on the
  /// diagonal of R on, unknowns are 0 too: rank deficiency is no error. Raises
  /// kRightSideLengthError unless b has m elements; then returns an empty vector. Raises
  /// kNotFactoredError when there are no columns.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;
  [[nodiscard]] DoubleVec solve(std::initializer_list<double> b) const {
    return solve(DoubleVec(b));
  }
  /// Solves for each column of B: column j of the result is `solve` of column j up to rounding. The
  /// errors are the same; kRightSideLengthError tells the number of rows of B and returns a 0 by 0
  /// matrix. Many columns take a fraction of the time that they take one by one.
  [[nodiscard]] DoubleGenMat solve(const DoubleGenMat& b) const;
  /// The k unknowns, in pivot order, for which the first k columns alone fit b best; they are 0
  /// from the first 0 on the diagonal of R on. Raises kRightSideLengthError as `solve` does.
  [[nodiscard]] DoubleVec partialSolve(const DoubleVec& b, unsigned k) const;

  /// Q y, where Q is the product of the first k transformations. This and the next three functions
  /// return a new vector of m elements. They raise kRightSideLengthError unless y has m elements,
  /// and then return an empty vector.
  [[nodiscard]] DoubleVec computeQy(const DoubleVec& y, unsigned k) const;
  /// Qᵀ y.
  [[nodiscard]] DoubleVec computeQTy(const DoubleVec& y, unsigned k) const;
  /// The projection of y on the first k columns: the best fit of y by these columns.
  [[nodiscard]] DoubleVec computeXb(const DoubleVec& y, unsigned k) const;
  /// y minus its projection on the first k columns.
  [[nodiscard]] DoubleVec computeResidualVec(const DoubleVec& y, unsigned k) const;

  /// A new vector of the elements of `v`, one for each column of A, in pivot order. Raises
  /// kPermutedLengthError unless `v` has n elements; then returns a copy.
  [[nodiscard]] DoubleVec permute(const DoubleVec& v) const;
  /// The inverse of `permute`, with the same errors.
  [[nodiscard]] DoubleVec unpermute(const DoubleVec& v) const;

 protected:
  /// The length of the diagonal of R.
  unsigned diagonalLength() const;
  /// How many of the first k columns come before the first 0 on the diagonal of R.
  unsigned regularColumns(unsigned k) const;
  /// For each column of B the solution by the first k columns of the decomposition. All other
  /// unknowns are 0. Raises the errors of `solve`.
  DoubleGenMat solveLeading(const DoubleGenMat& b, unsigned k) const;
  /// `computeResidualVec` of each column of B.
  DoubleGenMat residualsOf(const DoubleGenMat& b, unsigned k) const;

 private:
  bool lengthAgrees(unsigned length) const;
  DoubleVec elements() const;
  DoubleVec transform(const DoubleVec& y, unsigned k, int job) const;
  unsigned usableColumns(unsigned k) const;
  void run(int job, unsigned k, double* y, double* coefficients) const;

  IntVec pvts_;
  int pivoting_ = 1;
  DoubleVec qraux_;
};
