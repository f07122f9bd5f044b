// Cholesky factor after a row is removed.
#pragma once

namespace vxKilnBase::linpack {

/// Downdates the p by p Cholesky factor R of XᵀX when the row `x` (p elements) is removed from X.
///
/// The nz columns of Z (p rows), with the elements `y` (nz) of the row, and the residual norms
/// `rho` (nz) are downdated as well. `c` and `s` (p elements) receive the rotations. Returns 0 on
/// success, -1 when R could not be downdated (R, Z and `rho` are as before), 1 when some residual
/// norm could not (it is set to -1).
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 10.
int dchdd(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
          double* rho, double* c, double* s);

}  // namespace vxKilnBase::linpack
