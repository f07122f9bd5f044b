#include <algorithm>
#include <cmath>
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
using namespace vxKilnBase;
using testing::Each;
using testing::ElementsAre;

namespace {

constexpr double kRatioLimit = 30.0;

DoubleGenMat upper(const DoubleGenMat& a, double below = 0.0) {
  DoubleGenMat result = a.copy();
  for (unsigned i = 1; i < a.rows(); ++i) result.row(i).slice(0, std::min(i, a.cols())) = below;
  return result;
}

// A symmetric matrix with `negative` eigenvalues below 0 and the others above 0.
DoubleGenMat symmetricMatrix(unsigned n, double condition, unsigned negative = 0) {
  const DoubleGenMat x = matrixWithCondition(n, n, std::sqrt(condition), n + 1);
  DoubleGenMat y = x.copy();
  for (unsigned i = 0; i < negative; ++i) y.row(i) *= -1.0;
  return transposeProduct(x, y);
}

// Decomposes the symmetric matrix whose upper triangle is that of `a`. Without specifiers does not
// pivot.
DoubleChDecomp decompose(const DoubleGenMat& a, const std::vector<int>& specifiers = {}) {
  DoubleChDecomp factor;
  EXPECT_EQ(1, factor.doPivoting(specifiers.empty() ? 0 : 1));
  int k = 0;
  for (const int position : specifiers) factor.setPivoting(k++, position);
  factor.factor(upper(a, kNaN));
  return factor;
}

// Checks the factor of `a` with these specifiers against its definition.
void expectFactors(const DoubleGenMat& a, std::vector<int> specifiers) {
  const auto n = static_cast<int>(a.cols());
  const DoubleChDecomp factor = decompose(a, specifiers);
  const IntVec pivots = factor.pivots();
  const IntVec moved = IntVec(specifiers.data(), pivots.length()).vecPick(pivots);
  std::sort(specifiers.rbegin(), specifiers.rend());
  EXPECT_EQ(specifiers, list(moved));

  // Pᵀ A P = RᵀR of the factored rows plus the remainder behind them.
  const int done = factor.lastPosFactor() + 1;
  DoubleGenMat r = upper(factor), rest = r.copy();
  for (int i = 0; i < n; ++i) (i < done ? rest : r).row(i) = 0.0;
  const DoubleGenMat permuted = specifiers.empty() ? a.copy() : DoubleGenMat(a(pivots, pivots)),
                     error = upper(transposeProduct(r, r) - permuted) + rest;
  const double tolerance = kRatioLimit * n * kEpsilon * norm1(a);
  EXPECT_TRUE(error == error) << "has a NaN";
  EXPECT_LE(norm1(error), tolerance);
  for (int k = 1; k < n; ++k) EXPECT_THAT(list(factor.diagonal(-k)), Each(testing::IsNan()));

  const auto begin = static_cast<int>(std::count(specifiers.begin(), specifiers.end(), 1));
  const int end = begin + static_cast<int>(std::count(specifiers.begin(), specifiers.end(), 0));
  // No candidate for a pivot exceeds the pivot that was taken.
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

  // The first k columns solve the first k equations.
  const DoubleVec b = randomVector(2 * n + 2, 3).slice(0, n, 2);
  for (const int k : {done / 2, done}) {
    DoubleVec x = factor.partialSolve(b, k);
    ASSERT_EQ(k, x.length());
    x.resize(n);
    x = factor.unpermute(x);
    EXPECT_LE(norm2(factor.permute(product(a, x) - b).slice(0, k)), tolerance * norm2(x));
  }
  if (done == 0) return;
  const DoubleGenMat many = randomMatrix(n, 29, 5), x = factor.solve(many);
  EXPECT_EQ(0U, factor.solve(DoubleGenMat(n, 0)).cols());
  for (int j = 0; j < 29; ++j) {
    const DoubleVec miss = product(a, x.col(j)) - many.col(j);
    EXPECT_LE(norm2(factor.permute(miss).slice(0, done)), tolerance * norm2(x.col(j)));
  }
}

}  // namespace

