#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include <kilnbase/linalg/DoubleQRDecomp.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

namespace {

using kilntest::norm1;
using kilntest::randomMatrix;
using kilntest::randomVector;
using testing::ElementsAre;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon() / 2;
constexpr double kMostRatio = 30.0;

struct Shape {
  unsigned rows;
  unsigned columns;
};

std::vector<Shape> smallShapes() {
  std::vector<Shape> shapes;
  for (const unsigned m : {0, 1, 2, 3, 5, 10, 50, 130}) {
    for (const unsigned n : {0, 1, 2, 3, 5, 10, 50, 130}) shapes.push_back({m, n});
  }
  return shapes;
}

// Matrices of each kind that a factorization finds hard, for one shape.
std::vector<DoubleGenMat> matrices(Shape shape) {
  const unsigned m = shape.rows;
  const unsigned n = shape.columns;
  const DoubleGenMat random = randomMatrix(m, n, m * 1000 + n);
  return {random,
          kilntest::matrixWithCondition(m, n, 2.0, 1),
          kilntest::matrixWithCondition(m, n, std::sqrt(0.1 / kEpsilon), 2),
          kilntest::matrixWithCondition(m, n, 0.1 / kEpsilon, 3),
          kilntest::withZeroColumns(random, {0, 2, 7, 8, 49}),
          DoubleGenMat(m, n, 0.0),
          random * 1e290,
          random * 1e-290,
          random * 1e-315};
}

DoubleGenMat upperTriangle(const DoubleGenMat& a) {
  DoubleGenMat r = a.copy();
  for (int j = 0; j < static_cast<int>(a.cols()); ++j) {
    for (int i = j + 1; i < static_cast<int>(a.rows()); ++i) r(i, j) = 0.0;
  }
  return r;
}

// norm / (m scale eps), where a scale of 0 asks for a norm of 0.
double ratio(double norm, unsigned m, double scale) {
  if (norm == 0.0) return 0.0;
  return norm / scale / (m * kEpsilon);
}

// |R - QᵀAP| / (m |A| eps).
double factorRatio(const DoubleQRDecomp& qr, const DoubleGenMat& a) {
  DoubleGenMat difference = upperTriangle(qr);
  for (int j = 0; j < static_cast<int>(a.cols()); ++j) {
    difference.col(j) -= qr.computeQTy(a.col(qr.pivots()(j)), a.cols());
  }
  return ratio(norm1(difference), a.rows(), norm1(a));
}

// |I - QᵀQ| / (m eps).
double orthogonalityRatio(const DoubleQRDecomp& qr) {
  const unsigned m = qr.rows();
  DoubleGenMat q = kilntest::identity(m);
  for (int j = 0; j < static_cast<int>(m); ++j) q.col(j) = qr.computeQy(q.col(j), qr.cols());
  return ratio(norm1(transposeProduct(q, q) - kilntest::identity(m)), m, 1.0);
}

// |y - Qᵀ(Q y)| / (m |y| eps), for matrices whose Q is too large to be formed.
double roundTripRatio(const DoubleQRDecomp& qr) {
  const DoubleVec y = randomVector(qr.rows(), 5);
  const DoubleVec back = qr.computeQTy(qr.computeQy(y, qr.cols()), qr.cols());
  return ratio(kilntest::norm2(back - y), qr.rows(), kilntest::norm2(y));
}

// Each diagonal element of R must be as large as what its row and those below leave of each later
// column. The norms by which columns are chosen may be off by `slack`: hardly for well conditioned
// matrices, by most of a digit where they shrink to the last digits of the formula.
void expectPivoted(const DoubleQRDecomp& qr, double slack) {
  const DoubleGenMat r = upperTriangle(qr);
  for (int k = 0; k < static_cast<int>(std::min(r.rows(), r.cols())); ++k) {
    for (int j = k + 1; j < static_cast<int>(r.cols()); ++j) {
      const DoubleVec rest = r.col(j).slice(k, r.rows() - static_cast<unsigned>(k));
      ASSERT_GE(std::abs(r(k, k)) * (1.0 + slack), kilntest::norm2(rest)) << k << ", " << j;
    }
  }
}

DoubleQRDecomp factored(const DoubleGenMat& a, int pivoting) {
  DoubleQRDecomp qr;
  qr.doPivoting(pivoting);
  qr.factor(a);
  return qr;
}

TEST(DoubleQRDecomp, FactorsAreExactToRounding) {
  double worst = 0.0;
  for (const Shape shape : smallShapes()) {
    const std::vector<DoubleGenMat> kinds = matrices(shape);
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
      for (const int pivoting : {0, 1}) {
        SCOPED_TRACE(testing::Message() << shape.rows << " by " << shape.columns << ", kind "
                                        << kind << ", pivoting " << pivoting);
        const DoubleQRDecomp qr = factored(kinds[kind], pivoting);
        const double factors = kind + 1 < kinds.size() ? factorRatio(qr, kinds[kind]) : 0.0;
        const double orthogonality = orthogonalityRatio(qr);
        ASSERT_LT(factors, kMostRatio);
        ASSERT_LT(orthogonality, kMostRatio);
        worst = std::max({worst, factors, orthogonality});
        if (pivoting != 0) expectPivoted(qr, kind < 2 ? 1e-6 : 9.0);
      }
    }
  }
  RecordProperty("worstRatio", std::to_string(worst));
}

