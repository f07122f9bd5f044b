// The eliminations of the Cholesky factorization within a few rows of a symmetric matrix whose
// upper triangle is stored.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels {

struct CholeskyKernels {
  // Rows that `eliminateStrip` handles at a time.
  static constexpr Index kStripRows = 8;

  // Eliminates the first `rows` rows of A (n columns), at most kStripRows, and exactly that many if
  // n is larger. Stops at a diagonal element that is not positive, with the rows from there on
  // updated by those before. Returns the number of rows eliminated.
  Index (*eliminateStrip)(Index rows, Index n, double* a, Index lda);

  // Eliminates row m of A, of which only the rows above have been, and which nothing has updated:
  // its elements in the columns from m + 1 on become those of the factor, whose element on the
  // diagonal is `pivot`. The squares of the new elements are subtracted from `diagonal`, which
  // starts with the diagonal element of column m + 1.
  //
  // A is the part from row m's column 0 on of a matrix that has `left` columns before it, n columns
  // of `height` rows.
  void (*eliminateRow)(Index m, Index n, Index height, Index left, double pivot, double* a,
                       Index lda, double* diagonal);
};

}  // namespace vxKilnBase::kernels
