// Cholesky factorization with optional diagonal pivoting.
#pragma once

namespace vxKilnBase::linpack {

/// Factors the p by p positive definite matrix A as Rᵀ R. The routine reads the upper triangle of A
/// and writes R there; it does not touch the elements below the diagonal.
///
/// With `job` not 0 rows and columns are exchanged. On entry jpvt[j] says whether diagonal element
/// j is initial (> 0, moved to the front), free (0) or final (< 0, moved to the end). On return
/// jpvt[j] is the number, from 1, of the diagonal element of A that now stands at place j. Each
/// step takes the largest free diagonal element, the first of equal ones. `jpvt` and `work` have p
/// elements; with `job` 0 they are not used.
///
/// Returns the number k of rows of R: p when A is positive definite, otherwise the pivot of row k
/// was not positive. Rows 0 to k - 1 hold R, the later rows A with those rows of R subtracted.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 8.
int dchdc(double* a, int lda, int p, double* work, int* jpvt, int job);

}  // namespace vxKilnBase::linpack
