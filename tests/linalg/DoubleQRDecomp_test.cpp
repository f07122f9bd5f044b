#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleQRDecomp.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

namespace {

using namespace kilntest;
using namespace vxKilnBase;
using testing::ElementsAre;

using Shape = std::pair<unsigned, unsigned>;

constexpr double kMostRatio = 30.0;

DoubleQRDecomp factored(const DoubleGenMat& a, int pivoting) {
  DoubleQRDecomp qr;
  EXPECT_EQ(1, qr.doPivoting(pivoting));
  qr.factor(a);
  return qr;
}

TEST(DoubleQRDecomp, FactorsAndSolutionsAreExactToRounding) {
  std::vector<TestMatrix> tests = testMatrices();
  // Large matrices: several tiles of rows, several blocks of columns, too many columns for delayed
  // transformations.
  for (const auto& [m, n] : {Shape{300, 280}, {520, 510}, {5000, 30}, {300, 1300}, {9, 7000}}) {
    tests.push_back({"big", randomMatrix(m, n, 7)});
  }
  // R has fewer digits, Q is orthogonal all the same.
  for (const auto& [m, n] : {Shape{2, 1}, {5, 5}, {50, 130}, {130, 50}}) {
    tests.push_back({"subnormal", randomMatrix(m, n, 7) * 1e-315});
  }
  // Columns that nearly depend on others make the norms cancel over and over.
  tests.push_back({"cancelling", matrixWithCondition(260, 260, 1e15, 11)});
  DoubleGenMat& last = tests.back().a;
  for (int j = 1; j < 260; j += 2) last.col(j) = last.col(j - 1) + last.col(j) * 1e-9;
  for (const auto& [name, a, condition] : tests) {
    for (const int pivoting : {0, 1}) {
      SCOPED_TRACE(name + (pivoting != 0 ? ", pivoted" : ""));
      const unsigned m = a.rows(), n = a.cols();
      const DoubleQRDecomp qr = factored(a, pivoting);
      const DoubleVec y = randomVector(m, 5), back = qr.computeQTy(qr.computeQy(y, n), n);
      ASSERT_LT(ratio(norm2(back - y), norm2(y), m), kMostRatio);
      if (name == "subnormal") continue;
      const DoubleGenMat r = qr.copy();
      for (unsigned i = 1; i < m; ++i) r.row(i).slice(0, std::min(i, n)) = 0.0;
      DoubleGenMat error = r.copy();
      for (unsigned j = 0; j < n; ++j) error.col(j) -= qr.computeQTy(a.col(qr.pivots()(j)), n);
      ASSERT_LT(ratio(norm1(error), norm1(a), m), kMostRatio);
      const bool easy = condition == 1.0 || condition == 2.0;
      // |R(k, k)| is at least the norm of rows k..m-1 of each later column, up to the errors of the
      // norms that choose the columns: hardly any for well conditioned matrices, most of a digit
      // where the norms shrink to the last digits of their formula, the square root of the rounding
      // errors where the norms cancel. Columns below the rounding errors of R have no order.
      const double slack = easy ? 1e-6 : 9.0, unit = name == "cancelling" ? 1e-7 : kEpsilon,
                   noise = unit * norm1(r);
      for (unsigned k = 0; pivoting != 0 && k < std::min(m, n); ++k) {
        for (unsigned j = k + 1; j < n; ++j) {
          const double rest = norm2(r.col(j).slice(k, m - k));
          ASSERT_GE(std::abs(r(k, k)) * (1.0 + slack) + noise, rest) << k << ", " << j;
        }
      }
    }
  }
}

// Column 1 has no rest after column 2, but its rounded norm is not 0. Whether the norm is computed
// afresh depends on the first norm of column 1, not on that of column 2, whose place it takes.
TEST(DoubleQRDecomp, PivotsByTrueNormsWhereTheyCancel) {
  DoubleGenMat last(4, 4, 0.0);
  last.row(0) = vectorOf({2.0, 1.0, 0.0, 0.0});
  last.row(1) = vectorOf({0.0, std::sqrt(91.5 * kEpsilon), 2e-7, 0.0});
  last(2, 3) = 1e-9;
  for (const double scale : {1.0, 0x1p-500, 0x1p510})  // the squares of the last two are no doubles
    EXPECT_THAT(list(DoubleQRDecomp(last * scale).pivots()), ElementsAre(0, 2, 3, 1)) << scale;
}

TEST(DoubleQRDecomp, LayoutIsTheHouseholderVectorsBelowR) {
  // R(0, 0) has the sign opposite to that of the first element, the vector is (1.6, 0.8), and the
  // last row has no transformation.
  const DoubleQRDecomp qr = factored(DoubleGenMat(vectorOf({3.0, 4.0, 0.0, 2.0}), 2, 2), 0);
  EXPECT_LT(norm2(qr.dataVec() - vectorOf({-5.0, 0.8, -1.6, 1.2})), 1e-15);
  const DoubleGenMat minusZero(vectorOf({-0.0, 3.0}), 2, 1);
  EXPECT_DOUBLE_EQ(-3.0, factored(minusZero, 0)(0, 0));  // -0 counts as positive
  EXPECT_EQ(-7.0, factored(DoubleGenMat(1, 1, -7.0), 1)(0, 0));
}

TEST(DoubleQRDecomp, FactorsAnewAndLeavesEarlierViewsAlone) {
  const DoubleGenMat a = randomMatrix(20, 12, 1), b = randomMatrix(15, 12, 2);
  DoubleQRDecomp qr(a);
  const DoubleQRDecomp shared = qr, ofA(a), ofB(b);
  qr.factor(b);
  EXPECT_EQ(ofB, qr);
  EXPECT_EQ(ofB.pivots(), qr.pivots());
  DoubleQRDecomp apart(a);
  apart.reference(DoubleGenMat(DoubleVec(480U, 0.0).slice(0, 240, 2), 20, 12));
  apart.dataVec() = ofA.dataVec();
  for (const auto& same : {shared, apart}) EXPECT_EQ(ofA.solve(a.col(1)), same.solve(a.col(1)));
}

TEST(DoubleQRDecomp, RankCountsExactZerosAndTheFirstOfTheLargestColumnsComesFirst) {
  DoubleGenMat a(4, 3, 0.0), diagonal(4, 4, 0.0);
  for (const unsigned rank : {0U, 1U, 2U, 3U}) {
    if (rank > 0) a(rank, rank - 1) = 2.0;
    for (const DoubleQRDecomp& qr : {DoubleQRDecomp(a), DoubleQRDecomp(transpose(a))}) {
      EXPECT_EQ(rank, qr.rank());
      EXPECT_EQ(rank < 3, qr.isSingular());
    }
  }
  EXPECT_FALSE(DoubleQRDecomp().isSingular());
  diagonal.diagonal() = vectorOf({1.0, -3.0, 2.0, 3.0});
  EXPECT_THAT(list(DoubleQRDecomp(diagonal).pivots()), ElementsAre(1, 3, 2, 0));
}

TEST(DoubleQRDecomp, SplitsAVectorByTheLeadingColumns) {
  const DoubleGenMat a = randomMatrix(9, 5, 8);
  const DoubleQRDecomp qr(a);
  const DoubleVec y = randomVector(9, 3), strided = DoubleGenMat(y, 1, 9).row(0);
  for (const unsigned k : {0U, 1U, 4U, 5U, 99U}) {
    SCOPED_TRACE(k);
    const DoubleVec fit = qr.computeXb(y, k), residual = qr.computeResidualVec(strided, k);
    EXPECT_LT(norm2(fit + residual - y), 1e-14);
    EXPECT_LT(norm2(qr.permute(product(residual, a)).slice(0, std::min(k, 5U))), 1e-14);
    DoubleVec x = qr.partialSolve(y, k);
    ASSERT_EQ(std::min(k, 5U), x.length());
    x.resize(5);
    EXPECT_LT(norm2(product(a, qr.unpermute(x)) - fit), 1e-13);
    EXPECT_EQ(x, qr.permute(qr.unpermute(x)));
  }
}

TEST(DoubleQRDecomp, MisuseIsReported) {
  const DoubleQRDecomp qr(randomMatrix(4, 3, 1));
  const DoubleVec two(2, 1.0);
  const std::string length = "b vector length wrong (2!=4)",
                    permute = "vector wrong length to permute (2!=3)";
  expectErrors({
      {[&] { EXPECT_EQ(0U, qr.partialSolve(two, 1).length()); }, kRightSideLengthError, length},
      {[&] { EXPECT_EQ(0U, qr.computeQy(two, 1).length()); }, kRightSideLengthError, length},
      {[&] { EXPECT_EQ(two, qr.permute(two)); }, kPermutedLengthError, permute},
      {[&] { EXPECT_EQ(two, qr.unpermute(two)); }, kPermutedLengthError, permute},
      {[&] { EXPECT_EQ(0U, DoubleQRDecomp().solve(DoubleVec()).length()); }, kNotFactoredError,
       "Can't solve system of equations, matrix not successfully factorized"},
  });
  DoubleGenMat a = identity(3);
  a(1, 1) = 0.0;  // no error
  EXPECT_THAT(list(factored(a, 0).solve(DoubleVec(3, 5.0))), ElementsAre(5.0, 0.0, 0.0));
  EXPECT_EQ(DoubleGenMat(3, 9, 0.0), factored(a * 0.0, 1).solve(DoubleGenMat(3, 9, 5.0)));
}

TEST(DoubleQRDecomp, EndsOnNumbersThatAreNone) {
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (const auto& [m, n] : {Shape{1, 1}, {7, 9}, {30, 20}, {400, 300}}) {
      DoubleGenMat a = randomMatrix(m, n, 3);
      a(m / 2, n / 2) = bad;
      std::vector<int> pivots = list(DoubleQRDecomp(a).pivots());
      std::ranges::sort(pivots);
      EXPECT_EQ(list(factored(a, 0).pivots()), pivots);
    }
  }
}

}  // namespace
