#include <algorithm>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/SweepBatch.h>

namespace vxKilnBase::linpack {

namespace tuning = kernels::tuning;

// A sweep joins the batch when the batch spans its columns and few others. In these the sweep has
// rotations by 0.
void SweepBatch::begin(Index first, Index last) {
  if (q_ == nullptr) return;
  const Index spare = (first - first_) + (last_ - last);
  const Index mostSpare = tuning::kSpareRotations + (last - first) / tuning::kSpareShare;
  const bool fits = first >= first_ && last <= last_ && spare <= mostSpare;
  if (!fits || sweeps_ == kernels::kFusedSweeps) apply();
  if (sweeps_ == 0) open(first, last);
  double* a = factors(sweeps_++);
  for (double* factor : {a, a + ld_}) {
    std::fill_n(factor, first - first_, 0.0);
    std::fill(factor + (last - first_), factor + (last_ - first_), 0.0);
  }
}

void SweepBatch::open(Index first, Index last) {
  first_ = first;
  last_ = last;
  std::fill_n(scales(), last - first + 1, 1.0);
  std::fill_n(scales() + ld_, last - first + 1, 1.0);
}

void SweepBatch::apply() {
  if (sweeps_ == 0) return;
  const kernels::FusedSweeps sweeps = {sweeps_, last_ - first_, storage_, ld_, scales()};
  kernels::active().rotations->applySweeps(rows_, q_ + first_ * ldq_, ldq_, sweeps);
  sweeps_ = 0;
}

void SweepBatch::rotateNow(Index j, Index k, double c, double s) {
  if (q_ == nullptr) return;
  apply();
  kernels::active().rotations->rotate(rows_, q_ + j * ldq_, q_ + k * ldq_, c, s);
}

}  // namespace vxKilnBase::linpack
