#include <algorithm>
#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleChDecomp.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using namespace kilntest;
using testing::Each;
using testing::ElementsAre;

namespace {

constexpr double kRatioLimit = 30.0;

DoubleGenMat upper(const DoubleGenMat& a, double below = 0.0) {
  DoubleGenMat result = a.copy();
  for (unsigned i = 1; i < a.rows(); ++i) result.row(i).slice(0, std::min(i, a.cols())) = below;
  return result;
}

// A symmetric matrix with this many eigenvalues below 0 and the others above it.
DoubleGenMat symmetricMatrix(unsigned n, double condition, unsigned negative = 0) {
  const DoubleGenMat x = matrixWithCondition(n, n, std::sqrt(condition), n + 1);
  DoubleGenMat y = x.copy();
  for (unsigned i = 0; i < negative; ++i) y.row(i) *= -1.0;
  return transposeProduct(x, y);
}

std::vector<DoubleGenMat> symmetricMatrices(unsigned n) {
  std::vector<DoubleGenMat> matrices = {DoubleGenMat(n, n, 0.0)};
  for (const double condition : {2.0, std::sqrt(0.1 / kEpsilon), 0.1 / kEpsilon}) {
    const DoubleGenMat a = symmetricMatrix(n, condition);
    matrices.insert(matrices.end(), {a, a * 1e290, a * 1e-290});
  }
  for (const unsigned count : {1U, n / 2, 2 * n / 3, n - 1, n}) {
    if (count == 0 || count > n) continue;
    // Of this rank; all numbers are integers, and the factoring ends at an exact 0.
    const DoubleGenMat r = upper(DoubleGenMat(count, n, 1.0));
    DoubleGenMat ending = symmetricMatrix(n, 25.0);
    ending(count - 1, count - 1) = -1.0;
    matrices.insert(matrices.end(),
                    {symmetricMatrix(n, 25.0, count), transposeProduct(r, r), ending});
  }
  return matrices;
}

// Decomposes the matrix of which `a` is the upper triangle; without specifiers does not pivot.
DoubleChDecomp decompose(const DoubleGenMat& a, const std::vector<int>& specifiers = {}) {
  DoubleChDecomp factor;
  factor.doPivoting(specifiers.empty() ? 0 : 1);
  int k = 0;
  for (const int position : specifiers) factor.setPivoting(k++, position);
  factor.factor(upper(a, kNaN));
  return factor;
}

// The upper triangle of the matrix that a decomposition stands for: RᵀR of the columns that were
// eliminated plus what is left of the others.
DoubleGenMat composed(const DoubleChDecomp& factor) {
  DoubleGenMat r = upper(factor), rest = r.copy();
  for (int i = 0; i < static_cast<int>(factor.cols()); ++i) {
    (i <= factor.lastPosFactor() ? rest : r).row(i) = 0.0;
  }
  return upper(transposeProduct(r, r)) + rest;
}

// Whether the factor of `a` with these specifiers is what it should be.
void expectFactors(const DoubleGenMat& a, std::vector<int> specifiers) {
  const auto n = static_cast<int>(a.cols());
  const DoubleChDecomp factor = decompose(a, specifiers);
  const IntVec pivots = factor.pivots();
  const IntVec moved = IntVec(specifiers.data(), pivots.length()).vecPick(pivots);
  std::sort(specifiers.begin(), specifiers.end(), std::greater<>());
  EXPECT_EQ(specifiers, list(moved));

  const DoubleGenMat permuted = specifiers.empty() ? a.copy() : DoubleGenMat(a(pivots, pivots));
  const DoubleGenMat error = composed(factor) - upper(permuted);
  const double tolerance = kRatioLimit * n * kEpsilon * norm1(a);
  EXPECT_TRUE(error == error && norm1(error) <= tolerance) << norm1(error);
  for (int k = 1; k < n; ++k) EXPECT_THAT(list(factor.diagonal(-k)), Each(testing::IsNan()));

  const auto begin = static_cast<int>(std::count(specifiers.begin(), specifiers.end(), 1));
  const int end = begin + static_cast<int>(std::count(specifiers.begin(), specifiers.end(), 0));
  const int done = factor.lastPosFactor() + 1;
  // No candidate exceeded the one that was eliminated before it.
  for (int j = begin; j < end; ++j) {
    double candidate = j >= done ? factor(j, j) : 0.0;
    for (int i = std::min(j, done - 1); i >= begin; --i) {
      candidate += factor(i, j) * factor(i, j);
      EXPECT_LE(candidate - factor(i, i) * factor(i, i), tolerance);
    }
  }
  const int candidates = done >= begin && done < end ? end : std::min(done + 1, n);
  for (int j = 0; j < candidates; ++j) EXPECT_EQ(j >= done, factor(j, j) <= 0.0) << j;
  EXPECT_EQ(done == n, factor.isPD());

  // Leading columns solve their part of the system, in the order of the matrix.
  const DoubleVec b = randomVector(2 * n + 2, 3).slice(0, n, 2);
  for (const int k : {done / 2, done}) {
    DoubleVec x = factor.partialSolve(b, k);
    ASSERT_EQ(k, x.length());
    x.resize(n);
    x = factor.unpermute(x);
    EXPECT_LE(norm2(factor.permute(product(a, x) - b).slice(0, k)), tolerance * norm2(x));
    EXPECT_TRUE(k < done || factor.fail() || x == factor.solve(b));
  }
}

}  // namespace

