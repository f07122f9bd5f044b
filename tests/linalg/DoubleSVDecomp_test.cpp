#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleSVDecomp.h>
#include <kilnbase/linalg/linpack/dsvdc.h>

#include "tests/support/Matrices.h"

namespace {

using namespace kilntest;

constexpr double kLargestRatio = 50.0;

using Shape = std::pair<unsigned, unsigned>;

DoubleGenMat leading(const DoubleGenMat& a, unsigned columns) {
  return DoubleGenMat(a.dataVec().slice(0, a.rows() * columns), a.rows(), columns);
}

// A = U S Vᵀ with orthogonal U and V.
void expectDecomposed(const DoubleGenMat& a, const DoubleSVDecomp& svd) {
  const unsigned values = svd.singularValues().length();
  DoubleGenMat us = leading(svd.leftVecs(), values).copy();
  for (unsigned j = 0; j < values; ++j) us.col(j) *= svd.singularValues()(j);
  const DoubleGenMat difference = a - transProduct(us, leading(svd.rightVecs(), values));
  EXPECT_LT(ratio(norm2(difference), norm2(a), std::max(a.rows(), a.cols())), kLargestRatio);
  EXPECT_LT(orthogonalityRatio(svd.leftVecs()), kLargestRatio);
  EXPECT_LT(orthogonalityRatio(svd.rightVecs()), kLargestRatio);
}

}  // namespace

TEST(DoubleSVDecomp, ReproducesTheMatrixFromOrthogonalFactors) {
  for (const auto& [name, a, condition] : testMatrices()) {
    SCOPED_TRACE(name);
    const unsigned m = a.rows(), n = a.cols(), values = std::min(m, n);
    const DoubleSVDecomp svd(a);
    ASSERT_EQ(values > 0, svd.good());
    EXPECT_EQ(Shape(m, n), Shape(svd.leftVecs().cols(), svd.rightVecs().cols()));
    EXPECT_EQ(DoubleVec(n, 0.0), svd.eValues());
    if (values == 0) continue;
    expectDecomposed(a, svd);
    const std::vector<double> found = list(svd.singularValues());
    EXPECT_TRUE(std::ranges::is_sorted(found, std::greater<>()));
    EXPECT_GE(found.back(), 0.0);
    for (unsigned i = 0; condition > 0.0 && i < values; ++i) {
      const double expected = values == 1 ? 1.0 : std::pow(condition, -1.0 * i / (values - 1));
      EXPECT_NEAR(expected, found[i], kLargestRatio * std::max(m, n) * kEpsilon);
    }
  }
}

// Powers of two leave all digits of a matrix alone, but for elements below 2^-1000.
TEST(DoubleSVDecomp, WorksNearUnderflowAndOverflow) {
  for (const int exponent : {-1070, -1020, -963, -500, 500, 963, 1020}) {
    for (const auto& [m, n] : {Shape{1, 3}, {5, 5}, {50, 30}, {30, 65}}) {
      SCOPED_TRACE(testing::Message() << exponent << " " << m << " by " << n);
      const double scale = std::ldexp(1.0, exponent);
      const DoubleGenMat a = randomMatrix(m, n, 6) * scale;
      const DoubleSVDecomp svd(a), reference(a / scale);
      EXPECT_EQ(reference.leftVecs(), svd.leftVecs());
      EXPECT_EQ(reference.rightVecs(), svd.rightVecs());
      EXPECT_EQ(reference.singularValues() * scale, svd.singularValues());
    }
  }
}

TEST(DoubleSVDecomp, GivesTheSameWhateverIsAskedFor) {
  for (const auto& [m, n] : {Shape{1, 5}, {3, 2}, {50, 10}, {130, 70}, {70, 71}}) {
    const DoubleGenMat a = randomMatrix(m, n, 7);
    const DoubleSVDecomp full(a);
    const double tolerance = kLargestRatio * std::max(m, n) * kEpsilon;
    for (const auto& [left, columns] : {std::pair{0, 0U}, {1, m}, {2, std::min(m, n)}}) {
      for (const int right : {0, 1}) {
        SCOPED_TRACE(testing::Message() << m << " by " << n << " job " << 10 * left + right);
        DoubleSVDecomp svd;
        svd.computeLeftVecs(left);
        svd.computeAllLeftVecs(left == 1);
        svd.computeRightVecs(right);
        svd.factor(a);
        ASSERT_EQ(Shape(columns, right * n), Shape(svd.leftVecs().cols(), svd.rightVecs().cols()));
        EXPECT_LT(norm2(svd.singularValues() - full.singularValues()), tolerance);
        const DoubleVec u = leading(full.leftVecs(), columns).dataVec(),
                        v = leading(full.rightVecs(), right * n).dataVec();
        EXPECT_LE(norm2(svd.leftVecs().dataVec() - u), tolerance);
        EXPECT_LE(norm2(svd.rightVecs().dataVec() - v), tolerance);
      }
    }
  }
}

