#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include <kilnbase/linalg/DoubleChDecomp.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using kilntest::RecordedMathErrors;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kRatioLimit = 30.0;

// The sizes meet every path: one column, less than a register, parts of panels, several blocks.
constexpr unsigned kSizes[] = {0, 1, 2, 3, 5, 10, 24, 50, 130, 251};

template <class V>
auto list(const V& v) {
  return std::vector(v.data(), v.data() + v.length());
}

DoubleGenMat definiteMatrix(unsigned n, double condition, std::uint64_t seed) {
  const DoubleGenMat x = kilntest::matrixWithCondition(n, n, std::sqrt(condition), seed);
  return transposeProduct(x, x);
}

// Mirrors the upper triangle.
void symmetrize(DoubleGenMat& a) {
  for (int j = 0; j < static_cast<int>(a.cols()); ++j) {
    for (int i = j + 1; i < static_cast<int>(a.cols()); ++i) a(i, j) = a(j, i);
  }
}

// A symmetric matrix with this many eigenvalues below 0 and the others above it.
DoubleGenMat indefiniteMatrix(unsigned n, unsigned negative, std::uint64_t seed) {
  const DoubleGenMat x = kilntest::matrixWithCondition(n, n, 5.0, seed);
  DoubleGenMat y = x.copy();
  for (unsigned i = 0; i < negative; ++i) y.row(static_cast<int>(i)) *= -1.0;
  DoubleGenMat a = transposeProduct(x, y);
  symmetrize(a);
  return a;
}

// The matrix that a decomposition stands for: RᵀR of the columns that were eliminated plus what is
// left of the others.
DoubleGenMat composed(const DoubleChDecomp& factor) {
  const auto n = static_cast<int>(factor.cols());
  const int done = factor.lastPosFactor() + 1;
  DoubleGenMat r(factor.cols(), factor.cols(), 0.0), rest(factor.cols(), factor.cols(), 0.0);
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i <= j; ++i) (i < done ? r : rest)(i, j) = factor(i, j);
  }
  symmetrize(rest);
  return transposeProduct(r, r) + rest;
}

// ‖RᵀR - PᵀAP‖ / (n ‖A‖ epsilon).
double residualRatio(const DoubleGenMat& a, DoubleChDecomp& factor) {
  if (a.cols() == 0) return 0.0;
  DoubleGenMat permuted = a.copy();
  if (factor.doPivoting(0) != 0) permuted = a(factor.pivots(), factor.pivots());
  return kilntest::norm1(composed(factor) - permuted) / (a.cols() * kilntest::norm1(a) * kEpsilon);
}

DoubleChDecomp decompose(const DoubleGenMat& a, int pivoting,
                         const std::vector<int>& specifiers = {}) {
  DoubleChDecomp factor;
  factor.doPivoting(pivoting);
  for (std::size_t k = 0; k < specifiers.size(); ++k) {
    factor.setPivoting(static_cast<int>(k), specifiers[k]);
  }
  factor.factor(a);
  return factor;
}

// The algorithm one column at a time, on a full symmetric matrix.
struct PlainCholesky {
  DoubleGenMat a;
  std::vector<int> pivots;
  int done = 0;

  PlainCholesky(const DoubleGenMat& matrix, bool pivoting, std::vector<int> specifiers)
      : a(matrix.copy()), specifiers_(std::move(specifiers)) {
    const auto n = static_cast<int>(a.cols());
    specifiers_.resize(a.cols());
    for (int k = 0; k < n; ++k) pivots.push_back(k);
    if (pivoting) arrange();
    for (; done < n; ++done) {
      const int pivot = pivoting ? largest(done) : done;
      if (!(a(pivot, pivot) > 0.0)) break;
      exchange(done, pivot);
      eliminate(done);
    }
  }

 private:
  std::vector<int> specifiers_;

