#include <algorithm>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/determinant.h>
#include <kilnbase/linalg/linpack/dgedi.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

void computeDeterminant(const double* a, Index lda, Index n, const int* ipvt, double* det) {
  det[0] = 1.0;
  det[1] = 0.0;
  for (Index k = 0; k < n && det[0] != 0.0; ++k) {
    const double pivot = a[k * lda + k];
    multiplyDeterminant(det, ipvt[k] == k + 1 ? pivot : -pivot);
  }
}

// U⁻¹ replaces U.
void invertUpper(double* a, Index lda, Index n) {
  const auto& dense = *kernels::active().dense;
  for (Index k = 0; k < n; ++k) {
    double* column = a + k * lda;
    column[k] = 1.0 / column[k];
    dense.scale(k, -column[k], column);
    for (Index j = k + 1; j < n; ++j) {
      double* other = a + j * lda;
      const double factor = other[k];
      other[k] = 0.0;
      dense.axpy(k + 1, factor, column, other);
    }
  }
}

// U⁻¹ L⁻¹ replaces U⁻¹ and the multipliers.
void multiplyByInverseLower(double* a, Index lda, Index n, const int* ipvt, double* work) {
  const auto& dense = *kernels::active().dense;
  for (Index k = n - 1; k-- > 0;) {
    double* column = a + k * lda;
    for (Index i = k + 1; i < n; ++i) {
      work[i] = column[i];
      column[i] = 0.0;
    }
    dense.gemv(n, n - k - 1, 1.0, a + (k + 1) * lda, lda, work + k + 1, column);
    const Index l = ipvt[k] - 1;
    if (l != k) std::swap_ranges(column, column + n, a + l * lda);
  }
}

}  // namespace

void dgedi(double* a, int lda, int n, const int* ipvt, double* det, double* work, int job) {
  if (job / 10 != 0) computeDeterminant(a, lda, n, ipvt, det);
  if (job % 10 == 0) return;
  invertUpper(a, lda, n);
  multiplyByInverseLower(a, lda, n, ipvt, work);
}

}  // namespace vxKilnBase::linpack
