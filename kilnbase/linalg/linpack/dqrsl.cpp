#include <algorithm>

#include <kilnbase/linalg/linpack/dqrsl.h>
#include <kilnbase/linalg/linpack/reflector.h>
#include <kilnbase/linalg/linpack/triangular.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// The output of dqrdc.
struct Factorization {
  const double* x;
  Index ld;
  Index rows;
  const double* qraux;

  // Column j of X holds R on the diagonal, so that v₀ comes from `qraux`.
  void reflect(Index j, double* y) const {
    if (qraux[j] != 0.0) reflectVector(rows - j, qraux[j], x + (j * ld + j + 1), y + j);
  }

  // y := Q y, with the first k transformations.
  void multiply(Index k, double* y) const {
    for (Index j = k; j-- > 0;) reflect(j, y);
  }

  // y := Qᵀ y.
  void multiplyTransposed(Index k, double* y) const {
    for (Index j = 0; j < k; ++j) reflect(j, y);
  }

  // The index from 1 of the first zero on the diagonal of the leading k columns of R, or 0.
  int firstZero(Index k) const {
    for (Index j = 0; j < k; ++j) {
      if (x[j * ld + j] == 0.0) return static_cast<int>(j) + 1;
    }
    return 0;
  }
};

void copy(Index n, const double* from, double* to) {
  if (from != to) std::copy_n(from, n, to);
}

}  // namespace

int dqrsl(const double* x, int ldx, int n, int k, const double* qraux, const double* y, double* qy,
          double* qty, double* b, double* rsd, double* xb, int job) {
  const Factorization factorization = {x, ldx, n, qraux};
  const int transformations = std::min(k, n - 1);
  const bool wantsCoefficients = job % 1000 / 100 != 0;
  const bool wantsResidual = job % 100 / 10 != 0;
  const bool wantsFit = job % 10 != 0;
  if (job / 10000 != 0) {
    copy(n, y, qy);
    factorization.multiply(transformations, qy);
  }
  if (job % 10000 == 0) return 0;
  copy(n, y, qty);
  factorization.multiplyTransposed(transformations, qty);
  // All take their part of qty before one of them, which may share its storage, is changed.
  if (wantsCoefficients) copy(k, qty, b);
  if (wantsFit) copy(k, qty, xb);
  if (wantsResidual) {
    copy(n - k, qty + k, rsd + k);
    std::fill(rsd, rsd + k, 0.0);
    factorization.multiply(transformations, rsd);
  }
  if (wantsFit) {
    std::fill(xb + k, xb + n, 0.0);
    factorization.multiply(transformations, xb);
  }
  if (!wantsCoefficients) return 0;
  const int zero = factorization.firstZero(k);
  if (zero == 0) solveUpper(x, ldx, k, b);
  return zero;
}

}  // namespace vxKilnBase::linpack
