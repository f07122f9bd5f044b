#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

double dot(Index n, const double* x, const double* y) {
  Vector sum0{}, sum1{}, sum2{}, sum3{};
  Index i = 0;
  for (; i + 4 * kWidth <= n; i += 4 * kWidth) {
    sum0 += load(x + i) * load(y + i);
    sum1 += load(x + i + kWidth) * load(y + i + kWidth);
    sum2 += load(x + i + 2 * kWidth) * load(y + i + 2 * kWidth);
    sum3 += load(x + i + 3 * kWidth) * load(y + i + 3 * kWidth);
  }
  for (; i + kWidth <= n; i += kWidth) sum0 += load(x + i) * load(y + i);
  double sum = sumOf((sum0 + sum1) + (sum2 + sum3));
  for (; i < n; ++i) sum += x[i] * y[i];
  return sum;
}

void axpy(Index n, double alpha, const double* x, double* y) {
  const Vector factor = splat(alpha);
  Index i = 0;
  for (; i + kWidth <= n; i += kWidth) store(y + i, load(y + i) + factor * load(x + i));
  for (; i < n; ++i) y[i] += alpha * x[i];
}

void scale(Index n, double alpha, double* x) {
  const Vector factor = splat(alpha);
  Index i = 0;
  for (; i + kWidth <= n; i += kWidth) store(x + i, factor * load(x + i));
  for (; i < n; ++i) x[i] *= alpha;
}

void gemv(Index m, Index n, double alpha, const double* a, Index lda, const double* x, double* y) {
  for (Index j = 0; j < n; ++j) axpy(m, alpha * x[j], a + j * lda, y);
}

void gemvTransposed(Index m, Index n, double alpha, const double* a, Index lda, const double* x,
                    double* y) {
  for (Index j = 0; j < n; ++j) y[j] += alpha * dot(m, a + j * lda, x);
}

void gemm(Index m, Index n, Index k, double alpha, MatrixView a, MatrixView b, double* c,
          Index ldc) {
  for (Index j = 0; j < n; ++j) {
    for (Index l = 0; l < k; ++l) {
      const double factor = alpha * b.data[l * b.rowStride + j * b.columnStride];
      const double* column = a.data + l * a.columnStride;
      for (Index i = 0; i < m; ++i) c[i + j * ldc] += factor * column[i * a.rowStride];
    }
  }
}

}  // namespace

extern const DenseKernels denseKernels = {dot, axpy, scale, gemv, gemvTransposed, gemm};

}  // namespace vxKilnBase::kernels::KILN_ISA
