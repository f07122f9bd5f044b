// The factorizations P A = L U and A = U D Uᵀ beside the loops of the LINPACK Users' Guide, and
// what is computed from their factors.
#include <algorithm>
#include <bit>
#include <gmock/gmock.h>

#include <kilnbase/linalg/linpack/dgeco.h>
#include <kilnbase/linalg/linpack/dgedi.h>
#include <kilnbase/linalg/linpack/dgefa.h>
#include <kilnbase/linalg/linpack/dgesl.h>
#include <kilnbase/linalg/linpack/dgeslColumns.h>
#include <kilnbase/linalg/linpack/dspco.h>
#include <kilnbase/linalg/linpack/dspdi.h>
#include <kilnbase/linalg/linpack/dspfa.h>
#include <kilnbase/linalg/linpack/dspsl.h>
#include <kilnbase/linalg/linpack/dspslColumns.h>
#include <kilnbase/linalg/vecmath.h>

#include "padded.h"

namespace {

using namespace kilntest;
using namespace vxKilnBase::linpack;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;
using testing::Lt;

constexpr double kMostRatio = 30.0;

// The routines for general matrices.
struct General {
  static constexpr Index kGap = 3;
  static DoubleGenMat made(const DoubleGenMat& a) { return a.copy(); }

  int factor() { return dgefa(a.data(), a.stride(), a.order(), pivots.data()); }
  double estimate(double* z) { return dgeco(a.data(), a.stride(), a.order(), pivots.data(), z); }
  void solve(double* b, int job) { dgesl(a.data(), a.stride(), a.order(), pivots.data(), b, job); }
  void solveColumns(Padded& b, int job) {
    dgeslColumns(a.data(), a.stride(), a.order(), pivots.data(), b.data(), b.stride(), b.order(),
                 job);
  }
  void invert(double* det, double* work, int job) {
    dgedi(a.data(), a.stride(), a.order(), pivots.data(), det, work, job);
  }

  // dgefa, loop by loop.
  int factorPlainly() {
    int info = 0;
    const int n = a.order();
    for (int k = 0; k < n; ++k) {
      int l = k;
      for (int i = k + 1; i < n; ++i) l = std::fabs(a.at(i, k)) > std::fabs(a.at(l, k)) ? i : l;
      pivots[k] = l + 1;
      if (a.at(l, k) == 0.0) {
        info = k + 1;
        continue;
      }
      for (int j = k; j < n; ++j) std::swap(a.at(l, j), a.at(k, j));
      for (int i = k + 1; i < n; ++i) {
        a.at(i, k) *= -1.0 / a.at(k, k);
        for (int j = k + 1; j < n; ++j) a.at(i, j) += a.at(i, k) * a.at(k, j);
      }
    }
    return info;
  }

  // Signs of which all steps are exact, and all columns have several largest elements; the rows are
  // moved down by a third.
  static DoubleGenMat withTies(int n) {
    const int m = static_cast<int>(std::bit_floor(static_cast<unsigned>(n)));
    DoubleGenMat a(m, m);
    for (int i = 0; i < m; ++i) {
      for (int j = 0; j < m; ++j) {
        a((i + m / 3) % m, j) = std::popcount(static_cast<unsigned>(i & j)) % 2 == 0 ? 1.0 : -1.0;
      }
    }
    return a;
  }

  Padded a;
  std::vector<int> pivots;
};

// The routines for symmetric matrices in packed storage.
struct Symmetric {
  static constexpr Index kGap = Padded::kPacked;
  static DoubleGenMat made(const DoubleGenMat& a) { return (a + transpose(a)) * 0.5; }

  int factor() { return dspfa(a.data(), a.order(), pivots.data()); }
  double estimate(double* z) { return dspco(a.data(), a.order(), pivots.data(), z); }
  void solve(double* b, int) { dspsl(a.data(), a.order(), pivots.data(), b); }
  void solveColumns(Padded& b, int) {
    dspslColumns(a.data(), a.order(), pivots.data(), b.data(), b.stride(), b.order());
  }
  void invert(double* det, double* work, int job) {
    dspdi(a.data(), a.order(), pivots.data(), det, nullptr, work, job);
  }

  // Exchanges rows and columns l <= k of the leading matrix of order k + 1.
  void exchange(int l, int k) {
    for (int i = 0; i < l; ++i) std::swap(a.at(i, l), a.at(i, k));
    for (int j = l + 1; j < k; ++j) std::swap(a.at(j, k), a.at(l, j));
    std::swap(a.at(l, l), a.at(k, k));
  }

