// Cholesky decomposition with diagonal pivoting, shifts, updates and downdates.
#pragma once

#include <algorithm>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntVec.h>

/// The Cholesky factor R of a symmetric positive definite matrix A, with diagonal pivoting by
/// default: Pᵀ A P = Rᵀ R.
///
/// Only the upper triangle of A is read. The factor is this object's own matrix part: the upper
/// triangle of its leading n by n block, n being the number of columns (or of rows if there are
/// fewer); below the diagonal stands what A had there. Use it for normal equations and other
/// definite systems; it is the cheapest of the decompositions, and the one that can follow columns
/// being exchanged and rows being added to or removed from the data X when A = XᵀX.
///
///     DoubleChDecomp factor(a);
///     if (factor.isPD()) x = factor.solve(b);
///
/// Factoring stops at the first pivot that is not positive. With pivoting the leading columns are
/// then the best conditioned ones: `lastPosFactor()` + 1 of them, which `partialSolve` can use.
///
/// Copy construction shares the factor and the pivots with the original, **assignment copies
/// elements** between decompositions of the same size, both pivoted or both not. Errors are raised
/// by number through MathError.h; what happens when the handler returns is told with each function.
/// For one thread at a time.
class KILNBASE_API DoubleChDecomp : public DoubleGenMat {
 public:
  /// Where pivoting puts an element of the diagonal.
  enum PivotPosition { FINAL = -1, FREE = 0, INITIAL = 1 };

  /// Nothing factored: 0 by 0, and neither positive definite nor failed.
  DoubleChDecomp() = default;
  /// Factors a copy of `a`.
  explicit DoubleChDecomp(const DoubleGenMat& a);
  DoubleChDecomp(const DoubleChDecomp& other) = default;
  DoubleChDecomp& operator=(const DoubleChDecomp& other) = default;
  ~DoubleChDecomp() = default;

  /// Factors a copy of `a` in place of what was here before. Raises 0x5010 when `a` has fewer rows
  /// than columns; then as many columns as there are rows are factored.
  ///
  /// With pivoting, the entries of `pivots()` are taken as specifiers (see `setPivoting`) and
  /// replaced by the pivots. Pivots that an earlier factoring left behind count as specifiers too:
  /// set them anew before factoring again.
  void factor(const DoubleGenMat& a);

  /// Turns pivoting on or off for the next `factor`, and returns the old setting (initially 1).
  int doPivoting(int on);
  /// Says where the next `factor` is to put diagonal element k >= 0: INITIAL moves it to the front
  /// and FINAL to the end, in both cases without pivoting, FREE lets it take part. Elements not
  /// spoken for are FREE. Returns the old specifier. Raises 0x5012 for any other value, which is
  /// stored all the same: positive values act as INITIAL, negative ones as FINAL. From then on
  /// until the next `factor`, `solve`, `permute` and `unpermute` have no pivots to go by.
  int setPivoting(int k, int position);
  /// The specifiers before factoring; afterwards element i tells which row and column of A, from 0,
  /// is the i-th of the factor. A view. After factoring without pivoting it means nothing.
  IntVec pivots() const { return pvts_; }

  /// Whether all diagonal elements of the factor are positive; never of a matrix with more rows
  /// than columns.
  bool isPD() const { return info_ == static_cast<int>(rows()); }
  /// Index of the last positive diagonal element of the factor, -1 when there is none and -2 when
  /// nothing has been factored.
  int lastPosFactor() const { return info_ - 1; }
  /// Whether a diagonal element from `lastPosFactor()` on is negative.
  bool fail() const;
  bool good() const { return !fail(); }

  /// The square of the last diagonal element of the factor over the first if the last pivot is the
  /// one at which factoring stopped, else 0 (for a 1 by 1 matrix their ratio to themselves).
  /// Without pivoting raises the warning 0x5001 and returns -1.
  double condition() const;

