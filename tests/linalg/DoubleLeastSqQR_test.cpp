#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleLeastSqQR.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

namespace {

using namespace kilntest;
using testing::ElementsAre;

TEST(DoubleLeastSqQR, ResidualsAreOrthogonalToTheColumns) {
  std::vector<TestMatrix> tests = testMatrices();
  tests.push_back({"high", matrixWithCondition(700, 130, 1e7, 2), 1e7});
  for (const auto& [name, a, condition] : tests) {
    SCOPED_TRACE(name);
    const unsigned m = a.rows(), n = a.cols();
    if (m == 0 || n == 0) continue;
    const DoubleVec b = randomVector(m, n);
    const DoubleLeastSqQR fit(a);
    const double scale = std::max(norm1(a), 1e-300);
    ASSERT_LT(ratio(norm2(product(fit.residual(b), a / scale)), norm2(b), std::max(m, n)), 30.0);
    // A solution is as good as its residual where the unknowns are not huge.
    const DoubleVec x = fit.solve(b);
    ASSERT_EQ(n, x.length());
    if (condition == 0.0 && !std::isfinite(norm2(x))) continue;
    const double misfit = norm2(b - product(a, x) - fit.residual(b));
    EXPECT_LT(misfit, 30.0 * kEpsilon * std::max(m, n) * (norm1(a) * norm2(x) + norm2(b)));
  }
}

TEST(DoubleLeastSqQR, ToleranceDecidesWhichUnknownsAreFree) {
  DoubleGenMat a = randomMatrix(12, 5, 9);
  a.col(3) = a.col(0) + a.col(1);
  a.col(2) = a.col(4) * 2.0 + a.col(0);
  DoubleLeastSqQR fit(a);
  const DoubleVec b = product(a, randomVector(5, 6));
  EXPECT_EQ(0.0, fit.setTolerance(1e-12));
  EXPECT_EQ(1e-12, fit.setTolerance(1e-11));
  EXPECT_TRUE(fit.numFreeCols() == 2 && fit.isUnderDetermined());
  const DoubleVec x = fit.solve(b);
  EXPECT_LT(norm2(product(a, x) - b), 1e-13);
  EXPECT_LT(norm2(fit.residual(b)), 1e-13);
  for (const int j : {3, 4}) EXPECT_EQ(0.0, x(fit.pivots()(j)));

  fit.factor(randomMatrix(12, 5, 9));
  EXPECT_EQ(0.0, fit.setTolerance(0.0));
  EXPECT_FALSE(fit.isUnderDetermined());
}

// Only the diagonal elements at the end count, equality included.
TEST(DoubleLeastSqQR, CountsFreeColumnsFromTheEnd) {
  DoubleGenMat a(4, 4, 0.0);
  a.diagonal() = vectorOf({3.0, 0.25, 2.0, 0.5});
  DoubleLeastSqQR fit;
  fit.doPivoting(0);
  fit.factor(a);
  for (const auto& [tolerance, expected] :
       {std::pair{0.0, 0U}, {0.4, 0U}, {0.5, 1U}, {1.0, 1U}, {2.0, 3U}, {3.0, 4U}}) {
    fit.setTolerance(tolerance);
    EXPECT_EQ(expected, fit.numFreeCols()) << tolerance;
  }
  EXPECT_EQ(DoubleVec(4, 0.0), fit.solve(DoubleVec(4, 1.0)));
  EXPECT_EQ(DoubleVec(4, 1.0), fit.residual(DoubleVec(4, 1.0)));
  a(1, 1) = 0.0;  // nothing behind it is fitted
  fit.setTolerance(0.0);
  fit.factor(a);
  EXPECT_EQ(vectorOf({0.0, 1.0, 1.0, 1.0}), fit.residual(DoubleVec(4, 1.0)));

  DoubleLeastSqQR wide(randomMatrix(2, 3, 1));
  EXPECT_EQ(1U, wide.numFreeCols());
  wide.setTolerance(100.0);
  EXPECT_EQ(3U, wide.numFreeCols());
}

TEST(DoubleLeastSqQR, MisuseIsReported) {
  RecordedMathErrors errors;
  const DoubleLeastSqQR wide(randomMatrix(2, 3, 1));
  EXPECT_EQ(0U, wide.solve(DoubleVec(3, 1.0)).length());
  EXPECT_EQ(0U, wide.residual(DoubleVec(3, 1.0)).length());
  const DoubleLeastSqQR none(DoubleGenMat(2, 0));
  EXPECT_EQ(0U, none.solve(DoubleVec(2, 1.0)).length());
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre("b vector length wrong (3!=2)", "b vector length wrong (3!=2)",
                          "Can't solve system of equations, matrix not successfully factorized"));
  EXPECT_EQ(DoubleVec(2, 1.0), none.residual(DoubleVec(2, 1.0)));
}

}  // namespace
