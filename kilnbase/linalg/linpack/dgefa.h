// LU factorization with partial pivoting.
#pragma once

namespace vxKilnBase::linpack {

/// Factors the n by n matrix A, column-major with leading dimension `lda`, by Gaussian elimination
/// with partial pivoting.
///
/// On return the upper triangle of A holds U. Below the diagonal stand the multipliers, negated:
/// step k has added a(i, k) times row k to each row i > k. The exchange of a later step moves no
/// multipliers of earlier steps. ipvt[k] (n elements) is the row, counted from 1, that changed
/// places with row k + 1 in step k: of the rows with the largest absolute value the first one. A
/// NaN is chosen only when the element on the diagonal is one.
///
/// Returns 0, or the number, counted from 1, of the last step whose pivot is 0. That step does
/// nothing, and the elimination goes on. Then dgesl and dgedi divide by 0.
///
/// About 40 KiB of stack are used.
///
/// Source: J. J. Dongarra, C. B. Moler, J. R. Bunch, G. W. Stewart, LINPACK Users' Guide, SIAM
/// 1979, chapter 1.
int dgefa(double* a, int lda, int n, int* ipvt);

}  // namespace vxKilnBase::linpack
