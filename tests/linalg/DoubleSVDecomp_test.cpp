#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleSVDecomp.h>

#include "tests/support/Matrices.h"

namespace {

using kilntest::frobenius;
using kilntest::randomMatrix;

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kLargestRatio = 50.0;

using Size = std::pair<unsigned, unsigned>;

const std::vector<Size> kSizes = {{1, 1},   {2, 2},     {3, 3},   {5, 5},    {10, 10},  {50, 50},
                                  {65, 65}, {130, 130}, {1, 5},   {5, 1},    {1, 2},    {2, 3},
                                  {3, 2},   {10, 50},   {50, 10}, {130, 50}, {50, 130}, {70, 71}};

DoubleGenMat leading(const DoubleGenMat& a, unsigned columns) {
  return DoubleGenMat(a.dataVec().slice(0, a.rows() * columns), a.rows(), columns);
}

// |QᵀQ - I| / (rows ε).
double orthogonalityRatio(const DoubleGenMat& q) {
  if (q.cols() == 0) return 0.0;
  return frobenius(transposeProduct(q, q) - kilntest::identity(q.cols())) / (q.rows() * kEpsilon);
}

// |A - U S Vᵀ| / (|A| max(m, n) ε).
double residualRatio(const DoubleGenMat& a, const DoubleSVDecomp& svd) {
  const unsigned values = svd.singularValues().length();
  DoubleGenMat us = leading(svd.leftVecs(), values).copy();
  for (int j = 0; j < static_cast<int>(values); ++j) us.col(j) *= svd.singularValues()(j);
  const double size = frobenius(a);
  const double error = frobenius(a - transProduct(us, leading(svd.rightVecs(), values)));
  return error == 0.0 ? 0.0 : error / (size * std::max(a.rows(), a.cols()) * kEpsilon);
}

bool isDescendingFromPositive(const DoubleVec& s) {
  for (int i = 0; i < static_cast<int>(s.length()); ++i) {
    if (!(s(i) >= 0.0) || (i > 0 && s(i) > s(i - 1))) return false;
  }
  return true;
}

// The worst ratio of the program, which the last test reports.
double worstRatio = 0.0;

double largestRatio(const DoubleGenMat& a, const DoubleSVDecomp& svd) {
  const double ratio = std::max({residualRatio(a, svd), orthogonalityRatio(svd.leftVecs()),
                                 orthogonalityRatio(svd.rightVecs())});
  worstRatio = std::max(worstRatio, ratio);
  return ratio;
}

void expectDecomposed(const DoubleGenMat& a) {
  const DoubleSVDecomp svd(a);
  ASSERT_TRUE(svd.good());
  EXPECT_EQ(static_cast<int>(std::min(a.rows(), a.cols())), svd.numSVsFound());
  EXPECT_TRUE(isDescendingFromPositive(svd.singularValues()));
  EXPECT_EQ(DoubleVec(a.cols(), 0.0), svd.eValues());
  EXPECT_LT(largestRatio(a, svd), kLargestRatio);
}

struct Kind {
  std::string name;
  std::function<DoubleGenMat(unsigned m, unsigned n)> make;
};

DoubleGenMat bidiagonal(unsigned m, unsigned n, const std::function<double(int)>& diagonal) {
  DoubleGenMat a(m, n, 0.0);
  for (int i = 0; i < static_cast<int>(std::min(m, n)); ++i) a(i, i) = diagonal(i);
  a.diagonal(std::min(n - 1, 1U)) += 0.5;
  return a;
}

DoubleGenMat graded(unsigned m, unsigned n) {
  DoubleGenMat a = randomMatrix(m, n, 11);
  for (int j = 0; j < static_cast<int>(n); ++j) {
    for (int i = 0; i < static_cast<int>(m); ++i) a(i, j) *= std::pow(2.0, -3 * (i + j));
  }
  return a;
}

const std::vector<Kind> kKinds = {
    {"random", [](unsigned m, unsigned n) { return randomMatrix(m, n, 1); }},
    {"zero columns",
     [](unsigned m, unsigned n) {
       return kilntest::withZeroColumns(randomMatrix(m, n, 2), {0, 3, 4, n - 1});
     }},
    {"rank 1",
     [](unsigned m, unsigned n) { return product(randomMatrix(m, 1, 3), randomMatrix(1, n, 4)); }},
    {"zero", [](unsigned m, unsigned n) { return DoubleGenMat(m, n, 0.0); }},
    {"ones", [](unsigned m, unsigned n) { return DoubleGenMat(m, n, 1.0); }},
    {"graded", graded},
    {"zeros on the diagonal",
     [](unsigned m, unsigned n) {
       return bidiagonal(m, n, [](int i) { return i % 3 == 1 ? 0.0 : 1.0 + i; });
     }},
    {"tiny among large",
     [](unsigned m, unsigned n) {
       return bidiagonal(m, n, [](int i) { return i % 2 == 1 ? 1e-170 : -1.0; });
     }},
};

}  // namespace

