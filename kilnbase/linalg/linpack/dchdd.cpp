#include <algorithm>
#include <cmath>
#include <cstddef>

#include <kilnbase/linalg/linpack/dchdd.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/triangular.h>

namespace vxKilnBase::linpack {

namespace {

// Makes the rotations that take (s, alpha) to (0, 1), with alpha = √(1 − ‖s‖²), the last element of
// s first. On entry s is the solution of Rᵀ s = x, of norm below 1; on return it holds the sines.
void makeRotations(int p, double norm, double* c, double* s) {
  double alpha = std::sqrt(1.0 - norm * norm);
  for (int i = p - 1; i >= 0; --i) {
    const double scale = alpha + std::fabs(s[i]);
    const double a = alpha / scale;
    const double b = s[i] / scale;
    const double length = std::sqrt(a * a + b * b);
    c[i] = a / length;
    s[i] = b / length;
    alpha = scale * length;
  }
}

void downdateFactor(double* r, int ldr, int p, const double* c, const double* s) {
  for (int j = 0; j < p; ++j) {
    double* column = r + static_cast<std::ptrdiff_t>(j) * ldr;
    double removed = 0.0;
    for (int i = j; i >= 0; --i) {
      const double element = column[i];
      column[i] = c[i] * element - s[i] * removed;
      removed = c[i] * removed + s[i] * element;
    }
  }
}

// Downdates one column of Z. `zeta` is the element of the row on entry, and on return its part in
// the residual.
void downdateColumn(int p, const double* c, const double* s, double* column, double& zeta) {
  for (int i = 0; i < p; ++i) {
    column[i] = (column[i] - s[i] * zeta) / c[i];
    zeta = c[i] * zeta - s[i] * column[i];
  }
}

// rho := √(rho² − zeta²). When |zeta| > rho, or one of them is a NaN, rho becomes -1 and the
// function returns false.
bool downdateNorm(double& rho, double zeta) {
  const double size = std::fabs(zeta);
  if (!(size <= rho)) {
    rho = -1.0;
    return false;
  }
  if (size > 0.0) {
    const double share = size / rho;
    rho *= std::sqrt(1.0 - share * share);
  }
  return true;
}

}  // namespace

int dchdd(double* r, int ldr, int p, const double* x, double* z, int ldz, int nz, const double* y,
          double* rho, double* c, double* s) {
  std::copy_n(x, p, s);
  solveUpperTransposed(r, ldr, p, s);
  const double norm = dnrm2(p, s, 1);
  if (!(norm < 1.0)) return -1;
  makeRotations(p, norm, c, s);
  downdateFactor(r, ldr, p, c, s);
  int info = 0;
  for (int j = 0; j < nz; ++j) {
    double zeta = y[j];
    downdateColumn(p, c, s, z + static_cast<std::ptrdiff_t>(j) * ldz, zeta);
    if (!downdateNorm(rho[j], zeta)) info = 1;
  }
  return info;
}

}  // namespace vxKilnBase::linpack
