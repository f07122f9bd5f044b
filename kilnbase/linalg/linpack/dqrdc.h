// Householder QR factorization with optional column pivoting.
#pragma once

namespace vxKilnBase::linpack {

/// Factors the n by p matrix X as Q R by Householder transformations.
///
/// On return the upper triangle of X holds R; below the diagonal stand the Householder vectors,
/// whose first elements are in `qraux` (p elements). Transformation l is I - v vᵀ / v[l] with v[l]
/// = qraux[l]. A column that vanishes from row l on, the one of the last row and all beyond it have
/// no transformation and qraux 0.
///
/// With `job` not 0 columns are exchanged: `jpvt` (p elements) says on entry whether a column is
/// initial (> 0, moved to the front), free (0, takes part in pivoting) or final (< 0, moved to the
/// end), and on return which column of the original matrix, counted from 1, stands at each place.
/// Among the free columns the one with the largest remaining norm is taken at each step, the first
/// of equal ones. `work` has p elements and is not used when `job` is 0, nor is `jpvt`. About 60
/// KiB of stack are used.
///
/// Source: J. J. Dongarra, C. B. Moler, J. R. Bunch, G. W. Stewart, LINPACK Users' Guide, SIAM
/// 1979, chapter 9.
void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, int job);

}  // namespace vxKilnBase::linpack
