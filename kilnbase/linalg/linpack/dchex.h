// Cholesky factor of a matrix with rows and columns permuted circularly.
#pragma once

namespace vxKilnBase::linpack {

/// Updates the p by p Cholesky factor R of A when rows and columns k to l of A (from 1) are shifted
/// circularly: by one place to the right when `job` is 1, to the left when `job` is 2.
///
/// The l - k rotations that make R triangular again are applied to the columns of Z (p by nz) too.
/// `c` and `s` receive their cosines and sines.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 10.
void dchex(double* r, int ldr, int p, int k, int l, double* z, int ldz, int nz, double* c,
           double* s, int job);

}  // namespace vxKilnBase::linpack
