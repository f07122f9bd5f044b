#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/reflector.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;
using kernels::MatrixView;

// A norm outside these bounds, or its reciprocal, may lack digits: the vector is scaled first.
constexpr double kLeastPreciseNorm = 0x1p-900;
constexpr double kGreatestPreciseNorm = 0x1p1000;
constexpr double kMagnification = 0x1p500;

constexpr Index kBlock = 32;  // reflections that are applied together
constexpr Index kChunk = 32;  // columns that they are applied to at a time

// From this many reflections on, blocks are worth their overhead.
constexpr Index kBlockedFrom = 64;

double reciprocalOrZero(double x) {
  return x == 0.0 ? 0.0 : 1.0 / x;
}

// The product of `count` reflections as I - W T Wᵀ with an upper triangular T.
class AccumulatedReflections {
 public:
  // W is `w`, n by count; what stands above its diagonal is cleared.
  AccumulatedReflections(Index n, Index count, double* w, Index ldw)
      : n_(n), count_(count), w_{w, 1, ldw}, wTransposed_{w, ldw, 1} {
    for (Index l = 0; l < count; ++l) std::fill_n(w + l * ldw, l, 0.0);
    std::fill_n(triangle_, count * count, 0.0);
    kernels::active().dense->gemm(count, count, n, 1.0, wTransposed_, w_, triangle_, count);
    formTriangle(w, ldw);
  }

  // Applies the reflections to the n by `columns` matrix C.
  void apply(Index columns, double* c, Index ldc) const {
    const auto gemm = kernels::active().dense->gemm;
    double projection[kBlock * kChunk], product[kBlock * kChunk];
    for (Index j = 0; j < columns; j += kChunk) {
      const Index width = std::min(kChunk, columns - j);
      double* chunk = c + j * ldc;
      std::fill_n(projection, count_ * width, 0.0);
      std::fill_n(product, count_ * width, 0.0);
      gemm(count_, width, n_, 1.0, wTransposed_, {chunk, 1, ldc}, projection, count_);
      gemm(count_, width, count_, 1.0, {triangle_, 1, count_}, {projection, 1, count_}, product,
           count_);
      gemm(n_, width, count_, -1.0, w_, {product, 1, count_}, chunk, ldc);
    }
  }

 private:
  // Turns Wᵀ W into T, column by column: t = -τ T wᵀ W above the diagonal, τ = 1 / w₀ on it.
  void formTriangle(const double* w, Index ldw) {
    for (Index l = 0; l < count_; ++l) {
      double* column = triangle_ + l * count_;
      const double factor = reciprocalOrZero(w[l + l * ldw]);
      for (Index i = 0; i < l; ++i) {
        double sum = 0.0;
        for (Index k = i; k < l; ++k) sum += triangle_[i + k * count_] * column[k];
        column[i] = -factor * sum;
      }
      column[l] = factor;
      std::fill(column + l + 1, column + count_, 0.0);
    }
  }

  Index n_;
  Index count_;
  MatrixView w_;
  MatrixView wTransposed_;
  double triangle_[kBlock * kBlock];
};

// The same as formOrthogonal, one reflection at a time, for columns from `reflectors` on that hold
// the product's effect already.
void formColumns(Index n, Index columns, Index reflectors, double* q, Index ldq) {
  for (Index l = reflectors - 1; l >= 0; --l) {
    double* v = q + l + l * ldq;
    const double factor = reciprocalOrZero(v[0]);
    kernels::active().bidiagonal->reflect(n - l, columns - l - 1, v, factor, v + ldq, ldq);
    for (Index i = 0; i < n - l; ++i) v[i] = -v[i];
    v[0] += 1.0;
    std::fill(q + l * ldq, v, 0.0);
  }
}

}  // namespace

double makeReflector(std::ptrdiff_t n, double* x) {
  const auto scale = kernels::active().dense->scale;
  double norm = dnrm2(n, x, 1);
  if (norm == 0.0) return 0.0;
  double magnification = 1.0;
  if (norm < kLeastPreciseNorm) magnification = kMagnification;
  if (norm > kGreatestPreciseNorm) magnification = 1.0 / kMagnification;
  if (magnification != 1.0) {
    scale(n, magnification, x);
    norm = dnrm2(n, x, 1);
  }
  if (x[0] < 0.0) norm = -norm;
  scale(n, 1.0 / norm, x);
  x[0] += 1.0;
  return -norm / magnification;
}

void formOrthogonal(std::ptrdiff_t n, std::ptrdiff_t columns, std::ptrdiff_t reflectors, double* q,
                    std::ptrdiff_t ldq) {
  for (Index j = reflectors; j < columns; ++j) {
    std::fill_n(q + j * ldq, n, 0.0);
    q[j + j * ldq] = 1.0;
  }
  const Index block = reflectors < kBlockedFrom ? reflectors : kBlock;
  for (Index end = reflectors; end > 0;) {
    const Index begin = (end - 1) / block * block;
    double* corner = q + begin + begin * ldq;
    const Index count = end - begin;
    if (end < columns && block == kBlock)
      AccumulatedReflections(n - begin, count, corner, ldq)
          .apply(columns - end, corner + count * ldq, ldq);
    formColumns(n - begin, block == kBlock ? count : columns - begin, count, corner, ldq);
    for (Index j = begin; j < end; ++j) std::fill_n(q + j * ldq, begin, 0.0);
    end = begin;
  }
}

}  // namespace vxKilnBase::linpack