TEST(DoubleChDecomp, PivotsAndFactorBelongToTheMatrix) {
  // The sizes meet every path: one column, less than a register, parts of panels, several blocks.
  for (const unsigned n : {0U, 1U, 2U, 3U, 5U, 10U, 24U, 50U, 130U, 251U}) {
    std::vector<int> mixed;
    for (unsigned k = 0; k < n; ++k) mixed.push_back(static_cast<int>((k * k + n) % 3) - 1);
    int number = 0;
    for (const DoubleGenMat& a : symmetricMatrices(n)) {
      SCOPED_TRACE(testing::Message() << "matrix " << number++ << " of order " << n);
      for (const auto& specifiers : {{}, std::vector(n, 0), mixed}) expectFactors(a, specifiers);
    }
  }
}

TEST(DoubleChDecomp, EqualElementsAndSpecifiedOnesMoveInAFixedOrder) {
  RecordedMathErrors errors;
  for (const unsigned n : {6U, 100U}) {
    DoubleGenMat a = identity(n);
    std::vector<int> specifiers = {0, -1, 0, 1, 7, -5};
    specifiers.resize(n, DoubleChDecomp::FINAL);
    EXPECT_THAT(list(decompose(a, specifiers).pivots().slice(0, 6)), ElementsAre(3, 4, 2, 0, 1, 5));
    a.diagonal().slice(0, 6) = vectorOf({1.0, 3.0, 2.0, 3.0, 1.0, 2.0});
    std::fill_n(specifiers.begin(), 6, 0);
    EXPECT_THAT(list(decompose(a, specifiers).pivots().slice(0, 6)), ElementsAre(1, 3, 2, 5, 4, 0));
  }
}

TEST(DoubleChDecomp, NaNEndsTheFactoring) {
  for (const int n : {1, 7, 60, 200}) {
    for (const auto& [row, at] : {std::pair{0, 0}, {0, n / 2}, {n / 2, n / 2}, {0, n - 1}}) {
      DoubleGenMat a = symmetricMatrix(n, 10.0);
      a(row, at) = kNaN;
      EXPECT_EQ(at - 1, decompose(a).lastPosFactor());
      const DoubleChDecomp pivoted = decompose(a, std::vector(n, 0));
      EXPECT_FALSE(pivoted.isPD());
      const DoubleVec done = pivoted.diagonal().slice(0, pivoted.lastPosFactor() + 1);
      EXPECT_THAT(list(done), Each(testing::Gt(0.0)));
    }
  }
}

TEST(DoubleChDecomp, ReportsHowFarItGotAndSolvesThatFar) {
  RecordedMathErrors errors;
  const DoubleChDecomp none;
  EXPECT_TRUE(none.lastPosFactor() == -2 && !none.isPD() && none.good() && none.condition() == 0.0);
  EXPECT_EQ(0U, none.solve(DoubleVec()).length());
  EXPECT_EQ(0.0, DoubleChDecomp(identity(3)).condition());
  const double values[] = {4, 0, 0, 0, 9, 0, 0, 0, 0};
  const DoubleVec b(3U, 36.0);
  DoubleChDecomp factor(DoubleGenMat(values, 3, 3)), shared(factor);
  shared.setPivoting(0, DoubleChDecomp::FINAL);
  EXPECT_THAT(list(factor.pivots()), ElementsAre(1, 0, 2));
  EXPECT_TRUE(!factor.isPD() && factor.good() && factor.condition() == 0.0);
  EXPECT_EQ(1U, errors.takeTexts().size());
  factor(2, 2) = -1.5;
  EXPECT_TRUE(factor.fail() && factor.condition() == 0.25);
  EXPECT_THAT(list(factor.solve(b)), ElementsAre(9, 4, 0));
  EXPECT_THAT(list(factor.partialSolve(b, 4000000000U)), ElementsAre(4, 9));
  EXPECT_THAT(errors.takeTexts(),
              testing::Each("Can't solve system of equations, matrix not successfully factorized"));
}

