#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/SymmetricFactors.h>
#include <kilnbase/linalg/linpack/dspfa.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;
using kernels::SymmetricKernels;

// Puts the rows of the multipliers in the columns from `begin` to before `end` back to where they
// were before the exchanges of earlier columns.
void undoExchanges(const PackedUpper<double>& a, const int* kpvt, Index begin, Index end) {
  for (Index k = begin; k < end;) {
    const Index next = k + (kpvt[k] < 0 ? 2 : 1);
    const Index l = std::abs(kpvt[k]) - 1;
    for (Index j = next; l != k && j < end; ++j) std::swap(a.at(k, j), a.at(l, j));
    k = next;
  }
}

}  // namespace

int dspfa(double* ap, int n, int* kpvt) {
  const auto& symmetric = *kernels::active().symmetric;
  Index info = 0;
  Index left = n;
  while (left > SymmetricKernels::kMostSmall) {
    const Index columns =
        std::min(left - SymmetricKernels::kMostSmall, SymmetricKernels::kPanelColumns);
    const Index end = left;
    left = symmetric.factorPanel(end, columns, ap, kpvt, &info);
    symmetric.updateLeading(left, end, ap, kpvt);
    undoExchanges({ap, n}, kpvt, left, end);
  }
  const Index last = symmetric.factorSmall(left, ap, kpvt);
  return static_cast<int>(last > 0 ? last : info);
}

}  // namespace vxKilnBase::linpack
