#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleLeastSqQR.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

namespace {

using namespace kilntest;
using namespace vxKilnBase;

TEST(DoubleLeastSqQR, ResidualsAreOrthogonalToTheColumns) {
  std::vector<TestMatrix> tests = testMatrices();
  tests.push_back({"high", matrixWithCondition(700, 130, 1e7, 2), 1e7});
  for (const auto& [name, a, condition] : tests) {
    SCOPED_TRACE(name);
    const unsigned m = a.rows(), n = a.cols();
    if (m == 0 || n == 0) continue;
    const DoubleLeastSqQR fit(a);
    const double scale = std::max(norm1(a), 1e-300);
    for (const unsigned count : {1U, 20U}) {
      const DoubleGenMat sides = randomMatrix(m, count, n), solutions = fit.solve(sides);
      const DoubleVec b = sides.col(count - 1), x = solutions.col(count - 1),
                      rest = fit.residual(sides).col(count - 1);
      ASSERT_LT(ratio(norm2(product(rest, a / scale)), norm2(b), std::max(m, n)), 30.0);
      ASSERT_EQ(n, x.length());
      if (condition == 0.0 && !std::isfinite(norm2(x))) continue;
      // b - A x differs from the residual by the rounding errors of A x.
      const double misfit = norm2(b - product(a, x) - rest);
      EXPECT_LT(misfit, 30.0 * kEpsilon * std::max(m, n) * (norm1(a) * norm2(x) + norm2(b)));
    }
  }
}

TEST(DoubleLeastSqQR, ToleranceDecidesWhichUnknownsAreFree) {
  DoubleGenMat a = randomMatrix(12, 5, 9);
  a.col(3) = a.col(0) + a.col(1);
  a.col(2) = a.col(4) * 2.0 + a.col(0);
  DoubleLeastSqQR fit(a);
  EXPECT_EQ(0.0, fit.setTolerance(1e-12));
  EXPECT_EQ(1e-12, fit.setTolerance(1e-11));
  EXPECT_TRUE(fit.isUnderDetermined());
  const DoubleVec b = product(a, randomVector(5, 6)), x = fit.solve(b);
  EXPECT_LT(norm2(product(a, x) - b), 1e-13);
  for (const int j : {3, 4}) EXPECT_EQ(0.0, x(fit.pivots()(j)));
  fit.factor(a);
  EXPECT_EQ(0.0, fit.setTolerance(0.0));
}

// Counts diagonal elements from the last one back, up to the first that exceeds the tolerance.
TEST(DoubleLeastSqQR, CountsFreeColumnsFromTheEnd) {
  const DoubleVec ones(4, 1.0);
  DoubleGenMat a(4, 4, 0.0);
  a.diagonal() = vectorOf({3.0, 0.25, 2.0, 0.5});
  DoubleLeastSqQR fit, wide(randomMatrix(2, 3, 1));
  fit.doPivoting(0);
  fit.factor(a);
  for (const auto& [tolerance, expected] :
       {std::pair{0.4, 0U}, {0.5, 1U}, {1.0, 1U}, {2.0, 3U}, {3.0, 4U}}) {
    fit.setTolerance(tolerance);
    EXPECT_EQ(expected, fit.numFreeCols()) << tolerance;
  }
  EXPECT_EQ(DoubleVec(4, 0.0), fit.solve(ones));
  EXPECT_EQ(ones, fit.residual(ones));
  a(1, 1) = 0.0;  // the columns from here on are not fitted
  fit.factor(a);
  EXPECT_FALSE(fit.isUnderDetermined());
  EXPECT_EQ(vectorOf({0.0, 1.0, 1.0, 1.0}), fit.residual(ones));
  EXPECT_EQ(vectorOf({0.0, 1.0, 1.0, 1.0}), fit.residual(DoubleGenMat(4, 9, 1.0)).col(8));
  EXPECT_EQ(1U, wide.numFreeCols());
  wide.setTolerance(100.0);
  EXPECT_EQ(3U, wide.numFreeCols());
}

TEST(DoubleLeastSqQR, MisuseIsReported) {
  const DoubleLeastSqQR wide(randomMatrix(2, 3, 1));
  const DoubleGenMat three(3, 2, 1.0);
  const std::string length = "b vector length wrong (3!=2)";
  expectErrors({
      {[&] { EXPECT_EQ(0U, wide.solve(three.col(0)).length()); }, kRightSideLengthError, length},
      {[&] { EXPECT_EQ(0U, wide.residual(three.col(0)).length()); }, kRightSideLengthError, length},
  });
}

}  // namespace
