// Determinant and inverse of a factored general matrix.
#pragma once

namespace vxKilnBase::linpack {

/// Computes from what `dgefa` or `dgeco` made of A the determinant (tens digit of `job`) and the
/// inverse (ones digit): job 11 both, 10 the determinant only, 1 the inverse only.
///
/// The determinant is det[0] * 10^det[1] with 1 <= |det[0]| < 10, or det[0] is 0; no product
/// overflows or underflows. A determinant that is infinite or NaN is in det[0] alone. The inverse
/// replaces the factors in `a`; a zero on the diagonal of U is divided by. `work` has n elements,
/// and is used for the inverse only, as `det` (2 elements) is for the determinant. About 62 KiB of
/// stack are used.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 1.
void dgedi(double* a, int lda, int n, const int* ipvt, double* det, double* work, int job);

}  // namespace vxKilnBase::linpack
