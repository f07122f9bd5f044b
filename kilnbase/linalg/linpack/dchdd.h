// Cholesky factor after a row is removed.
#pragma once

namespace vxKilnBase::linpack {

/// Downdates the p by p Cholesky factor R of XᵀX when the row `x` (p elements) is removed from X:
/// the new RᵀR is the old one minus x xᵀ.
///
/// The least squares problems min ‖X b − y‖ that go with R are downdated as well: column j of Z (p
/// by nz) is Qᵀ y, rho[j] the norm of the residual, y[j] the element of the removed row. `c` and
/// `s` (p elements) receive the rotations.
///
/// Returns 0 on success; -1 when R could not be downdated, where R, Z and `rho` are unchanged; 1
/// when some rho[j] could not be downdated and is -1.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 10.
int dchdd(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
          double* rho, double* c, double* s);

}  // namespace vxKilnBase::linpack
