#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/BlockReflector.h>

namespace vxKilnBase::linpack {

using kernels::active;

namespace {

// C -= V L⁻¹ Vᵀ C, where V has k columns.
void subtractProduct(Index k, kernels::MatrixView v, kernels::MatrixView l, const Columns& c) {
  constexpr Index kSlice = 96;
  const auto& dense = *active().dense;
  double w[BlockReflector::kMostColumns * kSlice];
  for (Index j = 0; j < c.count; j += kSlice) {
    const Index n = std::min(kSlice, c.count - j);
    std::fill_n(w, k * n, 0.0);
    dense.gemm(k, n, c.rows, 1.0, {v.data, v.columnStride, 1}, {c.at(0, j), 1, c.ld}, w, k);
    dense.solveLower(k, n, l, w, k);
    dense.gemm(c.rows, n, k, -1.0, v, {w, 1, k}, c.at(0, j), c.ld);
  }
}

}  // namespace

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
  subtractProduct(panel_.count, {panel_.x, 1, panel_.ld}, {inverse_, kMostColumns, 1}, columns);
}

// The vectors in reverse order are those of Qᵀ.
void BlockReflector::apply(const Columns& columns) const {
  const Index last = panel_.count - 1;
  subtractProduct(panel_.count, {panel_.at(0, last), 1, -panel_.ld},
                  {inverse_ + last * (kMostColumns + 1), -1, -kMostColumns}, columns);
}

}  // namespace vxKilnBase::linpack
