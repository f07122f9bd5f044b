// Cholesky factorization with optional diagonal pivoting.
#pragma once

namespace vxKilnBase::linpack {

/// Factors the p by p positive definite matrix A, of which only the upper triangle is read and
/// written, as Rᵀ R; R replaces that triangle.
///
/// With `job` not 0 diagonal elements are exchanged: `jpvt` (p elements) says on entry whether an
/// element is initial (> 0), free (0) or final (< 0), and on return which original element, counted
/// from 1, stands at each place. `work` has p elements. Neither is used when `job` is 0. Returns
/// the index from 1 of the last positive diagonal element of the factor: p when A is positive
/// definite. The elements from there on are those that were left to eliminate.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 8.
int dchdc(double* a, int lda, int p, double* work, int* jpvt, int job);

}  // namespace vxKilnBase::linpack
