#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/SymmetricFactors.h>
#include <kilnbase/linalg/linpack/dspsl.h>

namespace vxKilnBase::linpack {

void dspsl(const double* ap, int n, const int* kpvt, double* b) {
  using kernels::Index;
  const SymmetricFactors f{{ap, n}, kpvt};
  const auto& dense = *kernels::active().dense;
  for (Index k = n - 1; k >= 0;) {
    const Index first = k + 1 - f.orderOfBlock(k);
    std::swap(b[first], b[f.exchanged(k)]);
    for (Index j = k; j >= first; --j) dense.axpy(first, b[j], f.column(j), b);
    if (first == k) {
      b[k] /= f.at(k, k);
    } else {
      f.solveBlock(k, b[first], b[k]);
    }
    k = first - 1;
  }
  for (Index k = 0; k < n;) {
    const Index end = k + f.orderOfBlock(k);
    for (Index j = k; j < end; ++j) b[j] += dense.dot(k, f.column(j), b);
    std::swap(b[k], b[f.exchanged(k)]);
    k = end;
  }
}

}  // namespace vxKilnBase::linpack