TEST(DoubleSVDecomp, ReproducesTheMatrixFromOrthogonalFactors) {
  for (const Kind& kind : kKinds) {
    for (const auto& [m, n] : kSizes) {
      SCOPED_TRACE(kind.name + " " + std::to_string(m) + " by " + std::to_string(n));
      expectDecomposed(kind.make(m, n));
    }
  }
}

TEST(DoubleSVDecomp, FindsAKnownSpectrum) {
  for (const double condition : {1.0, 2.0, std::sqrt(0.1 / kEpsilon), 0.1 / kEpsilon}) {
    for (const auto& [m, n] : kSizes) {
      SCOPED_TRACE(std::to_string(condition) + " " + std::to_string(m) + " by " +
                   std::to_string(n));
      const DoubleGenMat a = kilntest::matrixWithCondition(m, n, condition, 5);
      expectDecomposed(a);
      const DoubleVec found = DoubleSVDecomp(a).singularValues();
      const int last = static_cast<int>(found.length()) - 1;
      for (int i = 0; i <= last; ++i) {
        const double expected = last == 0 ? 1.0 : std::pow(condition, -1.0 * i / last);
        EXPECT_NEAR(expected, found(i), kLargestRatio * std::max(m, n) * kEpsilon);
      }
    }
  }
}

// Among equal values rounding alone can keep the iteration from ending, in one matrix of about a
// hundred.
TEST(DoubleSVDecomp, EndsForEqualValues) {
  for (unsigned seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    const unsigned n = 40 + seed;
    EXPECT_TRUE(DoubleSVDecomp(kilntest::matrixWithCondition(n, 140 - seed / 2, 1.0, seed)).good());
  }
}

// Powers of two, so that the matrix is the same one but for its range; below 2^-1000 its elements
// have lost digits.
TEST(DoubleSVDecomp, WorksNearUnderflowAndOverflow) {
  for (const int exponent : {-1070, -1020, -963, -500, 500, 963, 1020}) {
    for (const auto& [m, n] : {Size{1, 3}, Size{5, 5}, Size{50, 30}, Size{30, 65}}) {
      SCOPED_TRACE(std::to_string(exponent) + " " + std::to_string(m) + " by " + std::to_string(n));
      const double half = std::ldexp(1.0, exponent / 2),
                   rest = std::ldexp(1.0, exponent - exponent / 2);
      const DoubleGenMat a = randomMatrix(m, n, 6) * half * rest;
      const DoubleSVDecomp svd(a), reference(a / half / rest);
      ASSERT_TRUE(svd.good());
      EXPECT_LT(largestRatio(a / half / rest, reference), kLargestRatio);
      EXPECT_EQ(reference.leftVecs(), svd.leftVecs());
      EXPECT_EQ(reference.rightVecs(), svd.rightVecs());
      EXPECT_EQ(reference.singularValues() * half * rest, svd.singularValues());
    }
  }
}

TEST(DoubleSVDecomp, GivesTheSameWhateverIsAskedFor) {
  for (const auto& [m, n] : kSizes) {
    const DoubleGenMat a = randomMatrix(m, n, 7);
    const DoubleSVDecomp full(a);
    const double tolerance = kLargestRatio * std::max(m, n) * kEpsilon;
    for (const int left : {0, 1, 2}) {
      for (const int right : {0, 1}) {
        SCOPED_TRACE(std::to_string(m) + " by " + std::to_string(n) + " job " +
                     std::to_string(10 * left + right));
        DoubleSVDecomp svd;
        svd.computeLeftVecs(left);
        svd.computeAllLeftVecs(left == 1);
        svd.computeRightVecs(right);
        svd.factor(a);
        const unsigned columns = left == 0 ? 0 : left == 1 ? m : std::min(m, n);
        ASSERT_EQ(columns, svd.leftVecs().cols());
        ASSERT_EQ(right * n, svd.rightVecs().cols());
        EXPECT_LT(kilntest::norm2(svd.singularValues() - full.singularValues()), tolerance);
        if (left != 0) {
          EXPECT_LT(frobenius(svd.leftVecs() - leading(full.leftVecs(), columns)), tolerance);
        }
        if (right != 0) {
          EXPECT_LT(frobenius(svd.rightVecs() - full.rightVecs()), tolerance);
        }
      }
    }
  }
}

