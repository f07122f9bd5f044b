// Householder QR factorization with optional column pivoting.
#pragma once

namespace vxKilnBase::linpack {

/// Factors the n by p matrix X as Q R with Q = H₀ H₁ ..., H = I − v vᵀ / v₀.
///
/// On return the upper triangle of X holds R. Below the diagonal, column l holds the vector v of Hₗ
/// from its second element on; qraux[l] is v₀. There is no reflection, and qraux[l] is 0, where
/// column l is 0 from row l on and for l >= n - 1. `qraux` has p elements.
///
/// With `job` not 0 columns are exchanged. On entry jpvt[j] says whether column j is initial (> 0,
/// moved to the front), free (0) or final (< 0, moved to the end). On return jpvt[j] is the number,
/// from 1, of the column of X that now stands at place j. Each step takes the free column of the
/// largest remaining norm, the first of equal ones. `jpvt` and `work` have p elements; with `job` 0
/// they are not used. The routine takes about 60 KiB of stack.
///
/// Source: J. J. Dongarra, C. B. Moler, J. R. Bunch, G. W. Stewart, LINPACK Users' Guide, SIAM
/// 1979, chapter 9.
void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, int job);

}  // namespace vxKilnBase::linpack
