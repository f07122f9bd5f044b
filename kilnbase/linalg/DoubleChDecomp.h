// Cholesky decomposition with diagonal pivoting, shifts, updates and downdates.
#pragma once

#include <algorithm>
#include <initializer_list>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntVec.h>

/// The Cholesky factor R of a symmetric positive definite matrix A, with diagonal pivoting by
/// default: Pᵀ A P = RᵀR.
///
/// Use this class for normal equations and other definite systems: it is the cheapest of the
/// decompositions. When A = XᵀX, it also follows changes of X: columns that change places, rows
/// that are added or removed. docs/decompositions.md compares all decompositions.
///
///     DoubleGenMat a(2, 2, 1.0);
///     a.diagonal() = 3.0;
///     const DoubleVec b(2, 8.0);
///     const DoubleChDecomp factor(a);
///     if (factor.isPD()) {
///       const DoubleVec x = factor.solve(b);  // (2, 2)
///     }
///
/// Only the upper triangle of A is read. R is the upper triangle of the leading n by n block of
/// this object's own matrix part, where n is the smaller of the numbers of rows and columns. Below
/// the diagonal stand the elements of A.
///
/// Factoring stops at the first pivot that is not positive. The columns before that pivot are the
/// factored ones: `lastPosFactor()` + 1 of them. With pivoting they are the best conditioned ones.
/// A semidefinite matrix has fewer than n. There is no tolerance: a pivot that would be 0 without
/// rounding errors counts as factored when they leave it positive. Where the rank is known, give it
/// to `partialSolve`.
///
/// Copy construction shares the factor and the pivots with the original. **Assignment, also from a
/// temporary, copies elements**; both decompositions have the same size, and both are pivoted or
/// neither is. Moving takes everything over and leaves an empty object, which may be assigned any
/// other; every way of swapping exchanges everything.
///
/// Errors are raised by number through MathError.h. Each function tells what happens when the
/// handler returns; an assignment between different sizes then leaves a wrong factor, but no access
/// outside the storage. For one thread at a time.
class KILNBASE_API DoubleChDecomp : public DoubleGenMat {
 public:
  /// Where pivoting puts an element of the diagonal.
  enum PivotPosition { FINAL = -1, FREE = 0, INITIAL = 1 };

  /// Nothing factored: 0 by 0, neither positive definite nor failed.
  DoubleChDecomp() = default;
  /// Factors a copy of `a`.
  explicit DoubleChDecomp(const DoubleGenMat& a);
  DoubleChDecomp(const DoubleChDecomp& other) = default;
  /// Takes over `other`, which is empty afterwards and may be assigned any other.
  DoubleChDecomp(DoubleChDecomp&& other) noexcept = default;
  DoubleChDecomp& operator=(const DoubleChDecomp& other) = default;
  DoubleChDecomp& operator=(DoubleChDecomp&& other) = default;
  ~DoubleChDecomp() = default;

  /// Factors a copy of `a` and forgets the earlier factor. Raises kTooFewRowsError when `a` has
  /// fewer rows than columns; then as many columns as there are rows are factored.
  ///
  /// With pivoting, the entries of `pivots()` are read as specifiers (see `setPivoting`) and
  /// replaced by the pivots. Kept as it is: pivots that an earlier factoring left behind are read
  /// as specifiers too. Set all of them before factoring again.
  void factor(const DoubleGenMat& a);

  /// Turns pivoting on or off for the next `factor`, and returns the old setting (initially 1).
  int doPivoting(int on);
  /// Says where the next `factor` puts diagonal element k >= 0, and returns the old specifier.
  ///
  /// INITIAL moves the element to the front, FINAL to the end, in both cases without pivoting. A
  /// FREE element takes part in pivoting; elements without a specifier are FREE. Any other value
  /// raises kPivotPositionError and is stored all the same: a positive one acts as INITIAL, a
  /// negative one as FINAL. From this call until the next `factor` the pivots are lost, and
  /// `solve`, `permute` and `unpermute` mean nothing.
  int setPivoting(int k, int position);
  /// A view: before factoring the specifiers, afterwards the pivots. Row and column pivots()(i) of
  /// A, from 0, are the i-th of the factor. Means nothing after factoring without pivoting.
  [[nodiscard]] IntVec pivots() const { return pvts_; }

  /// Whether all columns of A are factored. Never true of a matrix with more rows than columns.
  [[nodiscard]] bool isPD() const { return info_ == static_cast<int>(rows()); }
  /// Index of the last factored column: -1 when there is none, -2 when nothing was factored.
  [[nodiscard]] int lastPosFactor() const { return info_ - 1; }
  /// Whether a diagonal element of the factor is negative, from column `lastPosFactor()` on.
  ///
  /// Right after `factor` this tells an indefinite matrix, or one that is semidefinite but for
  /// rounding. Later it tells little: `update`, `downdate` and `shift` rightfully make diagonal
  /// elements negative, and `solve` works with them.
  [[nodiscard]] bool fail() const;
  /// The opposite of `fail`.
  [[nodiscard]] bool good() const { return !fail(); }

  /// (R(n-1, n-1) / R(0, 0))² when all columns but the last are factored, otherwise 0. Raises the
  /// warning kNoConditionNumberError and returns -1 when pivoting is off.
  ///
  /// Kept as it is: a positive definite matrix gives 0. (For a 1 by 1 matrix that is not positive
  /// the ratio is that of the element to itself.)
  [[nodiscard]] double condition() const;

