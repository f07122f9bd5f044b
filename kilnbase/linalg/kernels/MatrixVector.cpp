// Matrix times vector, several columns at a time, so that the vector that the rows share is read or
// written once for all of them.
#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/MatrixVector.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// Σ of a register's worth of rows of A times the factors, in two chains of additions.
template <Index columns>
inline __attribute__((always_inline)) Vector combine(const double* a, Index lda,
                                                     const Vector* factors) {
  Vector even = load(a) * factors[0], odd{};
  for (Index j = 1; j < columns; ++j) {
    (j % 2 == 0 ? even : odd) += load(a + j * lda) * factors[j];
  }
  return columns == 1 ? even : even + odd;
}

// y += alpha A x for this number of columns.
template <Index columns>
void addColumns(Index m, double alpha, const double* a, Index lda, const double* x, double* y) {
  Vector factors[columns];
  for (Index j = 0; j < columns; ++j) factors[j] = splat(alpha * x[j]);
  Index i = 0;
  for (; i + kWidth <= m; i += kWidth) {
    store(y + i, load(y + i) + combine<columns>(a + i, lda, factors));
  }
  if (i < m && m >= kWidth) {
    const Index last = m - kWidth;
    const Vector old = load(y + last);
    store(y + last, lanesFrom(i - last, old + combine<columns>(a + last, lda, factors), old));
    return;
  }
  for (; i < m; ++i) {
    for (Index j = 0; j < columns; ++j) y[i] += a[j * lda + i] * factors[j][0];
  }
}

// y += alpha Aᵀ x for this number of columns.
template <Index columns>
void addDots(Index m, double alpha, const double* a, Index lda, const double* x, double* y) {
  constexpr Index kSums = (columns + kWidth - 1) / kWidth * kWidth;
  Vector sums[kSums] = {};
  Index i = 0;
  for (; i + kWidth <= m; i += kWidth) {
    const Vector part = load(x + i);
    for (Index j = 0; j < columns; ++j) sums[j] += load(a + j * lda + i) * part;
  }
  if (i < m && m >= kWidth) {
    const Index last = m - kWidth;
    const Vector part = load(x + last);
    for (Index j = 0; j < columns; ++j) {
      sums[j] += lanesFrom(i - last, load(a + j * lda + last) * part, Vector{});
    }
    i = m;
  }
  for (; i < m; ++i) {
    for (Index j = 0; j < columns; ++j) sums[j][0] += a[j * lda + i] * x[i];
  }
  for (Index j = 0; j < columns; j += kWidth) {
    const Vector dots = splat(alpha) * sumsOf(sums + j);
    if (j + kWidth <= columns) {
      store(y + j, load(y + j) + dots);
    } else {
      for (Index l = j; l < columns; ++l) y[l] += dots[l - j];
    }
  }
}

}  // namespace

void gemv(Index m, Index n, double alpha, const double* a, Index lda, const double* x, double* y) {
  Index j = 0;
  for (; j + 8 <= n; j += 8) addColumns<8>(m, alpha, a + j * lda, lda, x + j, y);
  for (; j + 4 <= n; j += 4) addColumns<4>(m, alpha, a + j * lda, lda, x + j, y);
  for (; j < n; ++j) addColumns<1>(m, alpha, a + j * lda, lda, x + j, y);
}

void gemvTransposed(Index m, Index n, double alpha, const double* a, Index lda, const double* x,
                    double* y) {
  Index j = 0;
  for (; j + 8 <= n; j += 8) addDots<8>(m, alpha, a + j * lda, lda, x, y + j);
  for (; j + 4 <= n; j += 4) addDots<4>(m, alpha, a + j * lda, lda, x, y + j);
  for (; j < n; ++j) addDots<1>(m, alpha, a + j * lda, lda, x, y + j);
}

}  // namespace vxKilnBase::kernels::KILN_ISA
