// Linear systems with a factored symmetric matrix in packed storage.
#pragma once

namespace vxKilnBase::linpack {

/// Solves A x = b; x replaces `b` (n elements).
///
/// `ap` and `kpvt` are what `dspfa` or `dspco` made of A. A zero block of D is divided by; both
/// routines tell whether there is one.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 5.
void dspsl(const double* ap, int n, const int* kpvt, double* b);

}  // namespace vxKilnBase::linpack