  // dspfa, loop by loop.
  int factorPlainly() {
    const double alpha = (1.0 + std::sqrt(17.0)) / 8.0;
    int info = 0;
    for (int k = a.order() - 1; k >= 0;) {
      int row = 0, pivot = k;
      for (int i = 1; i < k; ++i) row = std::fabs(a.at(i, k)) > std::fabs(a.at(row, k)) ? i : row;
      const double diagonal = std::fabs(a.at(k, k));
      const double largest = k > 0 ? std::fabs(a.at(row, k)) : 0.0;
      bool isTwo = false;
      if (diagonal < alpha * largest) {
        double inRow = 0.0;
        for (int j = 0; j <= k; ++j) {
          const double x = std::fabs(a.at(std::min(row, j), std::max(row, j)));
          if (j != row) inRow = std::max(inRow, x);
        }
        const bool isOther = std::fabs(a.at(row, row)) >= alpha * inRow;
        isTwo = !isOther && diagonal < alpha * largest * (largest / inRow);
        if (isOther || isTwo) pivot = row;
      }
      const int first = isTwo ? k - 1 : k;
      exchange(pivot, first);
      if (isTwo) std::swap(a.at(pivot, k), a.at(k - 1, k));
      for (int i = first; i <= k; ++i) pivots[i] = isTwo ? -(pivot + 1) : pivot + 1;
      if (std::max(diagonal, largest) == 0.0)
        info = k + 1;
      else
        eliminate(first, k);
      k = first - 1;
    }
    return info;
  }

  // The multipliers, negated, are minus the columns times the inverse of the block.
  void eliminate(int first, int k) {
    const bool isTwo = first < k;
    const double b = isTwo ? a.at(first, k) : 1.0, d = a.at(k, k) / b, e = a.at(first, first) / b;
    for (int j = first - 1; j >= 0; --j) {
      const double q = a.at(j, k) / b, p = a.at(j, first) / b;
      const double y = isTwo ? (e * q - p) / (1.0 - d * e) : -q / d;
      const double x = isTwo ? (d * p - q) / (1.0 - d * e) : 0.0;
      for (int i = 0; i <= j; ++i) {
        a.at(i, j) += y * a.at(i, k) + (isTwo ? x * a.at(i, first) : 0.0);
      }
      if (isTwo) a.at(j, first) = x;
      a.at(j, k) = y;
    }
  }

  // Of each fifth row and column: ones beside a diagonal of zeros. The first block of each fifth is
  // of order 2, and all elements of its column are equally large.
  static DoubleGenMat withTies(int n) {
    DoubleGenMat a(n, n, 0.0);
    for (int i = 0; i < n; ++i) {
      for (int j = i % 5; j < n; j += 5) a(i, j) = i == j ? 0.0 : 1.0;
    }
    return a;
  }

  Padded a;
  std::vector<int> pivots;
};

template <class Routines>
struct Factored : Routines {
  explicit Factored(const DoubleGenMat& m, bool plainly = false)
      : Routines{Padded(m, Routines::kGap), std::vector<int>(m.cols())},
        info(plainly ? this->factorPlainly() : this->factor()) {}

  DoubleGenMat inverse(double* det, int job) const {
    Factored copy = *this;
    std::vector<double> work(this->pivots.size());
    copy.invert(det, work.data(), job);
    return copy.a.matrix();
  }

