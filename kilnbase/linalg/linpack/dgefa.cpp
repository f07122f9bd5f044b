#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/dgefa.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// The first index of the largest absolute value; 0 when element 0 is a NaN.
Index indexOfLargest(Index n, const double* x) {
  Index largest = 0;
  for (Index i = 1; i < n; ++i) {
    if (std::fabs(x[i]) > std::fabs(x[largest])) largest = i;
  }
  return largest;
}

}  // namespace

int dgefa(double* a, int lda, int n, int* ipvt) {
  const auto& dense = *kernels::active().dense;
  const Index ld = lda;
  int info = 0;
  for (Index k = 0; k < n; ++k) {
    double* column = a + k * ld;
    const Index l = k + indexOfLargest(n - k, column + k);
    ipvt[k] = static_cast<int>(l + 1);
    if (column[l] == 0.0) {
      info = static_cast<int>(k + 1);
      continue;
    }
    std::swap(column[l], column[k]);
    dense.scale(n - k - 1, -1.0 / column[k], column + k + 1);
    for (Index j = k + 1; j < n; ++j) {
      double* other = a + j * ld;
      std::swap(other[l], other[k]);
      dense.axpy(n - k - 1, other[k], column + k + 1, other + k + 1);
    }
  }
  return info;
}

}  // namespace vxKilnBase::linpack