// Shapes that take the ways of large matrices: tiles of rows, blocks of columns, more columns than
// can wait for transformations together.
TEST(DoubleQRDecomp, LargeFactorsAreExactToRounding) {
  for (const Shape shape : {Shape{300, 280}, {520, 510}, {5000, 30}, {300, 1300}, {9, 7000}}) {
    const DoubleGenMat a = randomMatrix(shape.rows, shape.columns, 7);
    for (const int pivoting : {0, 1}) {
      SCOPED_TRACE(testing::Message()
                   << shape.rows << " by " << shape.columns << ", pivoting " << pivoting);
      const DoubleQRDecomp qr = factored(a, pivoting);
      EXPECT_LT(factorRatio(qr, a), kMostRatio);
      EXPECT_LT(roundTripRatio(qr), kMostRatio);
    }
  }
}

// Columns that nearly depend on others make the norms cancel over and over.
TEST(DoubleQRDecomp, PivotsByTrueNormsWhereTheyCancel) {
  const unsigned n = 260;
  DoubleGenMat a = kilntest::matrixWithCondition(n, n, 1e15, 11);
  for (int j = 1; j < static_cast<int>(n); j += 2) a.col(j) = a.col(j - 1) + a.col(j) * 1e-9;
  const DoubleQRDecomp qr = factored(a, 1);
  EXPECT_LT(factorRatio(qr, a), kMostRatio);
  expectPivoted(qr, 9.0);
}

TEST(DoubleQRDecomp, LayoutIsTheHouseholderVectorsBelowR) {
  const double columns[] = {3.0, 4.0, 0.0, 2.0};
  const DoubleQRDecomp qr = factored(DoubleGenMat(columns, 2, 2), 0);
  EXPECT_DOUBLE_EQ(-5.0, qr(0, 0));  // the sign is opposite to that of the first element
  EXPECT_DOUBLE_EQ(0.8, qr(1, 0));   // the vector is (1.6, 0.8)
  EXPECT_DOUBLE_EQ(-1.6, qr(0, 1));
  EXPECT_DOUBLE_EQ(1.2, qr(1, 1));  // the last row has no transformation
  const double negative[] = {-3.0, 4.0};
  EXPECT_DOUBLE_EQ(5.0, factored(DoubleGenMat(negative, 2, 1), 0)(0, 0));
  EXPECT_EQ(-7.0, factored(DoubleGenMat(1, 1, -7.0), 1)(0, 0));
  const double negativeZero[] = {-0.0, 3.0};  // counts as positive
  EXPECT_DOUBLE_EQ(-3.0, factored(DoubleGenMat(negativeZero, 2, 1), 0)(0, 0));
}

TEST(DoubleQRDecomp, TakesTheFirstOfTheLargestColumns) {
  DoubleGenMat a(4, 4, 0.0);
  a.diagonal() = DoubleVec(std::vector<double>{1.0, -3.0, 2.0, 3.0}.data(), 4);
  EXPECT_EQ(IntVec(std::vector<int>{1, 3, 2, 0}.data(), 4), DoubleQRDecomp(a).pivots());
  const DoubleQRDecomp unpivoted = factored(a, 0);
  EXPECT_EQ(IntVec(std::vector<int>{0, 1, 2, 3}.data(), 4), unpivoted.pivots());
  const DoubleVec v = randomVector(4, 1);
  EXPECT_EQ(v, unpivoted.permute(v));
}

TEST(DoubleQRDecomp, FactorsAnewAndLeavesEarlierViewsAlone) {
  const DoubleGenMat a = randomMatrix(20, 12, 1);
  const DoubleGenMat b = randomMatrix(15, 15, 2);
  DoubleQRDecomp qr(a);
  const DoubleQRDecomp shared = qr;
  qr.factor(b);
  const DoubleQRDecomp fresh(b);
  EXPECT_TRUE(qr == fresh);
  EXPECT_EQ(fresh.pivots(), qr.pivots());
  EXPECT_TRUE(shared == DoubleQRDecomp(a));
  EXPECT_EQ(DoubleQRDecomp(a).pivots(), shared.pivots());
  qr = DoubleQRDecomp(b * 2.0);
  EXPECT_EQ(1, qr.doPivoting(0));
  EXPECT_EQ(0, qr.doPivoting(1));
}

