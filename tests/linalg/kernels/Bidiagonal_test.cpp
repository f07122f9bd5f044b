// The bidiagonal step and rotations of columns beside plain loops.
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include <kilnbase/linalg/kernels/Kernels.h>

#include "tests/support/GuardedArray.h"

namespace {

using kilntest::Doubles;
using kilntest::Index;
using vxKilnBase::kernels::active;
using vxKilnBase::kernels::BidiagonalStep;
using vxKilnBase::kernels::FusedSweeps;
using vxKilnBase::kernels::kFusedSweeps;

Index longest() {
  return 3 * active().vectorDoubles + 1;
}

// C := C - w fᵀ / divisor. Exact for whole numbers and a divisor that is a power of 2.
void plainUpdate(Index m, Index n, const double* w, const double* f, double divisor, double* c,
                 Index ldc) {
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < m; ++i) c[j * ldc + i] -= w[i] * (f[j] / divisor);
  }
}

// Cᵀ v.
Doubles plainProjections(Index m, Index n, const double* v, const double* c, Index ldc) {
  Doubles p(n);
  for (Index j = 0; j < n; ++j) {
    p[j] = 0.0;
    for (Index i = 0; i < m; ++i) p[j] += v[i] * c[j * ldc + i];
  }
  return p;
}

void expectStep(Index m, Index n, Index padding) {
  SCOPED_TRACE(testing::Message() << m << " by " << n << ", padding " << padding);
  const Index lda = m + padding;
  Doubles a(m, n, lda, 1), v(m, 2), w(m, 3), z(n, 4), work(m, 5);
  const double v0 = v[0] = 4.0, z0 = 2.0;
  const bool fromLeft = (m + n) % 3 != 0, fromRight = (m + n) % 4 != 0;
  Doubles newA = a, newZ = z, newWork = work;
  if (fromRight) plainUpdate(m, n, w.data(), z.data(), z0, newA.data(), lda);
  if (fromLeft) {
    const double* c = newA.data();
    plainUpdate(m, n, v.data(), plainProjections(m, n, v.data(), c, lda).data(), v0, newA.data(),
                lda);
  }
  for (Index j = 0; j < n; ++j) {
    newZ[j] = newA[j * lda];
    for (Index i = 0; i < m; ++i) newWork[i] += newA[j * lda + i] * newZ[j];
  }
  const BidiagonalStep step = {v.data(), fromLeft ? 1.0 / v0 : 0.0,
                               w.data(), fromRight ? 1.0 / z0 : 0.0,
                               z.data(), work.data()};
  active().bidiagonal->step(m, n, a.data(), lda, step);
  EXPECT_EQ(a.difference(newA), "");
  EXPECT_EQ(z.difference(newZ), "");
  EXPECT_EQ(work.difference(newWork), "");
}

TEST(BidiagonalKernels, StepAppliesBothReflections) {
  for (Index m = 1; m <= longest(); ++m) {
    for (Index n = 0; n <= longest(); ++n) {
      for (Index padding : {Index{0}, (m + n) % 8}) expectStep(m, n, padding);
    }
  }
}

TEST(BidiagonalKernels, LargestMagnitudeOrdersInfinityAboveAllNumbers) {
  const auto largestOf = [](const std::vector<double>& x) {
    const Index n = static_cast<Index>(x.size());
    return std::bit_cast<double>(active().bidiagonal->largestMagnitude(n, x.data()));
  };
  EXPECT_EQ(largestOf({}), 0.0);
  EXPECT_EQ(largestOf({1.0, -3.0, 2.0}), 3.0);
  EXPECT_EQ(largestOf({1.0, -INFINITY, 2.0}), INFINITY);
  EXPECT_TRUE(std::isnan(largestOf({INFINITY, -std::nan(""), 2.0})));
  for (Index n = 1; n <= longest(); ++n) {
    std::vector<double> x(static_cast<std::size_t>(n), 1.0);
    x.back() = -2.0;
    EXPECT_EQ(largestOf(x), 2.0) << n;
  }
}

// One rotation after the other.
void plainSweeps(Index m, double* x, Index ldx, const FusedSweeps& f) {
  for (Index i = 0; i < f.sweeps; ++i) {
    for (Index r = 0; r < f.rotations; ++r) {
      const double a = f.data[2 * i * f.ld + r], b = f.data[(2 * i + 1) * f.ld + r];
      for (Index row = 0; row < m; ++row) {
        double& left = x[r * ldx + row];
        double& right = x[(r + 1) * ldx + row];
        const double old = left;
        left += a * right;
        right -= b * old;
      }
    }
  }
  for (Index j = 0; j <= f.rotations; ++j) {
    for (Index row = 0; row < m; ++row) x[j * ldx + row] *= f.scale[j];
  }
}

TEST(RotationKernels, FusedSweepsEqualRotationsOneByOne) {
  for (Index m = 0; m <= 5 * active().vectorDoubles + 1; ++m) {
    for (Index rotations = 0; rotations <= 3 * kFusedSweeps; ++rotations) {
      for (Index sweeps = 0; sweeps <= kFusedSweeps; ++sweeps) {
        SCOPED_TRACE(testing::Message() << m << " rows, " << rotations << " rotations, " << sweeps);
        const Index ldx = m + 1, ld = rotations + 2;
        Doubles x(m, rotations + 1, ldx, 1), data(rotations, 2 * sweeps, ld, 2);
        Doubles scale(rotations + 1, 3);
        const FusedSweeps f = {sweeps, rotations, data.data(), ld, scale.data()};
        Doubles expected = x;
        plainSweeps(m, expected.data(), ldx, f);
        active().rotations->applySweeps(m, x.data(), ldx, f);
        EXPECT_EQ(x.difference(expected), "");
      }
    }
  }
}

}  // namespace