  void exchange(int k, int l) {
    const DoubleVec row = a.row(k).copy();
    a.row(k) = a.row(l);
    a.row(l) = row;
    const DoubleVec column = a.col(k).copy();
    a.col(k) = a.col(l);
    a.col(l) = column;
    std::swap(pivots[static_cast<std::size_t>(k)], pivots[static_cast<std::size_t>(l)]);
  }
  int specifier(int k) const {
    return specifiers_[static_cast<std::size_t>(pivots[static_cast<std::size_t>(k)])];
  }
  void arrange() {
    const auto n = static_cast<int>(a.cols());
    int front = 0, back = n;
    for (int k = 0; k < n; ++k) {
      if (specifier(k) > 0) exchange(front++, k);
    }
    for (int k = n - 1; k >= front; --k) {
      if (specifier(k) < 0) exchange(k, --back);
    }
  }
  int largest(int k) const {
    int best = k;
    for (int l = k + 1; specifier(k) == 0 && l < static_cast<int>(a.cols()); ++l) {
      if (specifier(l) == 0 && a(l, l) > a(best, best)) best = l;
    }
    return best;
  }
  void eliminate(int k) {
    a(k, k) = std::sqrt(a(k, k));
    for (int j = k + 1; j < static_cast<int>(a.cols()); ++j) a(k, j) /= a(k, k);
    for (int j = k + 1; j < static_cast<int>(a.cols()); ++j) {
      for (int i = k + 1; i < static_cast<int>(a.cols()); ++i) a(i, j) -= a(k, i) * a(k, j);
    }
  }
};

// Compares the upper triangles, the pivots and where the factoring ended.
void expectSame(const PlainCholesky& plain, const DoubleChDecomp& factor, double tolerance) {
  const auto n = static_cast<int>(factor.cols());
  EXPECT_EQ(plain.done, factor.lastPosFactor() + 1);
  if (factor.pivots().length() != 0) {
    EXPECT_EQ(plain.pivots, list(factor.pivots()));
  }
  double worst = 0.0;
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i <= j; ++i) worst = std::max(worst, std::fabs(plain.a(i, j) - factor(i, j)));
  }
  EXPECT_LE(worst, tolerance);
}

void fillBelowDiagonal(DoubleGenMat& a, double value) {
  for (int j = 0; j < static_cast<int>(a.cols()); ++j) {
    for (int i = j + 1; i < static_cast<int>(a.rows()); ++i) a(i, j) = value;
  }
}

}  // namespace

TEST(DoubleChDecomp, ResidualsAreSmall) {
  double worst = 0.0;
  for (const unsigned n : kSizes) {
    for (const double condition : {2.0, std::sqrt(0.1 / kEpsilon), 0.1 / kEpsilon}) {
      for (const double scale : {1.0, 1e290, 1e-290}) {
        for (const int pivoting : {0, 1}) {
          const DoubleGenMat a = definiteMatrix(n, condition, n + 1) * scale;
          DoubleChDecomp factor = decompose(a, pivoting);
          const double ratio = residualRatio(a, factor);
          worst = std::max(worst, ratio);
          EXPECT_LT(ratio, kRatioLimit) << n << " " << condition << " " << scale << " " << pivoting;
          EXPECT_TRUE(factor.isPD() || condition > 1e15) << n;
        }
      }
    }
  }
  RecordProperty("worst", std::to_string(worst));
}

TEST(DoubleChDecomp, StopsAtThePivotAndWithTheRestOfThePlainAlgorithm) {
  for (const unsigned n : kSizes) {
    for (const unsigned negative : {0U, 1U, n / 3, n}) {
      for (const int pivoting : {0, 1}) {
        if (negative > n) continue;
        SCOPED_TRACE(testing::Message() << n << " " << negative << " " << pivoting);
        DoubleGenMat a = indefiniteMatrix(n, negative, n);
        const PlainCholesky plain(a, pivoting != 0, {});
        // What stands below the diagonal is neither used nor changed.
        fillBelowDiagonal(a, kNaN);
        const DoubleChDecomp factor = decompose(a, pivoting);
        expectSame(plain, factor, 1e3 * n * kEpsilon);
        EXPECT_EQ(negative == 0, factor.isPD());
        for (int j = 0; j < static_cast<int>(n); ++j) {
          for (int i = j + 1; i < static_cast<int>(n); ++i) ASSERT_TRUE(std::isnan(factor(i, j)));
        }
      }
    }
  }
}