// The signs are those of Householder vectors and rotations; where a value is negative, the column
// of V changes its sign.
TEST(DoubleSVDecomp, HasTheSignsOfTheMethodAndLeavesEarlierResultsAlone) {
  const DoubleGenMat a(vectorOf({3.0, 4.0}), 2, 1);
  DoubleSVDecomp tall(a);
  const DoubleSVDecomp copy(tall);
  tall.factor(a * -2.0);
  EXPECT_LE(norm2(copy.leftVecs().dataVec() - vectorOf({-0.6, -0.8, -0.8, 0.6})), 4 * kEpsilon);
  EXPECT_EQ(-1.0, copy.rightVecs()(0, 0));
  EXPECT_EQ(3.0, a(0, 0));
}

TEST(DoubleSVDecomp, FailsOnlyForNothingAndForElementsThatAreNotFinite) {
  EXPECT_TRUE(DoubleSVDecomp().fail());
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (const auto& [m, n] : {Shape{1, 1}, {1, 5}, {5, 1}, {3, 2}, {10, 50}, {130, 70}}) {
      DoubleGenMat a = randomMatrix(m, n, 8);
      a(m - 1, n / 2) = bad;
      const DoubleSVDecomp svd(a);
      EXPECT_TRUE(svd.fail());
      EXPECT_EQ(0, svd.numSVsFound());
      EXPECT_EQ(std::min(m, n), svd.singularValues().length());
      EXPECT_THAT(list(svd.leftVecs().dataVec()), testing::Each(testing::IsNan()));
    }
  }
  // Equal values: rounding alone can keep the iteration from ending, in about one of a hundred.
  for (unsigned i = 1; i <= 100; ++i) {
    EXPECT_TRUE(DoubleSVDecomp(matrixWithCondition(40 + i, 140 - i / 2, 1.0, i)).good()) << i;
  }
}

// The reference problems Wampler 3 to 5 with badly scaled columns: the residual is orthogonal to
// all columns, and coefficient j is 2 to the power -17 j.
static_assert(vxKilnBase::linpack::isTall(8, 5) && !vxKilnBase::linpack::isTall(79, 50));

TEST(DoubleSVDecomp, SolvesTallSystemsWithLargeResidualsAndBadlyScaledColumns) {
  const int residual[] = {759,   -2048, 2048,  -2048, 2523,  -2048, 2048,
                          -2048, 1838,  -2048, 2048,  -2048, 1838,  -2048,
                          2048,  -2048, 2523,  -2048, 2048,  -2048, 759};
  for (const double factor : {1.0, 100.0, 10000.0}) {
    DoubleGenMat a(21, 6);
    DoubleVec b(21);
    for (int i = 0; i < 21; ++i) {
      b(i) = factor * residual[i];
      for (int j = 0; j < 6; ++j) {
        a(i, j) = std::ldexp(std::pow(i, j), 17 * j);
        b(i) += std::pow(i, j);
      }
    }
    const DoubleSVDecomp svd(a);
    const DoubleVec x =
        product(svd.rightVecs(), product(b, leading(svd.leftVecs(), 6)) / svd.singularValues());
    for (int j = 0; j < 6; ++j) {
      EXPECT_NEAR(1.0, std::ldexp(x(j), 17 * j), factor * 1e-9) << factor << " " << j;
    }
  }
}

TEST(DoubleSVDecomp, TellsTheSettingBefore) {
  DoubleSVDecomp svd;
  // Asking for left vectors that are wanted already keeps their number. Asking for all of none has
  // no effect.
  const std::vector<int> before = {
      svd.computeAllLeftVecs(0), svd.computeLeftVecs(1),    svd.computeAllLeftVecs(1),
      svd.computeLeftVecs(0),    svd.computeAllLeftVecs(0), svd.computeLeftVecs(1),
      svd.computeAllLeftVecs(1), svd.computeRightVecs(0),   svd.computeRightVecs(1)};
  EXPECT_THAT(before, testing::ElementsAre(1, 1, 0, 1, 0, 0, 1, 1, 0));
}