TEST(DoubleChDecomp, PivotsOfOneFactoringAreTheSpecifiersOfTheNext) {
  DoubleChDecomp factor;
  EXPECT_EQ(0, factor.setPivoting(5, DoubleChDecomp::FINAL));
  EXPECT_EQ(-1, factor.setPivoting(5, DoubleChDecomp::INITIAL));
  factor.setPivoting(0, DoubleChDecomp::FINAL);
  for (const auto& expected : {std::vector{2, 1, 0}, {0, 1, 2}, {-1, 0, 1}}) {
    factor.doPivoting(expected[0] < 0 ? 0 : 1);  // without pivoting they only count down
    factor.factor(identity(3));
    EXPECT_EQ(expected, list(factor.pivots()));
  }
  EXPECT_THAT(list(factor.permute(DoubleVec(3U, 0.0, 1.0))), ElementsAre(0, 1, 2));
}

TEST(DoubleChDecomp, StorageOfOtherShapesAndSharedStorage) {
  const DoubleGenMat a = symmetricMatrix(20, 10.0);
  DoubleGenMat tall(23, 20, 5.0), spread(DoubleVec(800U, 0.0).slice(0, 400, 2), 20, 20);
  for (int i = 0; i < 20; ++i) tall.row(i) = a.row(i);
  spread = a;
  DoubleChDecomp factor(tall), plain(spread);
  EXPECT_TRUE(plain == DoubleChDecomp(a) && spread == a);
  EXPECT_TRUE(factor.lastPosFactor() == 19 && !factor.isPD() && factor(22, 0) == 5.0);
  const DoubleVec b = randomVector(20, 2);
  EXPECT_LT(norm2(factor.solve(b) - plain.solve(b)), 1e-13);

  // Factoring parts copies; assignment copies elements.
  const DoubleChDecomp view(factor);
  const DoubleGenMat before = view.copy();
  const auto pivots = list(view.pivots());
  factor.factor(DoubleGenMat(23, 20, 1.0));
  factor = view;
  EXPECT_TRUE(view == before && factor == before);
  EXPECT_TRUE(list(view.pivots()) == pivots && list(factor.pivots()) == pivots);
}

// Data x that start with the rows of an identity, for which y has zeros; the factor R of xᵀx,
// z = R⁻ᵀ xᵀy and the norms of the residuals of y, to which the other rows are added.
TEST(DoubleChDecomp, FollowsTheDataWhenRowsAndColumnsChange) {
  for (const int n : {1, 2, 9, 40}) {
    DoubleGenMat x = randomMatrix(3 * n + 4, n, n), y = randomMatrix(3 * n + 4, 3, 7);
    DoubleGenMat z(n, 3, 0.0);
    DoubleChDecomp r = decompose(identity(n));
    DoubleVec rho(3U, 0.0);
    const auto expectFits = [&] {
      const DoubleGenMat square = transposeProduct(x, x), factor = upper(r);
      const double unit = x.rows() * kEpsilon * kRatioLimit;
      EXPECT_LT(norm1(transposeProduct(factor, factor) - square), unit * norm1(square));
      EXPECT_LT(norm1(transposeProduct(factor, z) - transposeProduct(x, y)), unit * norm1(square));
      for (int j = 0; j < 3; ++j) {
        const double whole = dot(y.col(j), y.col(j));
        EXPECT_NEAR(whole, dot(z.col(j), z.col(j)) + rho(j) * rho(j), unit * whole);
      }
    };
    for (int i = 0; i < n; ++i) x.row(i) = 0.0;
    for (int i = 0; i <= n; ++i) y.row(i) = 0.0;
    x.diagonal() = 1.0;
    for (int i = n; i < 3 * n + 4; ++i) {
      const DoubleVec values = y.row(i).copy();
      r.update(x.row(i), &z, i > n ? &values : nullptr, &rho);
    }
    expectFits();
    for (int rows = 3 * n + 3; rows >= 3 * n; --rows) {
      const DoubleVec values = y.row(rows).copy();
      EXPECT_EQ(0, r.downdate(x.row(rows), &z, &values, &rho));
      x.resize(rows, n);
      y.resize(rows, 3);
    }
    // More than there is cannot be removed.
    const DoubleVec large(3U, 100.0);
    for (const double element : {100.0, kNaN}) {
      EXPECT_EQ(-1, r.downdate(DoubleVec(n, element), &z, &large, &rho));
    }
    expectFits();
    for (int number = 0; number < n * n; ++number) {
      const auto [first, last] = std::minmax({number / n, number % n});
      if (first == last) continue;
      const bool left = number / n < number % n;
      double* const begin = x.col(first).data();
      double* const end = x.col(last).data() + x.rows();
      std::rotate(begin, left ? begin + x.rows() : end - x.rows(), end);
      r.shift(first, last, left ? 0 : 1, &z);
      expectFits();
    }
    const DoubleVec row = x.row(n) * 0.5;
    EXPECT_EQ(1, r.downdate(row, &z, &large, &rho));
    r.update(row, &z, &large, &rho);
    EXPECT_THAT(list(rho), Each(-1.0));
  }
}