TEST(DoubleChDecomp, ExactlySemidefiniteMatricesEndAtTheirRank) {
  for (const unsigned n : {5U, 30U, 130U, 251U}) {
    for (const unsigned rank : {1U, n / 2, n - 1}) {
      // An integer factor: every number on the way is exact.
      DoubleGenMat r(rank, n, 0.0);
      for (int j = 0; j < static_cast<int>(n); ++j) {
        for (int i = 0; i <= std::min(j, static_cast<int>(rank) - 1); ++i)
          r(i, j) = (3 * i + 5 * j) % 7;
      }
      r.diagonal(0) = 3.0;
      const DoubleChDecomp factor = decompose(transposeProduct(r, r), 0);
      EXPECT_EQ(static_cast<int>(rank) - 1, factor.lastPosFactor());
      EXPECT_TRUE(factor.good());
      DoubleGenMat own(factor.copy());
      fillBelowDiagonal(own, 0.0);
      r.resize(n, n);
      EXPECT_TRUE(own == r) << n << " " << rank;
    }
  }
}

TEST(DoubleChDecomp, SpecifiersHoldElementsAtTheFrontAndTheEnd) {
  for (const unsigned n : {2U, 5U, 40U, 130U}) {
    for (unsigned pattern = 0; pattern < 4; ++pattern) {
      std::vector<int> specifiers;
      for (unsigned k = 0; k < n; ++k)
        specifiers.push_back(static_cast<int>((k * k + pattern) % 3) - 1);
      const DoubleGenMat a = indefiniteMatrix(n, pattern / 2, n);
      SCOPED_TRACE(testing::Message() << n << " " << pattern);
      expectSame(PlainCholesky(a, true, specifiers), decompose(a, 1, specifiers),
                 1e3 * n * kEpsilon);
    }
  }
}

TEST(DoubleChDecomp, NaNEndsTheFactoring) {
  for (const unsigned n : {1U, 7U, 60U, 200U}) {
    for (const int at : {0, static_cast<int>(n) / 2, static_cast<int>(n) - 1}) {
      for (const int pivoting : {0, 1}) {
        DoubleGenMat a = definiteMatrix(n, 10.0, n);
        a(at, at) = kNaN;
        const DoubleChDecomp onDiagonal = decompose(a, pivoting);
        EXPECT_FALSE(onDiagonal.isPD());
        if (pivoting == 0) {
          EXPECT_EQ(at - 1, onDiagonal.lastPosFactor());
        }
        a = definiteMatrix(n, 10.0, n);
        a(0, at) = kNaN;
        EXPECT_FALSE(decompose(a, pivoting).isPD());
      }
    }
  }
}

TEST(DoubleChDecomp, SolvesInTheOrderOfTheMatrix) {
  for (const unsigned n : {1U, 4U, 33U, 150U}) {
    for (const int pivoting : {0, 1}) {
      const DoubleGenMat a = definiteMatrix(n, 100.0, n);
      const DoubleVec b = kilntest::randomVector(2 * n, 3).slice(0, n, 2);
      const DoubleChDecomp factor = decompose(a, pivoting);
      const DoubleVec x = factor.solve(b);
      const double scale = kilntest::norm1(a) * kilntest::norm2(x) * n * kEpsilon;
      EXPECT_LT(kilntest::norm2(product(a, x) - b) / scale, kRatioLimit);
      EXPECT_EQ(b, factor.unpermute(factor.permute(b)));

      // Of the leading columns alone: the system without the other unknowns.
      const unsigned k = (n + 1) / 2;
      DoubleVec part = factor.partialSolve(b, k);
      ASSERT_EQ(k, part.length());
      part.resize(n);
      const DoubleVec left = factor.permute(product(a, factor.unpermute(part)) - b).slice(0, k);
      EXPECT_LT(kilntest::norm2(left) / scale, kRatioLimit);
    }
  }
}