  /// The solution x of A x = b, new, with n elements. The unknowns of columns that are not factored
  /// are 0. Raises kRightSideLengthError unless b has n elements; then returns an empty vector.
  /// Raises kNotFactoredError when no column is factored (and n is not 0); then all unknowns are 0.
  [[nodiscard]] DoubleVec solve(const DoubleVec& b) const;
  [[nodiscard]] DoubleVec solve(std::initializer_list<double> b) const {
    return solve(DoubleVec(b));
  }
  /// Solves for each column of B: column j of the result is `solve` of column j up to rounding. The
  /// errors are the same; kRightSideLengthError tells the number of rows of B and returns a 0 by 0
  /// matrix. Many columns take a fraction of the time that they take one by one.
  [[nodiscard]] DoubleGenMat solve(const DoubleGenMat& b) const;
  /// The solution x, of k elements in the factor's order, for the leading k columns of the factor:
  /// RₖᵀRₖ x = the first k elements of `permute(b)`.
  ///
  /// Resized to n elements and unpermuted, x solves A x = b in the equations of these columns, with
  /// all other unknowns 0. Raises kRightSideLengthError unless b has n elements; then returns an
  /// empty vector. Raises kNotFactoredError when fewer than k columns are factored; then uses
  /// those.
  [[nodiscard]] DoubleVec partialSolve(const DoubleVec& b, unsigned k) const;

  /// A new vector of the elements of `v` in the order of the factor. Raises kPermutedLengthError
  /// unless `v` has n elements; then returns a copy. A factor made without pivoting has the order
  /// of A.
  [[nodiscard]] DoubleVec permute(const DoubleVec& v) const;
  /// The inverse of `permute`, with the same errors.
  [[nodiscard]] DoubleVec unpermute(const DoubleVec& v) const;

  /// Makes this the factor of the matrix whose rows and columns `first` to `last` (in the factor's
  /// order) are shifted circularly by one place: left, so that the first becomes the last, when
  /// `direction` is 0; right, so that the last becomes the first, when `direction` is 1.
  ///
  /// The same rotations are applied to the rows of Z (as many as the factor's), if given. `c` and
  /// `s` (last - first elements), if given, receive the cosines and sines of the rotations.
  /// `pivots()` stays: `solve` fits the shifted order only where nothing was pivoted.
  ///
  /// Raises kShiftDirectionError for another direction and kShiftColumnsError unless 0 <= first <
  /// last < n; then shifts nothing. Raises kDataHeightError and kRotationsLengthError for a Z, c or
  /// s of the wrong size; then leaves that argument alone.
  void shift(int first, int last, int direction, DoubleGenMat* z = nullptr, DoubleVec* c = nullptr,
             DoubleVec* s = nullptr);

  /// Makes this the factor of RᵀR + xxᵀ: of XᵀX after the row x, in the factor's order, is added to
  /// X. When columns are missing in the factored block, x may add to it: a column counts as
  /// factored when its diagonal element is more than the rounding errors of the column.
  ///
  /// Z = QᵀY for the data columns Y that belong to X = QR, `rho` holds the norms of their
  /// residuals, and `y` the elements of Y in the added row. Both Z and `rho` are updated, if given;
  /// a missing `y` counts as zeros, and a negative norm stays. `c` and `s` (n elements), if given,
  /// receive the cosines and sines of the rotations.
  ///
  /// Raises kVectorStrideError for a pointer to a vector of a stride other than 1, and uses the
  /// vector all the same. Raises kRightSideLengthError unless x has n elements; then missing ones
  /// count as 0. Raises kDataHeightError unless Z has as many rows as the factor,
  /// kRotationsLengthError unless c and s have n elements, kResidualsLengthError unless y and rho
  /// have as many elements as Z has columns (none without Z); then leaves that argument alone.
  void update(const DoubleVec& x, DoubleGenMat* z = nullptr, const DoubleVec* y = nullptr,
              DoubleVec* rho = nullptr, DoubleVec* c = nullptr, DoubleVec* s = nullptr);
  /// The opposite of `update`, with the same arguments and errors: removes the row x.
  ///
  /// Returns 0 on success; 1 when a residual norm could not be downdated, which is then -1; -1 when
  /// RᵀR - xxᵀ is not positive definite, in particular when not all columns are factored. After -1
  /// R, Z and rho are as before, and c and s mean nothing.
  int downdate(const DoubleVec& x, DoubleGenMat* z = nullptr, const DoubleVec* y = nullptr,
               DoubleVec* rho = nullptr, DoubleVec* c = nullptr, DoubleVec* s = nullptr);

 private:
  // Of the factor; 0 also when there was no memory for it.
  unsigned order() const { return length() == 0 ? 0 : std::min(rows(), cols()); }
  void dofactor();
  void makeContiguous();
  IntVec pivotsOfFactor() const { return permuted_ != 0 ? pvts_ : IntVec(); }
  unsigned factoredColumns() const;
  bool isPartial() const;
  void clearUnfactoredRows();
  void growFactoredBlock(int first);
  bool isIndependent(int j) const;
  void solveInPlace(unsigned k, DoubleGenMat& x) const;
  template <class Routine>
  int changeRow(const Routine& routine, const DoubleVec& x, DoubleGenMat* z, const DoubleVec* y,
                DoubleVec* rho, DoubleVec* c, DoubleVec* s);

  int info_ = -1;  // the number of factored columns
  IntVec pvts_;
  int pivoting_ = 1;
  int permuted_ = 0;  // whether the factor was made with pivoting
};
