#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/dgesl.h>
#include <kilnbase/linalg/linpack/triangular.h>

namespace vxKilnBase::linpack {

void dgesl(const double* a, int lda, int n, const int* ipvt, double* b, int job) {
  const auto& dense = *kernels::active().dense;
  const std::ptrdiff_t ld = lda;
  if (job == 0) {
    for (std::ptrdiff_t k = 0; k + 1 < n; ++k) {
      std::swap(b[k], b[ipvt[k] - 1]);
      dense.axpy(n - k - 1, b[k], a + k * ld + k + 1, b + k + 1);
    }
    solveUpper(a, ld, n, b);
  } else {
    solveUpperTransposed(a, ld, n, b);
    for (std::ptrdiff_t k = n - 1; k-- > 0;) {
      b[k] += dense.dot(n - k - 1, a + k * ld + k + 1, b + k + 1);
      std::swap(b[k], b[ipvt[k] - 1]);
    }
  }
}

}  // namespace vxKilnBase::linpack
