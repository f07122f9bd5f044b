// Rotations of columns beside plain loops.
#include <gtest/gtest.h>

#include <kilnbase/linalg/kernels/Kernels.h>

#include "tests/support/GuardedArray.h"

namespace {

using kilntest::Doubles;
using kilntest::Index;
using vxKilnBase::kernels::active;
using vxKilnBase::kernels::FusedSweeps;
using vxKilnBase::kernels::kFusedSweeps;

TEST(RotationKernels, RotateEveryLength) {
  for (Index n = 0; n <= 3 * active().vectorDoubles + 1; ++n) {
    Doubles x(n, 1), y(n, 2);
    Doubles newX = x, newY = y;
    for (Index i = 0; i < n; ++i) {
      newX[i] = 3.0 * x[i] + 5.0 * y[i];
      newY[i] = 3.0 * y[i] - 5.0 * x[i];
    }
    active().rotations->rotate(n, x.data(), y.data(), 3.0, 5.0);
    EXPECT_EQ(x.difference(newX), "") << n;
    EXPECT_EQ(y.difference(newY), "") << n;
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
