#include <cmath>
#include <cstddef>

#include <kilnbase/linalg/linpack/dchud.h>
#include <kilnbase/linalg/linpack/drotg.h>

namespace vxKilnBase::linpack {

namespace {

// Rotates the row `x` into R. `c` and `s` receive the rotations.
void updateFactor(double* r, int ldr, int p, const double* x, double* c, double* s) {
  for (int j = 0; j < p; ++j) {
    double* column = r + static_cast<std::ptrdiff_t>(j) * ldr;
    double element = x[j];
    for (int i = 0; i < j; ++i) rotate(c[i], s[i], column[i], element);
    drotg(column[j], element, c[j], s[j]);
  }
}

// √(rho² + zeta²), without overflow; a negative rho stays.
double updateNorm(double rho, double zeta) {
  const double size = std::fabs(zeta);
  if (size == 0.0 || rho < 0.0) return rho;
  const double scale = size + rho;
  const double scaledSize = size / scale;
  const double scaledRho = rho / scale;
  return scale * std::sqrt(scaledSize * scaledSize + scaledRho * scaledRho);
}

}  // namespace

void dchud(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
           double* rho, double* c, double* s) {
  updateFactor(r, ldr, p, x, c, s);
  for (int j = 0; j < nz; ++j) {
    double* column = z + static_cast<std::ptrdiff_t>(j) * ldz;
    double zeta = y[j];
    for (int i = 0; i < p; ++i) rotate(c[i], s[i], column[i], zeta);
    rho[j] = updateNorm(rho[j], zeta);
  }
}

}  // namespace vxKilnBase::linpack
