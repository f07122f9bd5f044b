#include <kilnbase/linalg/kernels/Bidiagonal.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// kColumns neighbouring columns of a matrix of m rows.
template <int kColumns>
struct Columns {
  Index m;
  double* x;
  Index ldx;

  double* operator[](int j) const { return x + j * ldx; }
};

// X += w factorᵀ; sums receives vᵀ X.
template <int kColumns>
void updateAndDot(Columns<kColumns> x, const double* w, const double* factor, const double* v,
                  double* sums) {
  Vector factors[kColumns], partial[kColumns] = {};
  for (int j = 0; j < kColumns; ++j) {
    factors[j] = splat(factor[j]);
    sums[j] = 0.0;
  }
  Index i = 0;
  for (; i + kWidth <= x.m; i += kWidth) {
    const Vector wi = load(w + i), vi = load(v + i);
    for (int j = 0; j < kColumns; ++j) {
      const Vector xi = load(x[j] + i) + factors[j] * wi;
      store(x[j] + i, xi);
      partial[j] += xi * vi;
    }
  }
  for (; i < x.m; ++i) {
    for (int j = 0; j < kColumns; ++j) {
      x[j][i] += factor[j] * w[i];
      sums[j] += x[j][i] * v[i];
    }
  }
  for (int j = 0; j < kColumns; ++j) sums[j] += sumOf(partial[j]);
}

// X += v factorᵀ; work += X row.
template <int kColumns>
void updateAndGather(Columns<kColumns> x, const double* v, const double* factor, const double* row,
                     double* work) {
  Vector factors[kColumns], rows[kColumns];
  for (int j = 0; j < kColumns; ++j) {
    factors[j] = splat(factor[j]);
    rows[j] = splat(row[j]);
  }
  Index i = 0;
  for (; i + kWidth <= x.m; i += kWidth) {
    const Vector vi = load(v + i);
    Vector sum = load(work + i);
    for (int j = 0; j < kColumns; ++j) {
      const Vector xi = load(x[j] + i) + factors[j] * vi;
      store(x[j] + i, xi);
      sum += xi * rows[j];
    }
    store(work + i, sum);
  }
  for (; i < x.m; ++i) {
    for (int j = 0; j < kColumns; ++j) {
      x[j][i] += factor[j] * v[i];
      work[i] += x[j][i] * row[j];
    }
  }
}

template <int kColumns>
void stepColumns(Columns<kColumns> x, const BidiagonalStep& step, double* e) {
  double factor[kColumns], sums[kColumns];
  for (int j = 0; j < kColumns; ++j) factor[j] = -step.wFactor * e[j];
  updateAndDot(x, step.w, factor, step.v, sums);
  for (int j = 0; j < kColumns; ++j) {
    factor[j] = -step.vFactor * sums[j];
    e[j] = x[j][0] + factor[j] * step.v[0];
  }
  updateAndGather(x, step.v, factor, e, step.work);
}

void step(Index m, Index n, double* x, Index ldx, const BidiagonalStep& step) {
  Index j = 0;
  for (; j + 4 <= n; j += 4) stepColumns(Columns<4>{m, x + j * ldx, ldx}, step, step.e + j);
  for (; j < n; ++j) stepColumns(Columns<1>{m, x + j * ldx, ldx}, step, step.e + j);
}

template <int kColumns>
void reflectColumns(Columns<kColumns> x, const double* v, double factor) {
  Vector partial[kColumns] = {};
  double sums[kColumns] = {};
  Index i = 0;
  for (; i + kWidth <= x.m; i += kWidth)
    for (int j = 0; j < kColumns; ++j) partial[j] += load(x[j] + i) * load(v + i);
  for (; i < x.m; ++i)
    for (int j = 0; j < kColumns; ++j) sums[j] += x[j][i] * v[i];
  for (int j = 0; j < kColumns; ++j) sums[j] = -factor * (sums[j] + sumOf(partial[j]));
  for (i = 0; i + kWidth <= x.m; i += kWidth)
    for (int j = 0; j < kColumns; ++j) store(x[j] + i, load(x[j] + i) + sums[j] * load(v + i));
  for (; i < x.m; ++i)
    for (int j = 0; j < kColumns; ++j) x[j][i] += sums[j] * v[i];
}

void reflect(Index m, Index n, const double* v, double factor, double* x, Index ldx) {
  Index j = 0;
  for (; j + 4 <= n; j += 4) reflectColumns(Columns<4>{m, x + j * ldx, ldx}, v, factor);
  for (; j < n; ++j) reflectColumns(Columns<1>{m, x + j * ldx, ldx}, v, factor);
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

extern const BidiagonalKernels bidiagonalKernels = {step, reflect, largestMagnitude};

}  // namespace vxKilnBase::kernels::KILN_ISA