  int info;
};

template <class Routines>
double estimate(const DoubleGenMat& m) {
  Routines r = {Padded(m, Routines::kGap), std::vector<int>(m.cols())};
  std::vector<double> z(m.cols());
  const double rcond = r.estimate(z.data());
  EXPECT_EQ(Factored<Routines>(m).pivots, r.pivots);
  return rcond;
}

template <class Routines>
class Factors : public testing::Test {
 protected:
  static DoubleGenMat random(unsigned n, std::uint64_t seed = 4) {
    return Routines::made(randomMatrix(n, n, seed));
  }
  // Nearly all steps of a symmetric matrix have a block of order 1, many of them with an exchange.
  static DoubleGenMat withLargeDiagonal(unsigned n) {
    DoubleGenMat a = random(n, n);
    for (unsigned i = 0; i < n; ++i) a(i, i) *= std::sqrt(n) * (i % 5 == 0 ? 0.1 : 3.0);
    return a;
  }
  static std::vector<TestMatrix> squareMatrices() {
    std::vector<TestMatrix> matrices;
    for (const TestMatrix& m : testMatrices()) {
      if (m.a.rows() == m.a.cols()) matrices.push_back({m.name, Routines::made(m.a)});
    }
    for (const unsigned n : {7U, 8U, 9U, 33U, 40U, 64U, 72U, 81U, 97U, 200U}) {
      matrices.push_back({"random " + std::to_string(n), random(n)});
      matrices.push_back({"large diagonal " + std::to_string(n), withLargeDiagonal(n)});
    }
    return matrices;
  }
};
using Routines = testing::Types<General, Symmetric>;
TYPED_TEST_SUITE(Factors, Routines);

}  // namespace

TYPED_TEST(Factors, GoTheWayOfTheTextbook) {
  for (int n = 0; n <= 150; n += 1 + n / 24) {
    SCOPED_TRACE(n);
    const DoubleGenMat random = this->random(n, n + 1), sparse = random.copy();
    for (int j = 1; j < n; j += 3) sparse.col(j) = sparse.row(j) = 0.0;
    for (const DoubleGenMat& a :
         {random, sparse, this->withLargeDiagonal(n), TypeParam::withTies(n),
          DoubleGenMat(n, n, -1.0), DoubleGenMat(n, n, 0.0), identity(n)}) {
      Factored<TypeParam> f(a), expected(a, true);
      EXPECT_EQ(expected.info, f.info);
      EXPECT_EQ(expected.pivots, f.pivots);
      EXPECT_EQ(f.a.difference(expected.a, 1e-9), "");
    }
  }
}

TYPED_TEST(Factors, NaNAndInfinityKeepPivotsInside) {
  for (const int n : {1, 2, 8, 9, 20, 40, 100}) {
    for (const double special : {kNaN, kInfinity}) {
      for (const int at : {0, n / 2, n - 1, -1}) {
        DoubleGenMat a = this->random(n);
        if (at < 0)
          a = special;
        else
          a(at, n - 1) = a(n - 1, at) = a(at, at) = special;
        const std::vector<int> pivots = Factored<TypeParam>(a).pivots;
        for (int k = 0; k < n; ++k) {
          const auto inside = TypeParam::kGap == Padded::kPacked ? AllOf(Ge(1), Le(k + 1))
                                                                 : AllOf(Ge(k + 1), Le(n));
          EXPECT_THAT(std::abs(pivots[k]), inside);
        }
      }
    }
  }
}

TYPED_TEST(Factors, SolveOneAndManyColumns) {
  for (const auto& [name, a, condition] : this->squareMatrices()) {
    SCOPED_TRACE(name);
    if (estimate<TypeParam>(a) < kEpsilon) continue;
    Factored<TypeParam> f(a);
    for (const unsigned columns : {0U, 1U, 5U, 70U}) {
      for (const int job : {0, 1}) {
        const DoubleGenMat b = randomMatrix(a.rows(), columns, 9), m = job == 0 ? a : transpose(a);
        Padded solutions(b);
        if (columns == 1)
          f.solve(solutions.data(), job);
        else
          f.solveColumns(solutions, job);
        const DoubleGenMat x = solutions.matrix(), error = b - product(m, x);
        for (int j = 0; j < static_cast<int>(columns); ++j) {
          const double size = norm1(m) * norm2(x.col(j));
          EXPECT_LE(ratio(norm2(error.col(j)), size, a.rows() + 2), kMostRatio) << "job " << job;
        }
      }
    }
  }
}

TYPED_TEST(Factors, InversesDeterminantsAndConditionsBelongToTheMatrix) {
  for (const auto& [name, a, condition] : this->squareMatrices()) {
    SCOPED_TRACE(name);
    const Factored<TypeParam> f(a);
    const double rcond = estimate<TypeParam>(a), rounding = a.cols() * kEpsilon;
    EXPECT_THAT(rcond, AllOf(Ge(0.0), Le(1.0 + rounding)));
    EXPECT_LE(rcond, f.info == 0 ? 2.0 : rounding);
    if (rcond < kEpsilon) continue;
    double det[2];
    const DoubleGenMat inverse = f.inverse(det, 11);
    const double size = norm1(a) * norm1(inverse);
    EXPECT_LT(ratio(norm1(product(a, inverse) - identity(a.cols())), size, a.cols()), kMostRatio);
    EXPECT_THAT(std::fabs(det[0]), AllOf(Ge(1.0), Lt(10.0)));
    EXPECT_EQ(inverse, f.inverse(nullptr, 1));
    EXPECT_GE(rcond, (1.0 - kMostRatio * rounding) / size);
    EXPECT_LE(rcond, 10.0 / size);
  }
}