TEST(DoubleChDecomp, UnusableSystemsAreReportedAndSolvedAsFarAsFactored) {
  RecordedMathErrors errors;
  const std::string failed = "Can't solve system of equations, matrix not successfully factorized";
  const double values[] = {4, 0, 0, 0, 9, 0, 0, 0, -1};
  const DoubleChDecomp factor(DoubleGenMat(values, 3, 3));
  EXPECT_THAT(list(factor.solve(DoubleVec(3U, 36.0))), ElementsAre(9, 4, 0));
  EXPECT_THAT(list(factor.partialSolve(DoubleVec(3U, 36.0), 3)), ElementsAre(4, 9));
  EXPECT_THAT(list(factor.partialSolve(DoubleVec(3U, 36.0), 1)), ElementsAre(4));
  EXPECT_EQ(0U, DoubleChDecomp().solve(DoubleVec()).length());
  EXPECT_EQ(2U, factor.partialSolve(DoubleVec(3U, 36.0), 4000000000U).length());
  EXPECT_THAT(errors.takeTexts(), ElementsAre(failed, failed, failed, failed));

  const double semidefinite[] = {4, 0, 0, 0, 9, 0, 0, 0, 0};
  DoubleChDecomp deficient(DoubleGenMat(semidefinite, 3, 3));
  DoubleChDecomp shared(deficient);
  shared.setPivoting(0, DoubleChDecomp::FINAL);
  EXPECT_TRUE(deficient.good());
  EXPECT_THAT(list(deficient.solve(DoubleVec(3U, 36.0))), ElementsAre(9, 4, 0));
  EXPECT_TRUE(errors.takeTexts().empty());

  EXPECT_EQ(0U, factor.solve(DoubleVec(2U)).length());
  EXPECT_EQ(0U, factor.partialSolve(DoubleVec(4U), 1).length());
  EXPECT_EQ(2U, factor.permute(DoubleVec(2U, 0.0)).length());
  EXPECT_EQ(4U, factor.unpermute(DoubleVec(4U, 0.0)).length());
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre("b vector length wrong (2!=3)", "b vector length wrong (4!=3)",
                          "vector wrong length to permute (2!=3)",
                          "vector wrong length to permute (4!=3)"));
}

TEST(DoubleChDecomp, ReportsHowFarItGot) {
  RecordedMathErrors errors;
  const DoubleChDecomp none;
  EXPECT_EQ(-2, none.lastPosFactor());
  EXPECT_FALSE(none.isPD());
  EXPECT_TRUE(none.good());
  EXPECT_EQ(0.0, none.condition());

  const double values[] = {1, 0, 0, 0, 4, 0, 0, 0, 0};
  DoubleChDecomp semidefinite(DoubleGenMat(values, 3, 3));
  EXPECT_THAT(list(semidefinite.pivots()), ElementsAre(1, 0, 2));
  EXPECT_EQ(1, semidefinite.lastPosFactor());
  EXPECT_TRUE(semidefinite.good());
  EXPECT_EQ(0.0, semidefinite.condition());
  semidefinite(2, 2) = -1.0;
  EXPECT_TRUE(semidefinite.fail());
  EXPECT_EQ(0.25, semidefinite.condition());
  EXPECT_EQ(0.0, DoubleChDecomp(kilntest::identity(3)).condition());
  EXPECT_THAT(errors.takeTexts(), IsEmpty());

  EXPECT_EQ(1, semidefinite.doPivoting(0));
  EXPECT_EQ(0, semidefinite.doPivoting(0));
  EXPECT_EQ(-1.0, semidefinite.condition());
  EXPECT_THAT(errors.takeTexts(), ElementsAre("Condition number not calculated"));
}

