#include <kilnbase/linalg/kernels/Simd.h>
#include <kilnbase/linalg/kernels/Tridiagonal.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// The step for neighbouring columns, from column j on.
template <int columns>
struct Columns {
  inline __attribute__((always_inline))
  Columns(Index j, double* a, Index lda, const TridiagonalStep& step)
      : first_(j), a_(a + j * lda), lda_(lda), step_(step) {
    for (int c = 0; c < columns; ++c) {
      v_[c] = splat(step.v[j + c]);
      w_[c] = splat(step.w[j + c]);
      x_[c] = splat(step.x[j + c]);
    }
  }

  // One register of rows. Where it meets the diagonal, elements above the diagonal count as 0, and
  // those on the diagonal once.
  template <bool meetsDiagonal>
  inline __attribute__((always_inline)) void rows(Index i) {
    const Vector vi = load(step_.v + i), wi = load(step_.w + i), xi = load(step_.x + i);
    Vector yi = load(step_.y + i);
    for (int c = 0; c < columns; ++c) {
      double* place = a_ + c * lda_ + i;
      Vector element = load(place) - (vi * w_[c] + wi * v_[c]);
      store(place, element);
      Vector below = element;
      if constexpr (meetsDiagonal) {
        element = lanesFrom(first_ + c - i, element, Vector{});
        below = lanesFrom(first_ + c + 1 - i, element, Vector{});
      }
      sums_[c] += element * xi;
      yi += below * x_[c];
    }
    store(step_.y + i, yi);
  }

  inline __attribute__((always_inline)) void finish() const {
    for (int c = 0; c < columns; ++c) step_.y[first_ + c] += sumOf(sums_[c]);
  }

  Index first_;
  double* a_;
  Index lda_;
  const TridiagonalStep& step_;
  Vector v_[columns], w_[columns], x_[columns], sums_[columns] = {};
};

// Columns writes to a. NOLINTBEGIN(readability-non-const-parameter)
template <int columns>
void stepColumns(Index j, Index end, double* a, Index lda, const TridiagonalStep& step) {
  Columns<columns> block(j, a, lda, step);
  Index i = j / kWidth * kWidth;
  for (; i < j + columns; i += kWidth) block.template rows<true>(i);
  for (; i < end; i += kWidth) block.template rows<false>(i);
  block.finish();
}
// NOLINTEND(readability-non-const-parameter)

void step(Index begin, Index end, double* a, Index lda, const TridiagonalStep& step) {
  Index j = begin;
  for (; j + 4 <= end; j += 4) stepColumns<4>(j, end, a, lda, step);
  for (; j < end; ++j) stepColumns<1>(j, end, a, lda, step);
}

}  // namespace

extern const TridiagonalKernels tridiagonalKernels = {step};

}  // namespace vxKilnBase::kernels::KILN_ISA
