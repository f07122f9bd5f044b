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
using testing::ElementsAre;

using Shape = std::pair<unsigned, unsigned>;

constexpr double kMostRatio = 30.0;

DoubleQRDecomp factored(const DoubleGenMat& a, int pivoting) {
  DoubleQRDecomp qr;
  qr.doPivoting(pivoting);
  qr.factor(a);
  return qr;
}

DoubleGenMat upperTriangle(const DoubleGenMat& a) {
  DoubleGenMat r = a.copy();
  for (unsigned i = 1; i < r.rows(); ++i) r.row(i).slice(0, std::min(i, r.cols())) = 0.0;
  return r;
}

// |R - QᵀAP| / (m |A| ε).
double factorRatio(const DoubleQRDecomp& qr, const DoubleGenMat& a) {
  DoubleGenMat difference = upperTriangle(qr);
  for (unsigned j = 0; j < a.cols(); ++j) {
    difference.col(j) -= qr.computeQTy(a.col(qr.pivots()(j)), a.cols());
  }
  return ratio(norm1(difference), norm1(a), a.rows());
}

// Each diagonal element of R must be as large as what its row and those below leave of each later
// column. The norms by which columns are chosen may be off by `slack`: hardly for well conditioned
// matrices, by most of a digit where they shrink to the last digits of the formula. In what is
// below the rounding errors of the matrix there is no order.
void expectPivoted(const DoubleQRDecomp& qr, double slack) {
  const DoubleGenMat r = upperTriangle(qr);
  const double noise = kEpsilon * norm1(r);
  for (unsigned k = 0; k < std::min(r.rows(), r.cols()); ++k) {
    for (unsigned j = k + 1; j < r.cols(); ++j) {
      const double rest = norm2(r.col(j).slice(k, r.rows() - k));
      ASSERT_GE(std::abs(r(k, k)) * (1.0 + slack) + noise, rest) << k << ", " << j;
    }
  }
}

TEST(DoubleQRDecomp, FactorsAndSolutionsAreExactToRounding) {
  for (const TestMatrix& test : testMatrices()) {
    for (const int pivoting : {0, 1}) {
      SCOPED_TRACE(test.name + (pivoting != 0 ? ", pivoted" : ""));
      const DoubleQRDecomp qr = factored(test.a, pivoting);
      ASSERT_LT(factorRatio(qr, test.a), kMostRatio);
      DoubleGenMat q = identity(qr.rows());
      for (unsigned j = 0; j < q.cols(); ++j) q.col(j) = qr.computeQy(q.col(j), qr.cols());
      ASSERT_LT(orthogonalityRatio(q), kMostRatio);
      const bool easy = test.condition == 1.0 || test.condition == 2.0;
      if (pivoting != 0) expectPivoted(qr, easy ? 1e-6 : 9.0);
      const DoubleVec b = randomVector(qr.rows(), 22);
      if (easy && 0 < qr.rows() && qr.rows() <= qr.cols()) {
        EXPECT_LT(ratio(norm2(product(test.a, qr.solve(b)) - b), norm2(b), qr.cols()), kMostRatio);
      }
    }
  }
}

// Shapes that take the ways of large matrices: tiles of rows, blocks of columns, more columns than
// can wait for transformations together. Subnormal numbers are factored with fewer digits, but by
// orthogonal transformations all the same.
TEST(DoubleQRDecomp, LargeAndSubnormalFactorsAreExactToRounding) {
  const std::pair<double, std::vector<Shape>> cases[] = {
      {1.0, {{300, 280}, {520, 510}, {5000, 30}, {300, 1300}, {9, 7000}}},
      {1e-315, {{2, 1}, {5, 5}, {50, 130}, {130, 50}}}};
  for (const auto& [scale, shapes] : cases) {
    for (const auto& [m, n] : shapes) {
      const DoubleGenMat a = randomMatrix(m, n, 7) * scale;
      const DoubleVec y = randomVector(m, 5);
      for (const int pivoting : {0, 1}) {
        SCOPED_TRACE(testing::Message() << m << " by " << n << ", pivoting " << pivoting);
        const DoubleQRDecomp qr = factored(a, pivoting);
        EXPECT_TRUE(scale < 1.0 || factorRatio(qr, a) < kMostRatio);
        const DoubleVec back = qr.computeQTy(qr.computeQy(y, n), n);
        EXPECT_LT(ratio(norm2(back - y), norm2(y), m), kMostRatio);
      }
    }
  }
}

// Columns that nearly depend on others make the norms cancel over and over.
TEST(DoubleQRDecomp, PivotsByTrueNormsWhereTheyCancel) {
  const unsigned n = 260;
  DoubleGenMat a = matrixWithCondition(n, n, 1e15, 11);
  for (unsigned j = 1; j < n; j += 2) a.col(j) = a.col(j - 1) + a.col(j) * 1e-9;
  const DoubleQRDecomp qr = factored(a, 1);
  EXPECT_LT(factorRatio(qr, a), kMostRatio);
  expectPivoted(qr, 9.0);

  // Nothing is left of column 1 after column 2, but its rounded norm says otherwise. It must be
  // doubted by what column 1 was at first, not by what column 2 was, with which it changes places.
  DoubleGenMat last(4, 4, 0.0);
  last.row(0) = vectorOf({2.0, 1.0, 0.0, 0.0});
  last.row(1) = vectorOf({0.0, std::sqrt(91.5 * kEpsilon), 2e-7, 0.0});
  last(2, 3) = 1e-9;
  EXPECT_THAT(list(DoubleQRDecomp(last).pivots()), ElementsAre(0, 2, 3, 1));
}

