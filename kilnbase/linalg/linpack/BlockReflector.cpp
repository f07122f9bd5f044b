#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/BlockReflector.h>

namespace vxKilnBase::linpack {

using kernels::active;

BlockReflector::BlockReflector(const Columns& panel, const double* qraux) : panel_(panel) {
  for (Index j = 0; j < panel_.count; ++j) {
    for (Index i = 0; i < j; ++i) {
      inverse(j, i) = std::exchange(*panel_.at(i, j), 0.0);
      inverse(i, j) = 0.0;
    }
    diagonal_[j] = std::exchange(*panel_.at(j, j), qraux[j]);
  }
  active().dense->syrkUpper(panel_.count, panel_.rows, 1.0, {panel_.x, panel_.ld, 1},
                            {panel_.x, 1, panel_.ld}, inverse_, kMostColumns);
  // A vector that is 0 multiplies whatever stands here by 0.
  for (Index j = 0; j < panel_.count; ++j) inverse(j, j) = qraux[j] != 0.0 ? qraux[j] : 1.0;
}

BlockReflector::~BlockReflector() {
  for (Index j = 0; j < panel_.count; ++j) {
    for (Index i = 0; i < j; ++i) *panel_.at(i, j) = inverse(j, i);
    *panel_.at(j, j) = diagonal_[j];
  }
}

void BlockReflector::applyTransposed(const Columns& columns) const {
  constexpr Index kSlice = 96;
  const auto& dense = *active().dense;
  const Index k = panel_.count;
  double w[kMostColumns * kSlice];
  for (Index j = 0; j < columns.count; j += kSlice) {
    const Index n = std::min(kSlice, columns.count - j);
    std::fill_n(w, k * n, 0.0);
    dense.gemm(k, n, panel_.rows, 1.0, {panel_.x, panel_.ld, 1}, {columns.at(0, j), 1, columns.ld},
               w, k);
    dense.solveUpperTransposed(k, n, inverse_, kMostColumns, w, k);
    dense.gemm(panel_.rows, n, k, -1.0, {panel_.x, 1, panel_.ld}, {w, 1, k}, columns.at(0, j),
               columns.ld);
  }
}

}  // namespace vxKilnBase::linpack