TEST(DoubleQRDecomp, RankCountsExactZeros) {
  const DoubleGenMat independent = randomMatrix(3, 2, 4);
  EXPECT_EQ(2U, DoubleQRDecomp(independent).rank());
  EXPECT_FALSE(DoubleQRDecomp(independent).isSingular());
  const DoubleQRDecomp dependent(kilntest::withZeroColumns(independent, {0}));
  EXPECT_EQ(1U, dependent.rank());
  EXPECT_TRUE(dependent.isSingular());
  EXPECT_FALSE(DoubleQRDecomp(randomMatrix(2, 3, 4)).isSingular());
  EXPECT_FALSE(DoubleQRDecomp().isSingular());
}

TEST(DoubleQRDecomp, SplitsAVectorByTheLeadingColumns) {
  const DoubleGenMat a = randomMatrix(9, 5, 8);
  const DoubleQRDecomp qr(a);
  const DoubleVec y = randomVector(9, 3);
  const DoubleVec strided = DoubleGenMat(y, 1, 9).row(0);
  for (const unsigned k : {0U, 1U, 4U, 5U, 99U}) {
    SCOPED_TRACE(k);
    const DoubleVec fit = qr.computeXb(y, k);
    const DoubleVec residual = qr.computeResidualVec(strided, k);
    EXPECT_LT(kilntest::norm2(fit + residual - y), 1e-14);
    DoubleVec x = qr.partialSolve(y, k);
    ASSERT_EQ(std::min(k, 5U), x.length());
    x.resize(5);
    EXPECT_LT(kilntest::norm2(product(a, qr.unpermute(x)) - fit), 1e-13);
    for (int j = 0; j < static_cast<int>(std::min(k, 5U)); ++j) {
      EXPECT_LT(std::abs(dot(residual, a.col(qr.pivots()(j)))), 1e-14);
    }
    EXPECT_LT(kilntest::norm2(qr.computeQy(qr.computeQTy(y, k), k) - y), 1e-14);
  }
}

TEST(DoubleQRDecomp, SolvesSquareAndWideSystems) {
  for (const Shape shape : {Shape{6, 6}, {4, 7}, {1, 1}, {1, 3}}) {
    const DoubleGenMat a = randomMatrix(shape.rows, shape.columns, 21);
    const DoubleVec b = randomVector(shape.rows, 22);
    for (const int pivoting : {0, 1}) {
      const DoubleVec x = factored(a, pivoting).solve(b);
      ASSERT_EQ(shape.columns, x.length());
      EXPECT_LT(kilntest::norm2(product(a, x) - b), 1e-13);
    }
  }
}

TEST(DoubleQRDecomp, MisuseIsReported) {
  kilntest::RecordedMathErrors errors;
  const DoubleQRDecomp qr(randomMatrix(4, 3, 1));
  const DoubleVec wrong(2, 1.0);
  EXPECT_EQ(0U, qr.solve(wrong).length());
  EXPECT_EQ(0U, qr.partialSolve(wrong, 1).length());
  EXPECT_EQ(0U, qr.computeQy(wrong, 1).length());
  EXPECT_EQ(0U, qr.computeResidualVec(wrong, 1).length());
  EXPECT_THAT(errors.takeTexts(), testing::Each("b vector length wrong (2!=4)"));
  EXPECT_EQ(wrong, qr.permute(wrong));
  EXPECT_EQ(wrong, qr.unpermute(wrong));
  EXPECT_THAT(errors.takeTexts(), ElementsAre("vector wrong length to permute (2!=3)",
                                              "vector wrong length to permute (2!=3)"));

  constexpr const char* kNotFactored =
      "Can't solve system of equations, matrix not successfully factorized";
  EXPECT_EQ(0U, DoubleQRDecomp().solve(DoubleVec()).length());
  DoubleGenMat a = kilntest::identity(3);
  a(1, 1) = 0.0;
  const DoubleVec x = factored(a, 0).solve(DoubleVec(3, 5.0));
  EXPECT_EQ(DoubleVec(std::vector<double>{5.0, 0.0, 0.0}.data(), 3), x);
  EXPECT_THAT(errors.takeTexts(), ElementsAre(kNotFactored));
}

TEST(DoubleQRDecomp, EndsOnNumbersThatAreNone) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double bad : {kNaN, kInfinity, -kInfinity}) {
    for (const Shape shape : {Shape{1, 1}, {7, 9}, {30, 20}, {400, 300}}) {
      DoubleGenMat a = randomMatrix(shape.rows, shape.columns, 3);
      a(static_cast<int>(shape.rows) / 2, static_cast<int>(shape.columns) / 2) = bad;
      const IntVec pivots = DoubleQRDecomp(a).pivots();
      std::vector<int> sorted(pivots.data(), pivots.data() + pivots.length());
      std::sort(sorted.begin(), sorted.end());
      std::vector<int> all(shape.columns);
      std::iota(all.begin(), all.end(), 0);
      EXPECT_EQ(all, sorted);
      factored(a, 0);
    }
  }
}

}  // namespace