TEST(DoubleChDecomp, CosinesAndSinesAreToldApart) {
  for (const int change : {0, 1, 2, 3}) {
    DoubleChDecomp two = decompose(DoubleGenMat(vectorOf({1.0, 3.0, 3.0, 25.0}), 2, 2)),
                   one(DoubleGenMat(1, 1, change == 2 ? 9.0 : 25.0));
    // Of stride 2 for the shifts, 1 otherwise.
    DoubleVec c = DoubleVec(3U, 0.0).slice(0, 1, change < 2 ? 2 : 1), s = c.copy();
    if (change < 2) two.shift(0, 1, change, nullptr, &c, &s);
    if (change == 2) one.update(DoubleVec(1U, 4.0), nullptr, nullptr, nullptr, &c, &s);
    if (change == 3) one.downdate(DoubleVec(1U, 4.0), nullptr, nullptr, nullptr, &c, &s);
    EXPECT_TRUE(c.isEqual(0.6, kEpsilon) && s.isEqual(0.8, kEpsilon)) << change;
  }
}

TEST(DoubleChDecomp, ArgumentsAreChecked) {
  RecordedMathErrors errors;
  DoubleChDecomp factor = decompose(symmetricMatrix(4, 10.0));
  const DoubleGenMat before = composed(factor);
  DoubleGenMat z(3, 2, 1.0);
  DoubleVec two(2U, 7.0), three(3U, 7.0), spread = DoubleVec(8U, 7.0).slice(0, 4, 2);
  EXPECT_EQ(0U, factor.solve(two).length() + factor.partialSolve(DoubleVec(5U), 1).length());
  EXPECT_TRUE(factor.permute(two) == two && factor.unpermute(three) == three);
  factor.shift(0, 2, 3, &z, &two);
  factor.shift(1, 1, 0, &z, &two);
  factor.shift(-1, 2, 0);
  factor.shift(2, 4, 1);
  EXPECT_TRUE(composed(factor) == before);
  // Each change is undone by the next.
  factor.shift(0, 3, 0, &z, &two, &two);
  factor.shift(0, 3, 1);
  factor.update(three, &z, &three, &three, &two, &spread);
  EXPECT_EQ(0, factor.downdate(three, nullptr, &two));
  EXPECT_LT(norm1(composed(factor) - before), 1e3 * kEpsilon);
  EXPECT_TRUE(z == DoubleGenMat(3, 2, 1.0) && two == DoubleVec(2U, 7.0) &&
              three == DoubleVec(3U, 7.0) && spread(0) != 7.0);
  factor.setPivoting(0, 2);
  EXPECT_EQ(-1.0, factor.condition());
  const DoubleChDecomp wide(DoubleGenMat(2, 3, 1.0));
  EXPECT_TRUE(wide.lastPosFactor() == 0 && wide.condition() == 0.0 && wide.permute(two) == two);

  const std::string height = "Data matrix wrong height (3!=4)",
                    rotations = "Vector to hold sines or cosines wrong length (2!=",
                    residuals = "Different number of residuals than data columns (",
                    columns = "Invalid Cholesky shift columns (",
                    length = "b vector length wrong (";
  EXPECT_THAT(
      errors.takeTexts(),
      ElementsAre(length + "2!=4)", length + "5!=4)", "vector wrong length to permute (2!=4)",
                  "vector wrong length to permute (3!=4)", "Invalid Cholesky shift direction",
                  height, columns + "1,1)", height, columns + "-1,2)", columns + "2,4)", height,
                  rotations + "3)", rotations + "3)", "vec pointers must have stride == 1",
                  length + "3!=4)", height, rotations + "4)", residuals + "3!=2)",
                  residuals + "3!=2)", length + "3!=4)", residuals + "2!=0)",
                  "Pivoting position specifier must be INITIAL,FREE, or FINAL, not 2",
                  "Condition number not calculated",
                  "Matrix must have more rows than cols to be factorizable, but 2<3"));
}
