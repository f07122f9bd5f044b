// Linear systems with a factored general matrix.
#pragma once

namespace vxKilnBase::linpack {

/// Solves A x = b, or with `job` not 0 Aᵀ x = b; x replaces `b` (n elements).
///
/// `a` and `ipvt` are what `dgefa` or `dgeco` made of A. A zero on the diagonal of U is divided by;
/// both routines tell whether there is one.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 1.
void dgesl(const double* a, int lda, int n, const int* ipvt, double* b, int job);

}  // namespace vxKilnBase::linpack
