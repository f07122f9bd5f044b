#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/BlockReflector.h>

namespace vxKilnBase::linpack {

using kernels::active;

namespace {

// C -= V L⁻¹ Vᵀ C, where V has k columns.
void subtractProduct(Index k, kernels::MatrixView v, kernels::MatrixView l, const Submatrix& c) {
  constexpr Index kSlice = kernels::tuning::kReflectedSlice;
  const auto& dense = *active().dense;
  double w[BlockReflector::kMostColumns * kSlice];
  for (Index j = 0; j < c.columns; j += kSlice) {
    const Index n = std::min(kSlice, c.columns - j);
    std::fill_n(w, k * n, 0.0);
    dense.gemm(k, n, c.rows, 1.0, {v.data, v.columnStride, 1}, {c.at(0, j), 1, c.ld}, w, k);
    dense.solveLower(k, n, l, w, k);
    dense.gemm(c.rows, n, k, -1.0, v, {w, 1, k}, c.at(0, j), c.ld);
  }
}

}  // namespace

BlockReflector::BlockReflector(const Submatrix& panel, const double* qraux) : panel_(panel) {
  for (Index j = 0; j < panel_.columns; ++j) {
    for (Index i = 0; i < j; ++i) {
      inverse(j, i) = std::exchange(*panel_.at(i, j), 0.0);
      inverse(i, j) = 0.0;
    }
    diagonal_[j] = std::exchange(*panel_.at(j, j), qraux[j]);
  }
  active().dense->syrkUpper(panel_.columns, panel_.rows, 1.0, {panel_.x, panel_.ld, 1},
                            {panel_.x, 1, panel_.ld}, inverse_, kMostColumns);
  // Where there is no reflection, v = 0 and any number but 0 serves.
  for (Index j = 0; j < panel_.columns; ++j) inverse(j, j) = qraux[j] != 0.0 ? qraux[j] : 1.0;
}

BlockReflector::~BlockReflector() {
  for (Index j = 0; j < panel_.columns; ++j) {
    for (Index i = 0; i < j; ++i) *panel_.at(i, j) = inverse(j, i);
    *panel_.at(j, j) = diagonal_[j];
  }
}

// Qᵀ = I − V Tᵀ Vᵀ, and T⁻ᵀ is lower triangular.
void BlockReflector::applyTransposed(const Submatrix& c) const {
  subtractProduct(panel_.columns, {panel_.x, 1, panel_.ld}, {inverse_, kMostColumns, 1}, c);
}

// With the order of the columns of V reversed, T⁻¹ is lower triangular too.
void BlockReflector::apply(const Submatrix& c) const {
  const Index last = panel_.columns - 1;
  subtractProduct(panel_.columns, {panel_.at(0, last), 1, -panel_.ld},
                  {inverse_ + last * (kMostColumns + 1), -1, -kMostColumns}, c);
}

}  // namespace vxKilnBase::linpack