TEST(DoubleChDecomp, PivotsAndFactorBelongToTheMatrix) {
  // One column, less than a register, parts of panels, several blocks.
  for (const unsigned n : {0U, 1U, 2U, 3U, 5U, 10U, 24U, 50U, 130U, 251U}) {
    std::vector<DoubleGenMat> matrices = {DoubleGenMat(n, n, 0.0)};
    for (const double condition : {2.0, std::sqrt(0.1 / kEpsilon), 0.1 / kEpsilon}) {
      const DoubleGenMat a = symmetricMatrix(n, condition);
      matrices.insert(matrices.end(), {a, a * 1e290, a * 1e-290});
    }
    for (unsigned count = n; count > 0; count -= (count + 2) / 3) {
      // `count` negative eigenvalues; rank `count`, where all numbers are integers and factoring
      // ends at an exact 0.
      const DoubleGenMat r = upper(DoubleGenMat(count, n, 1.0));
      matrices.insert(matrices.end(), {symmetricMatrix(n, 25.0, count), transposeProduct(r, r)});
    }
    std::vector<int> mixed;
    for (unsigned k = 0; k < n; ++k) mixed.push_back(static_cast<int>((k * k + n) % 3) - 1);
    for (unsigned i = 0; i < matrices.size(); ++i) {
      SCOPED_TRACE(testing::Message() << "matrix " << i << " of order " << n);
      for (const auto& order : {{}, std::vector(n, 0), mixed}) expectFactors(matrices[i], order);
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
  // The pivots of one factoring are the specifiers of the next.
  DoubleChDecomp factor;
  EXPECT_EQ(0, factor.setPivoting(5, DoubleChDecomp::FINAL));
  EXPECT_EQ(-1, factor.setPivoting(5, DoubleChDecomp::INITIAL));
  factor.setPivoting(0, DoubleChDecomp::FINAL);
  for (const auto& expected : {std::vector{2, 1, 0}, {0, 1, 2}, {-1, 0, 1}}) {
    factor.doPivoting(expected[0] < 0 ? 0 : 1);  // without pivoting 1 is subtracted, no more
    factor.factor(identity(3));
    EXPECT_EQ(expected, list(factor.pivots()));
  }
  EXPECT_THAT(list(factor.permute(DoubleVec(3U, 0.0, 1.0))), ElementsAre(0, 1, 2));
}

TEST(DoubleChDecomp, NaNEndsTheFactoring) {
  for (const int n : {1, 7, 60, 200}) {
    for (const auto& [row, at] : {std::pair{0, 0}, {0, n / 2}, {n / 2, n / 2}, {0, n - 1}}) {
      DoubleGenMat a = symmetricMatrix(n, 10.0);
      a(row, at) = kNaN;
      EXPECT_EQ(at - 1, decompose(a).lastPosFactor());
      EXPECT_FALSE(decompose(a, std::vector(n, 0)).isPD());
    }
  }
}

TEST(DoubleChDecomp, StorageOfOtherShapesAndSharedStorage) {
  const DoubleGenMat a = symmetricMatrix(20, 10.0);
  DoubleGenMat tall = a.copy(), spread(DoubleVec(800U, 0.0).slice(0, 400, 2), 20, 20);
  tall.resize(23, 20);
  spread = a;
  const DoubleChDecomp plain(a), ofTall(tall);
  DoubleChDecomp factor(spread);
  EXPECT_EQ(plain, factor);
  EXPECT_EQ(a, spread);
  factor.reference(DoubleGenMat(DoubleVec(920U, 0.0).slice(0, 460, 2), 23, 20));
  factor = ofTall;
  const DoubleVec b = randomVector(20, 2);
  for (const DoubleChDecomp& same : {factor, ofTall}) {
    EXPECT_EQ(19, same.lastPosFactor());
    EXPECT_FALSE(same.isPD());
    EXPECT_LT(norm2(same.solve(b) - plain.solve(b)), 1e-13);
  }
  factor.update(b * 0.01);
  EXPECT_EQ(0, factor.downdate(b * 0.01));
  EXPECT_LT(norm2(factor.solve(b) - plain.solve(b)), 1e-13);
}

// R, z and rho are the factor of XᵀX, R⁻ᵀXᵀY and the norms of the residuals of Y. X begins with the
// rows of an identity, Y with rows of 0.
TEST(DoubleChDecomp, FollowsTheDataWhenRowsAndColumnsChange) {
  for (const int n : {1, 2, 9, 40}) {
    DoubleGenMat x = randomMatrix(2 * n + 4, n, n), y = randomMatrix(2 * n + 4, 3, 7);
    DoubleGenMat z(n, 3, 0.0);
    DoubleChDecomp r = decompose(identity(n));
    DoubleVec rho(3U, 0.0);
    const auto expectFits = [&] {
      const DoubleGenMat square = transposeProduct(x, x) + identity(n), factor = upper(r);
      const double unit = 3 * x.rows() * kEpsilon * kRatioLimit;
      EXPECT_LT(norm1(transposeProduct(factor, factor) - square), unit * norm1(square));
      EXPECT_LT(norm1(transposeProduct(factor, z) - transposeProduct(x, y)), unit * norm1(square));
      for (int j = 0; j < 3; ++j) {
        const double whole = dot(y.col(j), y.col(j));
        EXPECT_NEAR(whole, dot(z.col(j), z.col(j)) + rho(j) * rho(j), unit * whole);
      }
    };
    y.row(0) = 0.0;
    for (int i = 0; i < 2 * n + 4; ++i) {
      const DoubleVec values = y.row(i).copy();
      r.update(x.row(i), &z, i > 0 ? &values : nullptr, &rho);
    }
    expectFits();
    for (int rows = 2 * n + 3; rows >= 2 * n; --rows) {
      const DoubleVec values = y.row(rows).copy();
      EXPECT_EQ(0, r.downdate(x.row(rows), &z, &values, &rho));
      x.resize(rows, n);
      y.resize(rows, 3);
    }
    // More than there is cannot be removed.
    const DoubleVec large(3U, 100.0), row = x.row(n) * 0.5;
    EXPECT_EQ(-1, r.downdate(DoubleVec(n, 100.0), &z, &large, &rho));
    EXPECT_EQ(-1, r.downdate(DoubleVec(n, kNaN), &z, &large, &rho));
    for (int number = 2; number < 2 * n; ++number) {
      const int last = number / 2, first = last % 2 * last / 2, direction = number % 2;
      double *const begin = x.col(first).data(), *const end = x.col(last).data() + x.rows();
      std::rotate(begin, direction == 0 ? begin + x.rows() : end - x.rows(), end);
      r.shift(first, last, direction, &z);
      expectFits();
    }
    EXPECT_EQ(0, r.downdate(row, &z));
    EXPECT_EQ(1, r.downdate(row, &z, &large, &rho));
    r.update(row, &z, &large, &rho);
    EXPECT_THAT(list(rho), Each(-1.0));
  }
}

// The factor of `a` solves a system that has a solution; the unknowns behind the factored block are
// 0.
void expectSolves(const DoubleChDecomp& factor, const DoubleGenMat& a) {
  const unsigned n = a.rows(), done = static_cast<unsigned>(factor.lastPosFactor() + 1);
  const DoubleVec b = product(a, randomVector(n, 4)), x = factor.solve(b);
  EXPECT_LE(norm2(product(a, x) - b), kRatioLimit * n * kEpsilon * norm1(a) * (1.0 + norm2(x)));
  EXPECT_THAT(list(factor.permute(x).slice(static_cast<int>(done), n - done)), Each(0.0));
}

DoubleGenMat square(const DoubleVec& row) {
  const DoubleGenMat x(row, 1, row.length());
  return transposeProduct(x, x);
}

TEST(DoubleChDecomp, SolvesWithANegativeDiagonal) {
  DoubleChDecomp one = decompose(DoubleGenMat(1, 1, 1.0));
  one.update(DoubleVec(1U, -2.0));
  EXPECT_GT(0.0, one(0, 0));
  EXPECT_TRUE(one.fail());
  EXPECT_TRUE(one.isPD());
  EXPECT_DOUBLE_EQ(2.0, one.solve(DoubleVec(1U, 10.0))(0));
}

TEST(DoubleChDecomp, FactoredBlockGrowsWithTheRankOfTheData) {
  for (const double scale : {0x1p-400, 1.0, 0x1p400}) {
    SCOPED_TRACE(scale);
    const DoubleVec first = vectorOf({3.0, 1.0, 2.0, 1.0}) * scale;
    DoubleGenMat a = square(first);
    DoubleChDecomp factor = decompose(a);
    // Factoring leaves rounding errors in units of the matrix, which are not those of the factor.
    factor(1, 1) = factor(1, 3) = factor(2, 2) = factor(3, 3) = -1e-17 * scale * scale;
    EXPECT_EQ(-1, factor.downdate(first * 0.5));
    const auto addRow = [&](const DoubleVec& row, int rank) {
      a += square(row);
      factor.update(row);
      EXPECT_EQ(rank - 1, factor.lastPosFactor());
      expectSolves(factor, a);
    };
    addRow(first * 0.7, 1);
    addRow(randomVector(4, 1) * scale, 2);
    addRow(randomVector(4, 2) * scale, 3);
    addRow(randomVector(4, 3) * scale, 4);
    EXPECT_TRUE(factor.isPD());
    EXPECT_EQ(0, factor.downdate(first * 0.1));
    EXPECT_TRUE(std::isnan(factor(3, 2)));  // below the diagonal stands the matrix
  }
}

TEST(DoubleChDecomp, FactoredBlockFollowsShifts) {
  RecordedMathErrors errors;
  const DoubleGenMat x(vectorOf({1.0, 0.0, 2.0, 1.0, 1.0, 3.0}), 2, 3);
  const IntVec order = vectorOf({2, 0, 1});
  DoubleChDecomp two = decompose(transposeProduct(x, x));
  two(2, 2) = -5.0;  // a remainder is no part of the factor
  two.shift(0, 2, 1);
  EXPECT_EQ(1, two.lastPosFactor());
  expectSolves(two, transposeProduct(x, x)(order, order));
  // The matrix becomes diag(0, 1), whose first column cannot be factored.
  DoubleChDecomp one = decompose(DoubleGenMat(vectorOf({1.0, 0.0, 0.0, 0.0}), 2, 2));
  one.shift(0, 1, 0);
  EXPECT_EQ(-1, one.lastPosFactor());
  EXPECT_THAT(list(one.solve(DoubleVec(2U, 1.0))), ElementsAre(0.0, 0.0));
  EXPECT_EQ(1U, errors.takeTexts().size());
}

TEST(DoubleChDecomp, CosinesAndSinesAreToldApart) {
  DoubleChDecomp one(DoubleGenMat(1, 1, 9.0));
  EXPECT_EQ(-1, one.downdate(DoubleVec(1U, 3.0)));  // nothing would be left
  const DoubleVec four(1U, 4.0);
  for (const int change : {0, 1, 2, 3}) {
    DoubleChDecomp two = decompose(DoubleGenMat(vectorOf({1.0, 3.0, 3.0, 25.0}), 2, 2));
    // Of stride 2 for the shifts, 1 otherwise.
    DoubleVec c = DoubleVec(3U, 0.0).slice(0, 1, change < 2 ? 2 : 1), s = c.copy();
    if (change < 2) two.shift(0, 1, change, nullptr, &c, &s);
    if (change == 2) one.update(four, nullptr, nullptr, nullptr, &c, &s);
    if (change == 3) one.downdate(four, nullptr, nullptr, nullptr, &c, &s);
    EXPECT_TRUE(c.isEqual(0.6, kEpsilon)) << change;
    EXPECT_TRUE(s.isEqual(0.8, kEpsilon)) << change;
  }
}

TEST(DoubleChDecomp, MisuseIsReportedAndTouchesNothingButWhatFits) {
  DoubleChDecomp r = decompose(symmetricMatrix(4, 10.0)), none;
  DoubleChDecomp same = decompose(symmetricMatrix(4, 10.0));
  const DoubleVec three(3U, 7.0);
  DoubleVec two(2U, 7.0), spread = DoubleVec(8U, 7.0).slice(0, 4, 2),
                          spreadTwo = spread.slice(0, 2);
  DoubleGenMat z(3, 2, 1.0), data(4, 2, 1.0);
  const std::string rightSide = "b vector length wrong (3!=4)",
                    permuted = "vector wrong length to permute (3!=4)",
                    columns = "Invalid Cholesky shift columns (",
                    height = "Data matrix wrong height (3!=4)",
                    rotations = "Vector to hold sines or cosines wrong length (2!=",
                    residuals = "Different number of residuals than data columns (",
                    stride = "vec pointers must have stride == 1",
                    failed = "Can't solve system of equations, matrix not successfully factorized";
  expectErrors({
      {[&] { EXPECT_EQ(0U, r.solve(three).length()); }, kRightSideLengthError, rightSide},
      {[&] { EXPECT_EQ(three, r.permute(three)); }, kPermutedLengthError, permuted},
      {[&] { EXPECT_EQ(three, r.unpermute(three)); }, kPermutedLengthError, permuted},
      {[&] { r.shift(0, 2, 3); }, kShiftDirectionError, "Invalid Cholesky shift direction"},
      {[&] { r.shift(1, 1, 0); }, kShiftColumnsError, columns + "1,1)"},
      {[&] { r.shift(-1, 2, 0); }, kShiftColumnsError, columns + "-1,2)"},
      {[&] { r.shift(2, 4, 1); }, kShiftColumnsError, columns + "2,4)"},
      {[&] { r.update(three); }, kRightSideLengthError, rightSide},
      {[&] { r.shift(0, 3, 0, &z); }, kDataHeightError, height},
      {[&] { r.shift(0, 3, 0, nullptr, &two); }, kRotationsLengthError, rotations + "3)"},
      {[&] { r.shift(0, 3, 0, nullptr, nullptr, &two); }, kRotationsLengthError, rotations + "3)"},
      {[&] { r.update(spread, &z); }, kDataHeightError, height},
      {[&] { r.update(spread, &data, &three); }, kResidualsLengthError, residuals + "3!=2)"},
      {[&] { r.update(spread, &data, nullptr, &spreadTwo); }, kVectorStrideError, stride},
      {[&] { r.update(DoubleVec(4U, 7.0), nullptr, nullptr, nullptr, &two); },
       kRotationsLengthError, rotations + "4)"},
      {[&] { r.update(DoubleVec(4U, 7.0), nullptr, nullptr, nullptr, nullptr, &spread); },
       kVectorStrideError, stride},
      {[&] { r.setPivoting(0, 2); }, kPivotPositionError,
       "Pivoting position specifier must be INITIAL,FREE, or FINAL, not 2"},
      {[&] { return r.condition(); }, kNoConditionNumberError, "Condition number not calculated"},
      {[] { DoubleChDecomp(DoubleGenMat(2, 3, 0.0)); }, kTooFewRowsError,
       "Matrix must have more rows than cols to be factorizable, but 2<3"},
      {[&] { return DoubleChDecomp(DoubleGenMat(2, 2, 1.0)).partialSolve(two, 2); },
       kNotFactoredError, failed},
      {[&] { return DoubleChDecomp(DoubleGenMat(2, 2, 0.0)).solve(two); }, kNotFactoredError,
       failed},
  });
  same.update(vectorOf({7.0, 7.0, 7.0, 0.0}));
  for (int i = 0; i < 3; ++i) same.shift(0, 3, 0);
  for (int i = 0; i < 5; ++i) same.update(DoubleVec(4U, 7.0));
  EXPECT_EQ(upper(same), upper(r));
  EXPECT_EQ(DoubleGenMat(3, 2, 1.0), z);
  EXPECT_EQ(DoubleVec(2U, 7.0), two);
  EXPECT_NE(7.0, spread(0));

  RecordedMathErrors errors;
  DoubleChDecomp wide(DoubleGenMat(vectorOf({1.0, 0.0, 0.0, 1.0, 0.0, 0.0}), 2, 3));
  wide.shift(1, 2, 0);
  EXPECT_EQ(1, wide.lastPosFactor());
  EXPECT_EQ(0.0, wide.condition());
}

TEST(DoubleChDecomp, TellsHowFarFactoringCame) {
  RecordedMathErrors errors;
  const DoubleChDecomp none, empty(DoubleGenMat(0, 0));
  EXPECT_EQ(-2, none.lastPosFactor());
  EXPECT_FALSE(none.isPD());
  EXPECT_TRUE(none.good());
  EXPECT_EQ(0.0, none.condition());
  EXPECT_EQ(3U, empty.solve(DoubleGenMat(0, 3)).cols());
  EXPECT_EQ(0U, errors.takeTexts().size());

  DoubleGenMat diagonal(3, 3, 0.0);
  diagonal.diagonal() = vectorOf({4.0, 9.0, 0.0});
  DoubleChDecomp stopped(diagonal), shared(stopped);
  shared.setPivoting(0, DoubleChDecomp::FINAL);
  EXPECT_THAT(list(stopped.pivots()), ElementsAre(1, 0, 2));
  EXPECT_THAT(list(shared.permute(DoubleVec(3U, 0.0, 1.0))), ElementsAre(0, 0, 2));
  EXPECT_TRUE(stopped.good());
  stopped(2, 2) = -1.5;
  EXPECT_TRUE(stopped.fail());
  EXPECT_EQ(0.25, stopped.condition());
  stopped.doPivoting(0);  // for the next matrix
  EXPECT_THAT(list(stopped.solve(DoubleVec(3U, 36.0))), ElementsAre(9, 4, 0));
  EXPECT_THAT(list(stopped.partialSolve(DoubleVec(3U, 36.0), 4000000000U)), ElementsAre(4, 9));
}
