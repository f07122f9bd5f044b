#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/MatrixVector.h>
#include <kilnbase/linalg/kernels/Product.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// When n is no multiple of kWidth, the last register starts at n - kWidth and overlaps the one
// before. In `axpy` and `scale` its new values are computed from the old elements, before the loop.

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
  if (i < n && n >= kWidth) {
    const Index last = n - kWidth;
    sum1 += lanesFrom(i - last, load(x + last) * load(y + last), Vector{});
    i = n;
  }
  double sum = sumOf((sum0 + sum1) + (sum2 + sum3));
  for (; i < n; ++i) sum += x[i] * y[i];
  return sum;
}

void axpy(Index n, double alpha, const double* x, double* y) {
  if (n < kWidth) {
    for (Index i = 0; i < n; ++i) y[i] += alpha * x[i];
    return;
  }
  const Vector factor = splat(alpha);
  const Index last = n - kWidth;
  const Vector end = load(y + last) + factor * load(x + last);
  for (Index i = 0; i < last; i += kWidth) store(y + i, load(y + i) + factor * load(x + i));
  store(y + last, end);
}

void scale(Index n, double alpha, double* x) {
  if (n < kWidth) {
    for (Index i = 0; i < n; ++i) x[i] *= alpha;
    return;
  }
  const Vector factor = splat(alpha);
  const Index last = n - kWidth;
  const Vector end = factor * load(x + last);
  for (Index i = 0; i < last; i += kWidth) store(x + i, factor * load(x + i));
  store(x + last, end);
}

}  // namespace

extern const DenseKernels denseKernels = {.dot = dot,
                                          .axpy = axpy,
                                          .scale = scale,
                                          .gemv = gemv,
                                          .gemvTransposed = gemvTransposed,
                                          .gemm = gemm,
                                          .productVector = productVector,
                                          .productVectorTransposed = productVectorTransposed,
                                          .product = product,
                                          .syrkUpper = syrkUpper,
                                          .solveLower = solveLower};

}  // namespace vxKilnBase::kernels::KILN_ISA