  /// The solution x of A x = b, new, with the columns that have been factored; the other unknowns
  /// of a semidefinite system are 0. Raises 0x5002 unless b has n elements, returning an empty
  /// vector, and 0x5011 when the decomposition has failed or nothing has been factored.
  DoubleVec solve(const DoubleVec& b) const;
  /// The solution of the system of the leading k columns of the factor: x, of k elements in the
  /// factor's order, with RₖᵀRₖ x = the first k elements of `permute(b)`. Resized to n elements and
  /// unpermuted it solves A x = b with all other unknowns 0. Raises 0x5002 unless b has n elements,
  /// returning an empty vector, and 0x5011 when fewer than k columns have been factored; then x has
  /// as many elements as those.
  DoubleVec partialSolve(const DoubleVec& b, unsigned k) const;

  /// A new vector of the elements of `v` in the order of the factor. Raises 0x5004 unless it has n
  /// elements, returning a copy. A factor made without pivoting has the order of A.
  DoubleVec permute(const DoubleVec& v) const;
  /// Undoes `permute`.
  DoubleVec unpermute(const DoubleVec& v) const;

  /// Makes this the factor of the matrix whose rows and columns `first` to `last` (in the factor's
  /// order) are shifted circularly by one: left, first to last place, when `direction` is 0, and
  /// right, last to first place, when it is 1. The diagonal may turn negative.
  ///
  /// The rows of Z (if given, as many as the factor's) are rotated along; `c` and `s` (if given,
  /// last - first elements) receive the rotations. `pivots()` stays as it is, so that `solve` fits
  /// the shifted order only where nothing was pivoted. Raises 0x5005 for
  /// another direction and 0x5006 unless 0 <= first < last < n, and then shifts nothing; raises
  /// 0x5007 for a Z and 0x5008 for a c or s of the wrong size, which are then left alone.
  void shift(int first, int last, int direction, DoubleGenMat* z = nullptr, DoubleVec* c = nullptr,
             DoubleVec* s = nullptr);

  /// Makes this the factor of RᵀR + xxᵀ: of XᵀX when the row x, in the factor's order, is added to
  /// X.
  ///
  /// Z holds Qᵀ Y for the data columns Y that belong to X, and `rho` the norms of their residuals:
  /// with `y`, the elements of those columns in the added row, they are updated as well; a negative
  /// norm is left alone. A missing `y` counts as zeros. `c` and `s` (n elements) receive the
  /// rotations.
  ///
  /// Raises 0x5002 unless x has n elements (missing ones then count as 0), 0x5007 unless Z has as
  /// many rows as the factor, 0x5008 unless c and s have n elements, 0x5009 unless y and rho have
  /// as many elements as Z has columns (none without Z), 0x500C for a pointer to a vector of a
  /// stride other than 1. Arguments of the wrong size are then left alone.
  void update(const DoubleVec& x, DoubleGenMat* z = nullptr, const DoubleVec* y = nullptr,
              DoubleVec* rho = nullptr, DoubleVec* c = nullptr, DoubleVec* s = nullptr);
  /// The opposite of `update`, with the same arguments and errors: removes the row x.
  ///
  /// Returns 0; -1 when RᵀR - xxᵀ is not positive definite (then R, Z and rho are as before, c and
  /// s mean nothing); 1 when a residual norm could not be downdated, which is set to -1.
  int downdate(const DoubleVec& x, DoubleGenMat* z = nullptr, const DoubleVec* y = nullptr,
               DoubleVec* rho = nullptr, DoubleVec* c = nullptr, DoubleVec* s = nullptr);

 private:
  using RowRoutine = int (*)(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz,
                             const double* y, double* rho, double* c, double* s);

  // Of the factor; 0 also when there was no memory for it.
  unsigned order() const { return length() == 0 ? 0 : std::min(rows(), cols()); }
  void dofactor();
  void makeContiguous();
  int originalPlace(int i) const;
  unsigned factoredColumns() const;
  DoubleVec solveLeading(const DoubleVec& b, unsigned k) const;
  int changeRow(RowRoutine routine, const DoubleVec& x, DoubleGenMat* z, const DoubleVec* y,
                DoubleVec* rho, DoubleVec* c, DoubleVec* s);

  int info_ = -1;
  IntVec pvts_;
  int pivoting_ = 1;
  int permuted_ = 0;  // whether the factor was made with pivoting
};
