// Eliminations of the Cholesky factorization A = Rᵀ R, for a symmetric matrix whose upper triangle
// is stored.
//
// To eliminate row k is to turn it into row k of R (Golub and Van Loan, Matrix Computations, 4.2):
//
//     r_kk = √(a_kk − Σ r_ik²),   r_kj = (a_kj − Σ r_ik r_ij) / r_kk,   sums over i < k.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels {

struct CholeskyKernels {
  // Rows that `eliminateStrip` handles at a time.
  static constexpr Index kStripRows = tuning::kStripRows;

  // Eliminates the first `rows` rows of A, which has n columns: rows = kStripRows, or rows = n <
  // kStripRows. Stops at a diagonal element that is not positive; then the eliminated rows have
  // been subtracted from the others of these rows. Returns the number of rows eliminated.
  Index (*eliminateStrip)(Index rows, Index n, double* a, Index lda);

  // Eliminates row m of A in the n columns from m + 1 on, when rows 0 to m - 1 are rows of R, row m
  // is as it was in A, and `pivot` is r_mm. Subtracts the squares of the new elements from
  // diagonal[0] to diagonal[n - 1].
  //
  // `a` points at row 0 of column m. At least kMostSmall columns stand behind column m, and as many
  // rows below row m. The kernel may read these rows in the columns from m on, and it may write
  // elements of `diagonal` back unchanged.
  void (*eliminateRow)(Index m, Index n, double pivot, double* a, Index lda, double* diagonal);

  // Order of the largest matrix for `eliminateSmall`.
  static constexpr Index kMostSmall = tuning::kMostSmall;

  // Eliminates the rows of A, of order p <= kMostSmall, with pivoting: the first largest diagonal
  // element at places k to freeEnd - 1 is moved to place k by an exchange of rows and columns, if k
  // lies between freeBegin and freeEnd - 1. exchanges[k] is the place that k was exchanged with.
  // Stops where the pivot is not positive. Returns the number of rows eliminated.
  //
  // `diagonal` stands for the diagonal of A, and is exchanged with it. On return its elements from
  // the number eliminated on, and the rows of A, have the eliminated rows subtracted.
  Index (*eliminateSmall)(Index p, Index freeBegin, Index freeEnd, double* a, Index lda,
                          double* diagonal, int* exchanges);
};

}  // namespace vxKilnBase::kernels
