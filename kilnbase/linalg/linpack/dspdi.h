// Determinant, inertia and inverse of a factored symmetric matrix in packed storage.
#pragma once

namespace vxKilnBase::linpack {

/// Computes from what `dspfa` or `dspco` made of A the inertia (hundreds digit of `job`), the
/// determinant (tens digit) and the inverse (ones digit): job 111 all, 10 the determinant only.
///
/// `inert` (3 elements) receives the numbers of positive, negative and zero eigenvalues. The
/// determinant is det[0] * 10^det[1] with 1 <= |det[0]| < 10, or det[0] is 0; no product overflows
/// or underflows. A determinant that is infinite or NaN is in det[0] alone. The upper triangle of
/// the inverse replaces the factors in `ap`; a zero block of D is divided by. `work` has n elements
/// and is used for the inverse only. What `job` does not ask for may be null.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 5.
void dspdi(double* ap, int n, const int* kpvt, double* det, int* inert, double* work, int job);

}  // namespace vxKilnBase::linpack
