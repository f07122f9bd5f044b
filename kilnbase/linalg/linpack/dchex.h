// Cholesky factor of a matrix with rows and columns permuted circularly.
#pragma once

namespace vxKilnBase::linpack {

/// Updates the p by p Cholesky factor R when columns k to l (from 1) of the factored matrix are
/// shifted circularly: right by one when `job` is 1, left by one when it is 2.
///
/// The rotations are applied to the nz columns of Z (p rows) as well, and their cosines and sines
/// stored in `c` and `s` (l - k elements used).
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 10.
void dchex(double* r, int ldr, int p, int k, int l, double* z, int ldz, int nz, double* c,
           double* s, int job);

}  // namespace vxKilnBase::linpack