TEST(DoubleChDecomp, SpecifiersGrowThePivotVector) {
  RecordedMathErrors errors;
  DoubleChDecomp factor;
  EXPECT_EQ(0, factor.setPivoting(5, DoubleChDecomp::FINAL));
  EXPECT_THAT(list(factor.pivots()), ElementsAre(0, 0, 0, 0, 0, -1));
  EXPECT_EQ(-1, factor.setPivoting(5, 2));
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre("Pivoting position specifier must be INITIAL,FREE, or FINAL, not 2"));
  factor.setPivoting(0, DoubleChDecomp::FINAL);
  factor.factor(kilntest::identity(3));
  EXPECT_THAT(list(factor.pivots()), ElementsAre(2, 1, 0));
  // The pivots of one factoring are the specifiers of the next.
  factor.factor(kilntest::identity(3));
  EXPECT_THAT(list(factor.pivots()), ElementsAre(0, 1, 2));
  // Without pivoting they only count down.
  factor.doPivoting(0);
  factor.factor(kilntest::identity(3));
  EXPECT_THAT(list(factor.pivots()), ElementsAre(-1, 0, 1));
  EXPECT_THAT(list(factor.permute(DoubleVec(3U, 0.0, 1.0))), ElementsAre(0, 1, 2));
}

TEST(DoubleChDecomp, MatricesThatAreNotSquareOrContiguous) {
  RecordedMathErrors errors;
  const DoubleGenMat a = definiteMatrix(20, 10.0, 1);
  DoubleGenMat tall = a.copy();
  tall.resize(23, 20);
  tall(22, 0) = 5.0;
  DoubleChDecomp factor(tall);
  EXPECT_EQ(19, factor.lastPosFactor());
  EXPECT_FALSE(factor.isPD());
  EXPECT_EQ(5.0, factor(22, 0));
  const DoubleVec b = kilntest::randomVector(20, 2);
  EXPECT_LT(kilntest::norm2(factor.solve(b) - DoubleChDecomp(a).solve(b)), 1e-13);
  EXPECT_THAT(errors.takeTexts(), IsEmpty());

  DoubleChDecomp wide(DoubleGenMat(2, 3, 1.0));
  EXPECT_EQ(0, wide.lastPosFactor());
  EXPECT_EQ(0.0, wide.condition());
  EXPECT_EQ(2U, wide.permute(DoubleVec(2U, 0.0)).length());
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre("Matrix must have more rows than cols to be factorizable, but 2<3"));

  DoubleVec store(800U, 0.0);
  DoubleGenMat spread(store.slice(0, 400, 2), 20, 20);
  spread = a;
  const DoubleChDecomp fromSpread(spread);
  EXPECT_TRUE(fromSpread == DoubleChDecomp(a));
  EXPECT_TRUE(spread == a);
}

TEST(DoubleChDecomp, CopiesShareAndRefactoringParts) {
  DoubleChDecomp factor(definiteMatrix(3, 10.0, 1));
  const DoubleChDecomp view(factor);
  const DoubleGenMat before = view.copy();
  const std::vector<int> pivots = list(view.pivots());
  factor.factor(kilntest::identity(3));
  EXPECT_TRUE(view == before);
  EXPECT_EQ(pivots, list(view.pivots()));
  EXPECT_EQ(2, factor.lastPosFactor());
  factor = view;
  EXPECT_TRUE(factor == before);
  EXPECT_EQ(pivots, list(factor.pivots()));
}