TYPED_TEST(Factors, DeterminantsNeitherOverflowNorUnderflow) {
  double det[2];
  for (const double factor : {1e100, 1e-100, -1e5, 4.0}) {
    for (const bool isHollow : {false, true}) {
      DoubleGenMat a(298, 298, 0.0);
      for (int i = 0; i < 298; ++i) a(i, isHollow ? i ^ 1 : i) = factor;
      const Factored<TypeParam> f(a);
      EXPECT_EQ(f.inverse(det, 10), f.inverse(nullptr, 0)) << "the factors stay";
      EXPECT_THAT(std::fabs(det[0]), AllOf(Ge(1.0), Lt(10.0)));
      EXPECT_NEAR(298 * std::log10(std::fabs(factor)), std::log10(std::fabs(det[0])) + det[1],
                  1e-10);
      EXPECT_EQ(!isHollow, det[0] > 0.0);
    }
  }
  DoubleGenMat infinite = identity(2);
  infinite(0, 0) = -kInfinity;
  const std::pair<DoubleGenMat, double> known[] = {
      {DoubleGenMat(5, 5, 1.0), 0.0}, {infinite, -kInfinity}, {DoubleGenMat(0, 0), 1.0}};
  for (const auto& [a, expected] : known) {
    Factored<TypeParam>(a).inverse(det, 10);
    EXPECT_EQ(expected, det[0]);
  }
}

TYPED_TEST(Factors, ConditionsOfKnownMatrices) {
  EXPECT_EQ(0.0, estimate<TypeParam>(DoubleGenMat(3, 3, 0.0)));
  EXPECT_DOUBLE_EQ(1.0, estimate<TypeParam>(identity(20)));
  const bool isGeneral = TypeParam::kGap != Padded::kPacked;
  const DoubleGenMat a(vectorOf({0.0, 3.0, 2.0, 0.0}), 2, 2), b(vectorOf({8., 2., 2., 4.}), 2, 2);
  EXPECT_DOUBLE_EQ(isGeneral ? 10.0 / 13.0 : 28.0 / 85.0, estimate<TypeParam>(isGeneral ? a : b));
}

TEST(dgeco, SignsOfTheSecondStepCount) {
  // Computed from the published steps in rational numbers.
  const DoubleGenMat a(vectorOf({1., 1., 2., 4., -2., 0., 3., 3., -2.}), 3, 3);
  EXPECT_DOUBLE_EQ(0.3, estimate<General>(a));
}

TEST(dgefa, NaNIsChosenOnTheDiagonalOnly) {
  for (const int n : {1, 8, 9, 40, 100}) {
    for (const int row : {0, n - 1}) {
      DoubleGenMat a = randomMatrix(n, n, 4);
      a(row, 0) = kNaN;
      EXPECT_EQ(Factored<General>(a).pivots[0] == row + 1, row == 0) << n;
    }
  }
}

TEST(dspdi, InertiaIsThatOfTheMatrix) {
  const auto expectInertia = [](const DoubleGenMat& a, unsigned positive, unsigned negative) {
    Factored<Symmetric> f(a);
    int inertia[3];
    dspdi(f.a.data(), f.a.order(), f.pivots.data(), nullptr, inertia, nullptr, 100);
    EXPECT_THAT(inertia, ElementsAre(positive, negative, a.rows() - positive - negative));
  };
  for (const unsigned n : {1U, 2U, 5U, 9U, 50U, 120U}) {
    for (const unsigned negative : {0U, n / 3, n}) {
      const DoubleGenMat x = matrixWithCondition(n, n, 10.0, n + 1), y = x.copy();
      for (unsigned i = 0; i < negative; ++i) y.row(i) *= -1.0;
      expectInertia(Symmetric::made(transposeProduct(x, y)), n - negative, negative);
    }
  }
  expectInertia(DoubleGenMat(4, 4, 1.0), 1, 0);
}
