#include <gmock/gmock.h>

#include <kilnbase/linalg/linpack/dspco.h>
#include <kilnbase/linalg/linpack/dspdi.h>
#include <kilnbase/linalg/linpack/dspfa.h>
#include <kilnbase/linalg/linpack/dspsl.h>
#include <kilnbase/linalg/linpack/dspslColumns.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/linalg/linpack/Textbook.h"

using namespace kilntest;
using namespace vxKilnBase::linpack;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;

namespace {

constexpr double kRatioLimit = 30.0;

struct Results {
  double det[2] = {kNaN, kNaN};
  int inertia[3] = {-1, -1, -1};
  DoubleGenMat inverse;
};

struct Factored {
  explicit Factored(const DoubleGenMat& a) : factors(a, true), kpvt(a.cols()) {
    info = dspfa(factors.data(), factors.columns, kpvt.data());
  }

  // What the steps made the matrix of: the last one first.
  DoubleGenMat original() {
    Guarded a(factors.matrix(), true);
    for (int k = 0; k < a.columns;) {
      const int order = kpvt[k] < 0 ? 2 : 1, last = k + order - 1, l = std::abs(kpvt[k]) - 1;
      // The columns above the block are minus the multipliers times the block.
      DoubleGenMat m(k, order, 0.0), d(order, order);
      for (int j = 0; j < order; ++j) {
        for (int i = 0; i < order; ++i) d(i, j) = a(k + std::min(i, j), k + std::max(i, j));
        for (int i = 0; i < k; ++i) m(i, j) = factors(i, k + j);
      }
      const DoubleGenMat columns = product(m, d) * -1.0;
      const DoubleGenMat added = product(columns, transpose(m)) * -1.0;
      for (int j = 0; j < k; ++j) {
        for (int i = 0; i <= j; ++i) a(i, j) += added(i, j);
        for (int i = 0; i < order; ++i) a(j, k + i) = columns(j, i);
      }
      if (order == 2) std::swap(a(l, last), a(k, last));
      exchangeSymmetric(a, l, k);
      k = last + 1;
    }
    return a.matrix();
  }

  Results results(int job) {
    Guarded copy(factors.matrix(), true);
    std::vector<double> work(kpvt.size());
    Results r;
    dspdi(copy.data(), copy.columns, kpvt.data(), r.det, r.inertia, work.data(), job);
    r.inverse.reference(copy.matrix());
    return r;
  }

  Guarded factors;
  std::vector<int> kpvt;
  int info = 0;
};

DoubleGenMat symmetricPart(const DoubleGenMat& a) {
  return (a + transpose(a)) * 0.5;
}

// With this part of the eigenvalues below 0.
DoubleGenMat withInertia(unsigned n, unsigned negative) {
  const DoubleGenMat x = matrixWithCondition(n, n, 10.0, n + 1);
  DoubleGenMat y = x.copy();
  for (unsigned i = 0; i < negative; ++i) y.row(i) *= -1.0;
  return symmetricPart(transposeProduct(x, y));
}

// Nearly all steps have a block of order 1, many of them with an exchange.
DoubleGenMat withLargeDiagonal(unsigned n, std::uint64_t seed) {
  DoubleGenMat a = symmetricPart(randomMatrix(n, n, seed));
  for (unsigned i = 0; i < n; ++i) a(i, i) *= std::sqrt(n) * (i % 5 == 0 ? 0.1 : 3.0);
  return a;
}

std::vector<TestMatrix> symmetricMatrices() {
  std::vector<TestMatrix> matrices;
  for (const TestMatrix& m : testMatrices()) {
    if (m.a.rows() == m.a.cols()) matrices.push_back({m.name, symmetricPart(m.a)});
  }
  for (const unsigned n : {7U, 8U, 9U, 33U, 40U, 41U, 97U, 104U, 200U}) {
    const std::string order = std::to_string(n);
    DoubleGenMat hollow = symmetricPart(randomMatrix(n, n, n));
    hollow.diagonal() = 0.0;
    matrices.push_back({"zero diagonal " + order, hollow});
    matrices.push_back({"large diagonal " + order, withLargeDiagonal(n, n)});
    matrices.push_back({"definite " + order, withInertia(n, 0)});
  }
  return matrices;
}

// Of each fifth row and column: ones beside a diagonal of zeros. The first block of each fifth is
// of order 2, and all elements of its column are equally large.
DoubleGenMat withTies(int n) {
  DoubleGenMat a(n, n, 0.0);
  for (int i = 0; i < n; ++i) {
    for (int j = i % 5; j < n; j += 5) a(i, j) = i == j ? 0.0 : 1.0;
  }
  return a;
}

double estimate(const DoubleGenMat& a) {
  Guarded factors(a, true);
  std::vector<int> kpvt(a.cols());
  std::vector<double> z(a.cols());
  const double rcond = dspco(factors.data(), factors.columns, kpvt.data(), z.data());
  EXPECT_EQ(Factored(a).kpvt, kpvt);
  return rcond;
}

}  // namespace