namespace {

DoubleGenMat stacked(const DoubleGenMat& top, const DoubleGenMat& bottom) {
  DoubleGenMat all = top.copy();
  all.resize(top.rows() + bottom.rows(), top.cols());
  for (int i = 0; i < static_cast<int>(bottom.rows()); ++i) {
    all.row(static_cast<int>(top.rows()) + i) = bottom.row(i);
  }
  return all;
}

// The factor R of XᵀX, Z = R⁻ᵀ XᵀY and the norms of the residuals of Y.
struct Regression {
  DoubleChDecomp r;
  DoubleGenMat z;
  DoubleVec rho;

  Regression(const DoubleGenMat& x, const DoubleGenMat& y)
      : r(decompose(transposeProduct(x, x), 0)), z(transposeProduct(x, y)), rho(y.cols()) {
    for (int j = 0; j < static_cast<int>(y.cols()); ++j) {
      DoubleVec column = z.col(j);
      for (int i = 0; i < static_cast<int>(z.rows()); ++i) {
        column(i) = (column(i) - dot(r.col(i).slice(0, i), column.slice(0, i))) / r(i, i);
      }
      rho(j) = residualNorm(y, j);
    }
  }

  double residualNorm(const DoubleGenMat& y, int j) const {
    return std::sqrt(dot(y.col(j), y.col(j)) - dot(z.col(j), z.col(j)));
  }

  // Whether all of it belongs to these data.
  void expectFits(const DoubleGenMat& x, const DoubleGenMat& y) const {
    const DoubleGenMat square = transposeProduct(x, x), mixed = transposeProduct(x, y);
    const double unit = x.cols() * kEpsilon * kRatioLimit;
    EXPECT_LT(kilntest::norm1(composed(r) - square), unit * kilntest::norm1(square));
    DoubleGenMat upper = r.copy();
    fillBelowDiagonal(upper, 0.0);
    EXPECT_LT(kilntest::norm1(transposeProduct(upper, z) - mixed), unit * kilntest::norm1(square));
    for (int j = 0; j < static_cast<int>(y.cols()); ++j) {
      EXPECT_NEAR(residualNorm(y, j), rho(j), unit * kilntest::norm1(y));
    }
  }
};

}  // namespace

TEST(DoubleChDecomp, RowsAreAddedAndRemovedAgain) {
  for (const unsigned n : {1U, 2U, 9U, 40U}) {
    const DoubleGenMat x = kilntest::randomMatrix(2 * n, n, n),
                       y = kilntest::randomMatrix(2 * n, 3, 7);
    const DoubleGenMat rows = kilntest::randomMatrix(4, n, 8),
                       values = kilntest::randomMatrix(4, 3, 9);
    Regression regression(x, y);
    DoubleVec cosines(n), sines(n);
    for (int i = 0; i < 4; ++i) {
      const DoubleVec row = values.row(i).copy();
      regression.r.update(rows.row(i), &regression.z, &row, &regression.rho, &cosines, &sines);
      EXPECT_TRUE((cosines * cosines + sines * sines).isEqual(1.0, 10 * kEpsilon));
    }
    regression.expectFits(stacked(x, rows), stacked(y, values));
    for (int i = 3; i >= 0; --i) {
      const DoubleVec row = values.row(i).copy();
      EXPECT_EQ(0, regression.r.downdate(rows.row(i), &regression.z, &row, &regression.rho));
    }
    regression.expectFits(x, y);

    // More than there is cannot be removed.
    const DoubleGenMat r = regression.r.copy(), z = regression.z.copy();
    EXPECT_EQ(-1, regression.r.downdate(DoubleVec(n, 100.0), &regression.z));
    EXPECT_EQ(-1, regression.r.downdate(DoubleVec(n, kNaN), &regression.z));
    EXPECT_TRUE(regression.r == r && regression.z == z);
    const DoubleVec large(3U, 100.0);
    EXPECT_EQ(1, regression.r.downdate(x.row(0), &regression.z, &large, &regression.rho));
    EXPECT_THAT(list(regression.rho), Each(-1.0));
    regression.r.update(x.row(0), &regression.z, &large, &regression.rho);
    EXPECT_THAT(list(regression.rho), Each(-1.0));
  }
}

