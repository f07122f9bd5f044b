// The tridiagonal step beside plain loops.
#include <cmath>
#include <gtest/gtest.h>

#include <kilnbase/linalg/kernels/Kernels.h>

#include "tests/support/GuardedArray.h"

namespace {

using kilntest::Doubles;
using kilntest::Index;
using vxKilnBase::kernels::active;
using vxKilnBase::kernels::TridiagonalKernels;

void clear(Doubles& x, Index from, Index to) {
  for (Index i = from; i < to; ++i) x[i] = 0.0;
}

void expectStep(Index begin, Index n) {
  SCOPED_TRACE(testing::Message() << "rows " << begin << " to " << n - 1);
  constexpr Index kGroup = TridiagonalKernels::kRowGroup;
  const Index lda = (n + kGroup - 1) / kGroup * kGroup;
  Doubles a(lda, n, lda, 1), v(lda, 2), w(lda, 3), x(lda, 4), y(lda, 5);
  for (Doubles* each : {&v, &w, &x, &y}) clear(*each, n, lda);
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < j; ++i) a[i + j * lda] = std::nan("");
    clear(a, n + j * lda, (j + 1) * lda);
  }
  Doubles newA = a, newY = y;
  for (Index j = begin; j < n; ++j) {
    for (Index i = j; i < n; ++i) {
      const double element = newA[i + j * lda] -= v[i] * w[j] + w[i] * v[j];
      newY[i] += element * x[j];
      if (i != j) newY[j] += element * x[i];
    }
  }
  active().tridiagonal->step(begin, n, a.data(), lda, {v.data(), w.data(), x.data(), y.data()});
  EXPECT_EQ(y.difference(newY), "");
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < j; ++i) a[i + j * lda] = newA[i + j * lda];
  }
  EXPECT_EQ(a.difference(newA), "");
}

TEST(TridiagonalKernels, StepSubtractsAndMultiplies) {
  for (Index n = 1; n <= 3 * active().vectorDoubles + 5; ++n) {
    for (Index begin = 0; begin < n; ++begin) expectStep(begin, n);
  }
}

}  // namespace
