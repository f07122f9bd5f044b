#include <algorithm>
#include <cstddef>
#include <span>

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
  if (!fits || sweeps_ == kernels::kFusedSweeps) close();
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

void SweepBatch::close() {
  if (sweeps_ == 0) return;
  complete_[count_++] = {first_, {sweeps_, last_ - first_, batch_, ld_, scales()}};
  if (count_ == most_) applyComplete();
  batch_ = storage_ + count_ * kStorageColumns * ld_;
  sweeps_ = 0;
}

void SweepBatch::applyComplete() {
  for (Index row = 0; row < rows_; row += tuning::kRotatedRows) {
    const Index rows = std::min(tuning::kRotatedRows, rows_ - row);
    for (const Complete& batch : std::span(complete_, static_cast<std::size_t>(count_))) {
      double* part = q_ + row + batch.first * ldq_;
      kernels::active().rotations->applySweeps(rows, part, ldq_, batch.sweeps);
    }
  }
  count_ = 0;
}

void SweepBatch::apply() {
  close();
  applyComplete();
  batch_ = storage_;
}

void SweepBatch::rotateNow(Index j, Index k, double c, double s) {
  if (q_ == nullptr) return;
  apply();
  kernels::active().rotations->rotate(rows_, q_ + j * ldq_, q_ + k * ldq_, c, s);
}

}  // namespace vxKilnBase::linpack
