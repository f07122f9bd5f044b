// Cholesky factor after a row is added.
#pragma once

namespace vxKilnBase::linpack {

/// Updates the p by p Cholesky factor R of XᵀX when the row `x` (p elements) is appended to X: the
/// new RᵀR is the old one plus x xᵀ.
///
/// The least squares problems min ‖X b − y‖ that go with R are updated as well: column j of Z (p by
/// nz) is Qᵀ y, rho[j] the norm of the residual, y[j] the element of the new row. A negative rho[j]
/// stays. `c` and `s` (p elements) receive the rotations.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 10.
void dchud(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
           double* rho, double* c, double* s);

}  // namespace vxKilnBase::linpack