TEST(dspfa, FactorsBelongToTheMatrix) {
  for (const auto& [name, a, condition] : symmetricMatrices()) {
    SCOPED_TRACE(name);
    Factored f(a);
    EXPECT_LT(difference(f.original(), a), kRatioLimit);
    int info = 0;
    for (int k = f.factors.columns; k-- > 0;) {
      if (f.kpvt[k] > 0 && f.factors(k, k) == 0.0) info = k + 1;
    }
    EXPECT_EQ(info, f.info);
  }
}

TEST(dspfa, GoesTheWayOfTheTextbook) {
  for (int n = 0; n <= 150; n += 1 + n / 24) {
    SCOPED_TRACE(n);
    const DoubleGenMat random = symmetricPart(randomMatrix(n, n, n + 1));
    DoubleGenMat sparse = random.copy();
    for (int j = 1; j < n; j += 3) sparse.col(j) = sparse.row(j) = 0.0;
    for (const DoubleGenMat& a : {random, withLargeDiagonal(n, n), sparse, withTies(n),
                                  DoubleGenMat(n, n, 0.0), identity(n)}) {
      Guarded expected(a, true);
      std::vector<int> pivots;
      const int info = textbookSymmetric(expected, pivots);
      Factored f(a);
      EXPECT_EQ(info, f.info);
      EXPECT_EQ(pivots, f.kpvt);
      EXPECT_LE(difference(f.factors.matrix(), expected.matrix()), 1000.0);
    }
  }
}

TEST(dspfa, NaNAndInfinityKeepPivotsInside) {
  for (const int n : {1, 2, 8, 20, 40, 100}) {
    for (const double special : {kNaN, kInfinity}) {
      for (const int at : {0, n / 2, n - 1, -1}) {
        DoubleGenMat a = symmetricPart(randomMatrix(n, n, 4));
        if (at < 0)
          a = special;
        else
          a(at, n - 1) = a(n - 1, at) = special;
        Factored f(a);
        for (int k = 0; k < n; ++k) EXPECT_THAT(std::abs(f.kpvt[k]), AllOf(Ge(1), Le(k + 1)));
      }
    }
  }
}

TEST(dspsl, SolvesOneAndManyColumns) {
  for (const auto& [name, a, condition] : symmetricMatrices()) {
    SCOPED_TRACE(name);
    const unsigned n = a.cols();
    Factored f(a);
    if (estimate(a) < kEpsilon) continue;
    for (const unsigned columns : {0U, 1U, 20U}) {
      const DoubleGenMat b = randomMatrix(n, columns, 9);
      Guarded all(b);
      dspslColumns(f.factors.data(), static_cast<int>(n), f.kpvt.data(), all.data(), all.ld,
                   all.columns);
      if (columns == 1) {
        Guarded one(b);
        dspsl(f.factors.data(), static_cast<int>(n), f.kpvt.data(), one.data());
        EXPECT_TRUE(one.matrix() == all.matrix());
      }
      for (int j = 0; j < all.columns; ++j) {
        const DoubleVec x = all.matrix().col(j);
        EXPECT_LE(norm2(b.col(j) - product(a, x)),
                  kRatioLimit * (n + 2) * kEpsilon * norm1(a) * norm2(x));
      }
    }
  }
}

