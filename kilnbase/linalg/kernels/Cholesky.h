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
  // its elements in the n columns from m + 1 on become those of the factor, whose element on the
  // diagonal is `pivot`. The squares of the new elements are subtracted from `diagonal`, which
  // starts with the diagonal element of column m + 1.
  //
  // `a` is row 0 of column m. At least kMostSmall rows, from row 0 on, and columns, to the last
  // one, must be there to be read, and as many elements of the diagonal.
  void (*eliminateRow)(Index m, Index n, double pivot, double* a, Index lda, double* diagonal);

  // Order of the largest matrix for `eliminateSmall`.
  static constexpr Index kMostSmall = 32;

  // Eliminates the rows of A, of order p, as far as there is a positive diagonal element. For a
  // place between freeBegin and freeEnd the first largest diagonal element there is moved to it by
  // an exchange of rows and columns; exchanges[k] tells with which place k changed. `diagonal` is
  // taken for the diagonal of A, and left with that of the rows not eliminated. These have those
  // before subtracted. Returns the number of rows eliminated.
  Index (*eliminateSmall)(Index p, Index freeBegin, Index freeEnd, double* a, Index lda,
                          double* diagonal, int* exchanges);
};

}  // namespace vxKilnBase::kernels