TEST(DoubleQRDecomp, LayoutIsTheHouseholderVectorsBelowR) {
  // The sign is opposite to that of the first element, the vector is (1.6, 0.8), the last row has
  // no transformation.
  const DoubleQRDecomp qr = factored(DoubleGenMat(vectorOf({3.0, 4.0, 0.0, 2.0}), 2, 2), 0);
  EXPECT_LT(norm2(qr.dataVec() - vectorOf({-5.0, 0.8, -1.6, 1.2})), 1e-15);
  const DoubleGenMat minusZero(vectorOf({-0.0, 3.0}), 2, 1);
  EXPECT_DOUBLE_EQ(-3.0, factored(minusZero, 0)(0, 0));  // -0 counts as positive
  EXPECT_EQ(-7.0, factored(DoubleGenMat(1, 1, -7.0), 1)(0, 0));
}

TEST(DoubleQRDecomp, FactorsAnewAndLeavesEarlierViewsAlone) {
  const DoubleGenMat a = randomMatrix(20, 12, 1), b = randomMatrix(15, 15, 2);
  DoubleQRDecomp qr(a);
  const DoubleQRDecomp shared = qr, ofA(a), ofB(b);
  qr.factor(b);
  EXPECT_TRUE(qr == ofB && qr.pivots() == ofB.pivots());
  EXPECT_TRUE(shared == ofA && shared.pivots() == ofA.pivots());
}

TEST(DoubleQRDecomp, RankCountsExactZerosAndTheFirstOfTheLargestColumnsComesFirst) {
  DoubleGenMat a(4, 3, 0.0);
  for (const unsigned rank : {0U, 1U, 2U, 3U}) {
    if (rank > 0) a(rank, rank - 1) = 2.0;
    const DoubleQRDecomp tall(a), wide(transposeProduct(a, identity(4)));
    EXPECT_TRUE(tall.rank() == rank && wide.rank() == rank);
    EXPECT_TRUE(tall.isSingular() == (rank < 3) && wide.isSingular() == (rank < 3)) << rank;
  }
  EXPECT_FALSE(DoubleQRDecomp().isSingular());
  a.resize(4, 4);
  a = 0.0;
  a.diagonal() = vectorOf({1.0, -3.0, 2.0, 3.0});
  EXPECT_THAT(list(DoubleQRDecomp(a).pivots()), ElementsAre(1, 3, 2, 0));
}

TEST(DoubleQRDecomp, SplitsAVectorByTheLeadingColumns) {
  const DoubleGenMat a = randomMatrix(9, 5, 8);
  const DoubleQRDecomp qr(a);
  const DoubleVec y = randomVector(9, 3), strided = DoubleGenMat(y, 1, 9).row(0);
  for (const unsigned k : {0U, 1U, 4U, 5U, 99U}) {
    SCOPED_TRACE(k);
    const DoubleVec fit = qr.computeXb(y, k), residual = qr.computeResidualVec(strided, k);
    EXPECT_LT(norm2(fit + residual - y), 1e-14);
    DoubleVec x = qr.partialSolve(y, k);
    ASSERT_EQ(std::min(k, 5U), x.length());
    x.resize(5);
    EXPECT_LT(norm2(product(a, qr.unpermute(x)) - fit), 1e-13);
    EXPECT_EQ(x, qr.permute(qr.unpermute(x)));
    for (unsigned j = 0; j < std::min(k, 5U); ++j) {
      EXPECT_LT(std::abs(dot(residual, a.col(qr.pivots()(j)))), 1e-14);
    }
    EXPECT_LT(norm2(qr.computeQy(qr.computeQTy(y, k), k) - y), 1e-14);
  }
}

TEST(DoubleQRDecomp, MisuseIsReported) {
  RecordedMathErrors errors;
  const DoubleQRDecomp qr(randomMatrix(4, 3, 1));
  const DoubleVec wrong(2, 1.0);
  for (const auto& x : {qr.solve(wrong), qr.partialSolve(wrong, 1), qr.computeQy(wrong, 1)}) {
    EXPECT_EQ(0U, x.length());
  }
  EXPECT_TRUE(wrong == qr.permute(wrong) && wrong == qr.unpermute(wrong));
  EXPECT_EQ(0U, DoubleQRDecomp().solve(DoubleVec()).length());
  DoubleGenMat a = identity(3);
  a(1, 1) = 0.0;
  EXPECT_THAT(list(factored(a, 0).solve(DoubleVec(3, 5.0))), ElementsAre(5.0, 0.0, 0.0));
  const std::string length = "b vector length wrong (2!=4)",
                    permute = "vector wrong length to permute (2!=3)";
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre(length, length, length, permute, permute,
                          "Can't solve system of equations, matrix not successfully factorized"));
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