TEST(DoubleChDecomp, ShiftsFollowThePermutedMatrix) {
  const int n = 12;
  const DoubleGenMat x = kilntest::randomMatrix(30, n, 1), y = kilntest::randomMatrix(30, 2, 2);
  for (int first = 0; first < n; first += 3) {
    for (int last = first + 1; last < n; last += 2) {
      for (const int direction : {0, 1}) {
        SCOPED_TRACE(testing::Message() << first << " " << last << " " << direction);
        std::vector<int> order;
        for (int i = 0; i < n; ++i) order.push_back(i);
        const auto begin = order.begin() + first, end = order.begin() + last + 1;
        std::rotate(begin, direction == 0 ? begin + 1 : end - 1, end);
        const IntVec columns(order.data(), n);
        IntVec rows(30U);
        for (int i = 0; i < 30; ++i) rows(i) = i;

        Regression regression(x, y);
        DoubleVec store(2U * static_cast<unsigned>(last - first));
        DoubleVec cosines = store.slice(0, store.length() / 2, 2);
        DoubleVec sines = store.slice(1, store.length() / 2, 2);
        regression.r.shift(first, last, direction, &regression.z, &cosines, &sines);
        regression.expectFits(x(rows, columns), y);
        EXPECT_TRUE((cosines * cosines + sines * sines).isEqual(1.0, 10 * kEpsilon));
      }
    }
  }
}

TEST(DoubleChDecomp, ArgumentsOfShiftsAndUpdatesAreChecked) {
  RecordedMathErrors errors;
  DoubleChDecomp factor(kilntest::identity(4));
  const DoubleGenMat before = factor.copy();
  DoubleGenMat z(3, 2, 1.0);
  DoubleVec two(2U, 7.0);
  factor.shift(0, 2, 3, &z, &two);
  factor.shift(1, 1, 0, &z, &two);
  factor.shift(-1, 2, 0);
  factor.shift(2, 4, 1);
  EXPECT_TRUE(factor == before);
  factor.shift(0, 3, 0, &z, &two, &two);
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre("Invalid Cholesky shift direction", "Data matrix wrong height (3!=4)",
                          "Invalid Cholesky shift columns (1,1)", "Data matrix wrong height (3!=4)",
                          "Invalid Cholesky shift columns (-1,2)",
                          "Invalid Cholesky shift columns (2,4)", "Data matrix wrong height (3!=4)",
                          "Vector to hold sines or cosines wrong length (2!=3)",
                          "Vector to hold sines or cosines wrong length (2!=3)"));

  DoubleVec three(3U, 7.0), spread = DoubleVec(8U, 7.0).slice(0, 4, 2);
  factor.update(DoubleVec(3U, 1.0), &z, &three, &three, &two, &spread);
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre("vec pointers must have stride == 1", "b vector length wrong (3!=4)",
                          "Data matrix wrong height (3!=4)",
                          "Vector to hold sines or cosines wrong length (2!=4)",
                          "Different number of residuals than data columns (3!=2)",
                          "Different number of residuals than data columns (3!=2)"));
  EXPECT_EQ(0, factor.downdate(DoubleVec(3U, 1.0)));
  EXPECT_EQ(-1, factor.downdate(DoubleVec(4U, 2.0), nullptr, &two));
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre("b vector length wrong (3!=4)",
                          "Different number of residuals than data columns (2!=0)"));
  EXPECT_LT(kilntest::norm1(composed(factor) - kilntest::identity(4)), 100 * kEpsilon);
  EXPECT_EQ(1.0, z(0, 0));
  EXPECT_THAT(list(two), Each(7.0));
  EXPECT_THAT(list(three), Each(7.0));
  EXPECT_NE(7.0, spread(0));
}