// The signs follow from the method: those of Householder vectors and rotations, and a V that takes
// up negative values.
TEST(DoubleSVDecomp, HasTheSignsOfTheMethod) {
  const double column[] = {3.0, 4.0};
  const DoubleSVDecomp tall(DoubleGenMat(column, 2, 1));
  EXPECT_DOUBLE_EQ(5.0, tall.singularValues()(0));
  EXPECT_DOUBLE_EQ(-0.6, tall.leftVecs()(0, 0));
  EXPECT_DOUBLE_EQ(-0.8, tall.leftVecs()(1, 0));
  EXPECT_DOUBLE_EQ(-0.8, tall.leftVecs()(0, 1));
  EXPECT_DOUBLE_EQ(0.6, tall.leftVecs()(1, 1));
  EXPECT_DOUBLE_EQ(-1.0, tall.rightVecs()(0, 0));

  const DoubleSVDecomp wide(DoubleGenMat(column, 1, 2));
  EXPECT_DOUBLE_EQ(5.0, wide.singularValues()(0));
  EXPECT_DOUBLE_EQ(1.0, wide.leftVecs()(0, 0));
  EXPECT_DOUBLE_EQ(0.6, wide.rightVecs()(0, 0));
  EXPECT_DOUBLE_EQ(-0.8, wide.rightVecs()(0, 1));

  const double diagonal[] = {-1.0, 0.0, 0.0, 2.0};
  const DoubleSVDecomp swapped(DoubleGenMat(diagonal, 2, 2));
  EXPECT_DOUBLE_EQ(2.0, swapped.singularValues()(0));
  EXPECT_DOUBLE_EQ(1.0, swapped.rightVecs()(1, 0) * swapped.leftVecs()(1, 0));
  EXPECT_DOUBLE_EQ(-1.0, swapped.rightVecs()(0, 1) * swapped.leftVecs()(0, 1));
}

TEST(DoubleSVDecomp, FailsForElementsThatAreNotFinite) {
  for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
    for (const auto& [m, n] : kSizes) {
      DoubleGenMat a = randomMatrix(m, n, 8);
      a(static_cast<int>(m) - 1, static_cast<int>(n / 2)) = bad;
      const DoubleSVDecomp svd(a);
      EXPECT_TRUE(svd.fail());
      EXPECT_EQ(0, svd.numSVsFound());
      EXPECT_EQ(std::min(m, n), svd.singularValues().length());
    }
  }
}

TEST(DoubleSVDecomp, OfNothingFails) {
  EXPECT_TRUE(DoubleSVDecomp().fail());
  DoubleSVDecomp svd(randomMatrix(2, 2, 9));
  for (const auto& [m, n] : {Size{0, 0}, Size{0, 3}, Size{3, 0}}) {
    svd.factor(DoubleGenMat(m, n));
    EXPECT_TRUE(svd.fail());
    EXPECT_EQ(0, svd.numSVsFound());
    EXPECT_EQ(m, svd.leftVecs().cols());
    EXPECT_EQ(n, svd.rightVecs().cols());
    EXPECT_EQ(n, svd.eValues().length());
  }
}

TEST(DoubleSVDecomp, TellsTheSettingBefore) {
  DoubleSVDecomp svd;
  EXPECT_EQ(1, svd.computeAllLeftVecs(1));
  EXPECT_EQ(1, svd.computeAllLeftVecs(0));
  EXPECT_EQ(0, svd.computeAllLeftVecs(0));
  EXPECT_EQ(1, svd.computeLeftVecs(1));     // the first ones still
  EXPECT_EQ(0, svd.computeAllLeftVecs(1));  // all again
  EXPECT_EQ(1, svd.computeLeftVecs(0));
  EXPECT_EQ(0, svd.computeAllLeftVecs(0));  // none: no effect
  EXPECT_EQ(0, svd.computeLeftVecs(1));
  EXPECT_EQ(1, svd.computeAllLeftVecs(1));
  EXPECT_EQ(1, svd.computeRightVecs(0));
  EXPECT_EQ(0, svd.computeRightVecs(0));
  EXPECT_EQ(0, svd.computeRightVecs(1));
}

TEST(DoubleSVDecomp, LeavesItsMatrixAndEarlierResultsAlone) {
  const DoubleGenMat a = randomMatrix(6, 4, 10), before = a.copy();
  DoubleSVDecomp svd(a);
  const DoubleSVDecomp copy(svd);
  const DoubleGenMat v = svd.rightVecs(), vBefore = v.copy();
  svd.factor(randomMatrix(6, 4, 11));
  EXPECT_EQ(before, a);
  EXPECT_EQ(vBefore, v);
  EXPECT_EQ(vBefore, copy.rightVecs());
  EXPECT_LT(largestRatio(a, copy), kLargestRatio);
}

TEST(DoubleSVDecomp, ReportsItsWorstRatio) {
  RecordProperty("worstRatio", std::to_string(worstRatio));
  EXPECT_LT(worstRatio, kLargestRatio);
}
