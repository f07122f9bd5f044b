// Cholesky factor after a row is added.
#pragma once

namespace vxKilnBase::linpack {

/// Updates the p by p Cholesky factor R of XᵀX when the row `x` (p elements) is appended to X.
///
/// The nz columns of Z (p rows), with the elements `y` (nz) of the new row, and the residual norms
/// `rho` (nz) are updated as well; a negative norm is left alone. `c` and `s` (p elements) receive
/// the rotations.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 10.
void dchud(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
           double* rho, double* c, double* s);

}  // namespace vxKilnBase::linpack
