#include <kilnbase/linalg/kernels/Bidiagonal.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// C := A + w fᵀ in this number of columns; dots := Cᵀ v.
template <int columns>
void updateAndDot(Index m, double* a, Index lda, const double* w, const double* f, const double* v,
                  double* dots) {
  Vector factors[columns], sums[columns] = {};
  for (int j = 0; j < columns; ++j) {
    factors[j] = splat(f[j]);
    dots[j] = 0.0;
  }
  Index i = 0;
  for (; i + kWidth <= m; i += kWidth) {
    const Vector wi = load(w + i), vi = load(v + i);
    for (int j = 0; j < columns; ++j) {
      const Vector c = load(a + j * lda + i) + factors[j] * wi;
      store(a + j * lda + i, c);
      sums[j] += c * vi;
    }
  }
  for (; i < m; ++i) {
    for (int j = 0; j < columns; ++j) {
      a[j * lda + i] += f[j] * w[i];
      dots[j] += a[j * lda + i] * v[i];
    }
  }
  for (int j = 0; j < columns; ++j) dots[j] += sumOf(sums[j]);
}

// A := C + v fᵀ in this number of columns; work += A z.
template <int columns>
void updateAndGather(Index m, double* a, Index lda, const double* v, const double* f,
                     const double* z, double* work) {
  Vector factors[columns], weights[columns];
  for (int j = 0; j < columns; ++j) {
    factors[j] = splat(f[j]);
    weights[j] = splat(z[j]);
  }
  Index i = 0;
  for (; i + kWidth <= m; i += kWidth) {
    const Vector vi = load(v + i);
    Vector sum = load(work + i);
    for (int j = 0; j < columns; ++j) {
      const Vector c = load(a + j * lda + i) + factors[j] * vi;
      store(a + j * lda + i, c);
      sum += c * weights[j];
    }
    store(work + i, sum);
  }
  for (; i < m; ++i) {
    for (int j = 0; j < columns; ++j) {
      a[j * lda + i] += f[j] * v[i];
      work[i] += a[j * lda + i] * z[j];
    }
  }
}

// The step for columns whose elements of z begin at `z`.
template <int columns>
void stepColumns(Index m, double* a, Index lda, const BidiagonalStep& step, double* z) {
  double f[columns], dots[columns];
  for (int j = 0; j < columns; ++j) f[j] = -step.wFactor * z[j];
  updateAndDot<columns>(m, a, lda, step.w, f, step.v, dots);
  for (int j = 0; j < columns; ++j) {
    f[j] = -step.vFactor * dots[j];
    z[j] = a[j * lda] + f[j] * step.v[0];
  }
  updateAndGather<columns>(m, a, lda, step.v, f, z, step.work);
}

void step(Index m, Index n, double* a, Index lda, const BidiagonalStep& step) {
  Index j = 0;
  for (; j + 4 <= n; j += 4) stepColumns<4>(m, a + j * lda, lda, step, step.z + j);
  for (; j < n; ++j) stepColumns<1>(m, a + j * lda, lda, step, step.z + j);
}

std::uint64_t largestMagnitude(Index n, const double* x) {
  std::uint64_t largest = 0;
  for (Index i = 0; i < n; ++i) {
    const std::uint64_t bits = __builtin_bit_cast(std::uint64_t, x[i]) & 0x7FFFFFFFFFFFFFFF;
    largest = bits > largest ? bits : largest;
  }
  return largest;
}

}  // namespace

extern const BidiagonalKernels bidiagonalKernels = {step, largestMagnitude};

}  // namespace vxKilnBase::kernels::KILN_ISA