TEST(dspdi, InverseBelongsToTheMatrix) {
  for (const auto& [name, a, condition] : symmetricMatrices()) {
    SCOPED_TRACE(name);
    Factored f(a);
    if (estimate(a) < kEpsilon) continue;
    const Results r = f.results(111);
    const double size = norm1(a) * norm1(r.inverse);
    EXPECT_LT(ratio(norm1(product(a, r.inverse) - identity(a.cols())), size, a.cols()),
              kRatioLimit);
    EXPECT_THAT(std::fabs(r.det[0]), AllOf(Ge(1.0), testing::Lt(10.0)));
    EXPECT_TRUE(r.inverse == f.results(1).inverse);
  }
}

TEST(dspdi, DeterminantsNeitherOverflowNorUnderflow) {
  for (const double factor : {1e100, 1e-100, -1e5}) {
    for (const bool isHollow : {false, true}) {
      DoubleGenMat a(298, 298, 0.0);
      for (int i = 0; i < 298; ++i) a(i, isHollow ? i ^ 1 : i) = factor;
      const Results r = Factored(a).results(10);
      EXPECT_THAT(std::fabs(r.det[0]), AllOf(Ge(1.0), testing::Lt(10.0)));
      EXPECT_NEAR(298 * std::log10(std::fabs(factor)), std::log10(std::fabs(r.det[0])) + r.det[1],
                  1e-10);
      EXPECT_EQ(!isHollow, r.det[0] > 0.0);
      EXPECT_TRUE(r.inverse == Factored(a).factors.matrix());
    }
  }
  EXPECT_EQ(0.0, Factored(DoubleGenMat(3, 3, 1.0)).results(110).det[0]);
}

TEST(dspdi, InertiaIsThatOfTheMatrix) {
  for (const unsigned n : {1U, 2U, 5U, 9U, 50U, 120U}) {
    for (const unsigned negative : {0U, n / 3, n}) {
      Factored f(withInertia(n, negative));
      EXPECT_THAT(f.results(100).inertia, ElementsAre(n - negative, negative, 0));
    }
  }
  EXPECT_THAT(Factored(DoubleGenMat(4, 4, 1.0)).results(100).inertia, ElementsAre(1, 0, 3));
}

TEST(dspco, EstimateIsCloseAboveTheReciprocalCondition) {
  for (const auto& [name, a, condition] : symmetricMatrices()) {
    SCOPED_TRACE(name);
    const double rcond = estimate(a);
    EXPECT_THAT(rcond, AllOf(Ge(0.0), Le(1.0 + a.cols() * kEpsilon)));
    Factored f(a);
    EXPECT_TRUE(f.info == 0 || rcond <= a.cols() * kEpsilon);
    if (rcond < kEpsilon) continue;
    const double exact = 1.0 / norm1(a) / norm1(f.results(1).inverse);
    EXPECT_GE(rcond, exact * (1.0 - a.cols() * kRatioLimit * kEpsilon));
    EXPECT_LE(rcond, 10.0 * exact);
  }
}

TEST(dspfa, KnownMatrices) {
  Factored two(DoubleGenMat(vectorOf({0.0, 2.0, 2.0, 0.0}), 2, 2));
  EXPECT_THAT(two.kpvt, ElementsAre(-1, -1));
  EXPECT_EQ(-4.0, two.results(10).det[0]);
  EXPECT_THAT(two.results(100).inertia, ElementsAre(1, 1, 0));
  // Rows 1 and 3 change places.
  Factored one(DoubleGenMat(vectorOf({9.0, 0.0, 3.0, 0.0, 2.0, 0.0, 3.0, 0.0, 1.0}), 3, 3));
  EXPECT_THAT(one.kpvt, ElementsAre(1, 2, 1));
  EXPECT_DOUBLE_EQ(-1.0 / 3.0, one.factors(0, 2));
  EXPECT_EQ(0.0, estimate(DoubleGenMat(3, 3, 0.0)));
  EXPECT_DOUBLE_EQ(1.0, estimate(identity(20)));
  EXPECT_DOUBLE_EQ(28.0 / 85.0, estimate(DoubleGenMat(vectorOf({8.0, 2.0, 2.0, 4.0}), 2, 2)));
}
