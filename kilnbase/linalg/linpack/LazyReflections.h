// Householder reflections of a matrix from the left, one column at a time.
//
// The reflections H₀, H₁, ... with H = I − v vᵀ / v₀ take the m by n matrix A to R, column by
// column (Golub and Van Loan, Matrix Computations, 5.2):
//
//     A⁽⁰⁾ = A,   A⁽ˡ⁺¹⁾ = Hₗ A⁽ˡ⁾ = A⁽ˡ⁾ + v fᵀ,   f = −p / v₀,   p = A⁽ˡ⁾ᵀ v.
//
// The sums v fᵀ are added late. With k of them pending, V = (v⁽ˡ⁻ᵏ⁾ ... v⁽ˡ⁻¹⁾) and F the k by n
// matrix of their factors, the storage holds S with
//
//     A⁽ˡ⁾ = S + V F           in the columns that are not yet reflected.
//
// Reflection l needs column l of A⁽ˡ⁾, the projections p and row l of A⁽ˡ⁺¹⁾, nothing else:
//
//     k < most:  p = Sᵀ v + Fᵀ (Vᵀ v)                  reads S;
//     k = most:  S := S + V F, p = Sᵀ v, then k = 0    reads and writes S, in one pass.
//
// Source: G. Quintana-Ortí, X. Sun, C. H. Bischof, A BLAS-3 version of the QR factorization with
// column pivoting, SIAM J. Sci. Comput. 19 (1998), 1486-1494.
#pragma once

#include <kilnbase/linalg/kernels/Householder.h>
#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/Submatrix.h>

namespace vxKilnBase::linpack {

/// Reflects the columns of a matrix, from the left to the right. The object takes 48 KiB, and so
/// belongs on the stack of one function that is not inlined.
class LazyReflections {
 public:
  /// Neither the matrix nor `qraux`, one element a column, is copied.
  LazyReflections(const Submatrix& a, double* qraux);

  /// Exchanges columns i and j, neither of which has been reflected.
  void exchange(Index i, Index j);
  /// Makes reflection l, after reflections 0 to l - 1. Column l then holds R above the diagonal and
  /// on it, and v below; qraux[l] is v₀, or 0 where there is no reflection. Row l holds row l of R.
  void reflect(Index l);
  /// Makes S equal to A⁽ˡ⁾ in column j from row `row` on, and F equal to 0 there.
  void bringUpToDate(Index row, Index j);

 private:
  static Index mostPending(const Submatrix& a);
  double* factors(Index k, Index j) { return factors_ + (k * a_.columns + j); }
  kernels::PendingReflections pendingFrom(Index row, Index j);
  void flush(Index row, Index j);
  void sweep(Index row, Index j, kernels::PendingReflections pending, const double* v,
             double* projections) const;
  void reflectLazily(Index l);
  void correct(Index l, double* projections);
  void finishRow(Index l);

  const Submatrix a_;
  double* const qraux_;
  const Index most_;   // reflections that may be pending; 0 in small and in very wide matrices
  Index made_ = 0;     // l: reflections that have been made
  Index pending_ = 0;  // k
  double factors_[kernels::tuning::kLazyFactors];  // row k of F from factors(k, 0) on, and one more
};

}  // namespace vxKilnBase::linpack
