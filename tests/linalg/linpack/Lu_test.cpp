#include <bit>
#include <gmock/gmock.h>

#include <kilnbase/linalg/linpack/dgeco.h>
#include <kilnbase/linalg/linpack/dgedi.h>
#include <kilnbase/linalg/linpack/dgefa.h>
#include <kilnbase/linalg/linpack/dgesl.h>
#include <kilnbase/linalg/linpack/dgeslColumns.h>
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

// A factored matrix.
struct Lu {
  explicit Lu(const DoubleGenMat& a) : factors(a), ipvt(a.cols()) {
    info = dgefa(factors.data(), factors.ld, factors.columns, ipvt.data());
  }

  // What the steps made the matrix of.
  DoubleGenMat original() {
    const int n = factors.columns;
    DoubleGenMat a(n, n, 0.0);
    for (int k = n; k-- > 0;) {
      for (int j = k; j < n; ++j) a(k, j) = factors(k, j);
      for (int i = k + 1; i < n; ++i) a.row(i) -= a.row(k) * factors(i, k);
      const DoubleVec row = a.row(k).copy();
      a.row(k) = a.row(ipvt[k] - 1);
      a.row(ipvt[k] - 1) = row;
    }
    return a;
  }

  DoubleGenMat inverse(double* det = nullptr) {
    Guarded copy(factors.matrix());
    std::vector<double> work(ipvt.size());
    dgedi(copy.data(), copy.ld, copy.columns, ipvt.data(), det, work.data(), det ? 11 : 1);
    return copy.matrix();
  }

  Guarded factors;
  std::vector<int> ipvt;
  int info = 0;
};

std::vector<TestMatrix> squareMatrices() {
  std::vector<TestMatrix> matrices;
  for (const TestMatrix& m : testMatrices()) {
    if (m.a.rows() == m.a.cols()) matrices.push_back(m);
  }
  for (const unsigned n : {7U, 8U, 9U, 17U, 64U, 72U, 81U, 200U}) {
    matrices.push_back({"random " + std::to_string(n), randomMatrix(n, n, n)});
  }
  return matrices;
}

double estimate(const DoubleGenMat& a) {
  Guarded factors(a);
  std::vector<int> ipvt(a.cols());
  std::vector<double> z(a.cols());
  const double rcond = dgeco(factors.data(), factors.ld, factors.columns, ipvt.data(), z.data());
  EXPECT_EQ(Lu(a).ipvt, ipvt);
  return rcond;
}

double determinant(const DoubleGenMat& a, double* exponent = nullptr) {
  Lu lu(a);
  double det[2] = {kNaN, kNaN};
  dgedi(lu.factors.data(), lu.factors.ld, lu.factors.columns, lu.ipvt.data(), det, nullptr, 10);
  if (exponent != nullptr) *exponent = det[1];
  return det[0];
}

// Signs of which all steps are exact, and all columns have several largest elements; the rows are
// moved down by `shift`, and a power of two is wanted for n then.
DoubleGenMat signMatrix(int n, int shift) {
  DoubleGenMat a(n, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      a((i + shift) % n, j) = __builtin_parity(static_cast<unsigned>(i & j)) == 0 ? 1.0 : -1.0;
    }
  }
  return a;
}

}  // namespace

TEST(dgefa, FactorsBelongToTheMatrix) {
  for (const auto& [name, a, condition] : squareMatrices()) {
    SCOPED_TRACE(name);
    const auto n = static_cast<int>(a.cols());
    Lu lu(a);
    EXPECT_LT(difference(lu.original(), a), kRatioLimit);
    int info = 0;
    for (int k = 0; k < n; ++k) {
      if (lu.factors(k, k) == 0.0) info = k + 1;
      EXPECT_THAT(lu.ipvt[k], AllOf(Ge(k + 1), Le(n)));
      for (int i = k + 1; i < n; ++i) ASSERT_LE(std::fabs(lu.factors(i, k)), 1.0) << i << ' ' << k;
    }
    EXPECT_EQ(info, lu.info);
  }
}

TEST(dgefa, GoesTheWayOfTheTextbook) {
  for (int n = 0; n <= 150; n += 1 + n / 24) {
    SCOPED_TRACE(n);
    DoubleGenMat random = randomMatrix(n, n, n + 1), sparse = random.copy();
    for (int j = 1; j < n; j += 3) sparse.col(j) = 0.0;
    const int power = static_cast<int>(std::bit_floor(static_cast<unsigned>(n)));
    const DoubleGenMat exact = signMatrix(n, 0), shifted = signMatrix(power, power / 3);
    const std::pair<DoubleGenMat, double> matrices[] = {{random, 1000.0},
                                                        {sparse, 1000.0},
                                                        {exact, 0.0},
                                                        {shifted, 0.0},
                                                        {DoubleGenMat(n, n, -1.0), 0.0}};
    for (const auto& [a, limit] : matrices) {
      Guarded expected(a);
      std::vector<int> pivots;
      const int info = textbookLu(expected, pivots);
      Lu lu(a);
      EXPECT_EQ(info, lu.info);
      EXPECT_EQ(pivots, lu.ipvt);
      EXPECT_LE(difference(lu.factors.matrix(), expected.matrix()), limit);
    }
  }
}

TEST(dgefa, NaNAndInfinityKeepPivotsInside) {
  for (const int n : {1, 8, 9, 40, 100}) {
    for (const double special : {kNaN, kInfinity}) {
      for (const int at : {0, n / 2, n - 1, -1}) {
        DoubleGenMat a = randomMatrix(n, n, 4);
        a(std::max(at, 0), std::max(at, 0)) = special;
        if (at < 0) a = special;
        Lu lu(a);
        for (int k = 0; k < n; ++k) EXPECT_THAT(lu.ipvt[k], AllOf(Ge(k + 1), Le(n)));
        EXPECT_TRUE(at != 0 || lu.ipvt[0] == 1);
      }
    }
    DoubleGenMat below = randomMatrix(n, n, 4);
    below(n - 1, 0) = kNaN;
    EXPECT_TRUE(n == 1 || Lu(below).ipvt[0] != n);
  }
}

TEST(dgesl, SolvesWithTheMatrixAndItsTranspose) {
  for (const auto& [name, a, condition] : squareMatrices()) {
    SCOPED_TRACE(name);
    const unsigned n = a.cols();
    Lu lu(a);
    if (estimate(a) < kEpsilon) continue;
    for (const unsigned columns : {0U, 1U, 5U, 70U}) {
      const DoubleGenMat b = randomMatrix(n, columns, 9);
      for (const int job : {0, 1}) {
        Guarded all(b);
        dgeslColumns(lu.factors.data(), lu.factors.ld, static_cast<int>(n), lu.ipvt.data(),
                     all.data(), all.ld, all.columns, job);
        const DoubleGenMat x = all.matrix();
        const DoubleGenMat ax = job == 0 ? product(a, x) : transposeProduct(a, x);
        for (int j = 0; j < all.columns; ++j) {
          const DoubleVec error = b.col(j) - ax.col(j);
          const double size = norm1(job == 0 ? a : transpose(a)) * norm2(x.col(j));
          EXPECT_LE(norm2(error), kRatioLimit * (n + 2) * kEpsilon * size) << columns << ' ' << job;
        }
        if (columns != 1) continue;
        Guarded one(b);
        dgesl(lu.factors.data(), lu.factors.ld, static_cast<int>(n), lu.ipvt.data(), one.data(),
              job);
        const DoubleVec error = b.col(0) - (job == 0 ? product(a, one.matrix().col(0))
                                                     : product(transpose(a), one.matrix().col(0)));
        EXPECT_LE(norm2(error), kRatioLimit * (n + 2) * kEpsilon *
                                    norm1(job == 0 ? a : transpose(a)) *
                                    norm2(one.matrix().col(0)));
      }
    }
  }
}

TEST(dgedi, InverseAndDeterminantBelongToTheMatrix) {
  for (const auto& [name, a, condition] : squareMatrices()) {
    SCOPED_TRACE(name);
    Lu lu(a);
    if (estimate(a) < kEpsilon) continue;
    double det[2];
    const DoubleGenMat inverse = lu.inverse(det);
    const double size = norm1(a) * norm1(inverse);
    EXPECT_LT(ratio(norm1(product(a, inverse) - identity(a.cols())), size, a.cols()), kRatioLimit);
    EXPECT_THAT(std::fabs(det[0]), AllOf(Ge(1.0), testing::Lt(10.0)));
    EXPECT_TRUE(inverse == lu.inverse());
  }
}

TEST(dgedi, DeterminantsNeitherOverflowNorUnderflow) {
  for (const double factor : {1e100, 1e-100, 1e5, -1e-5}) {
    DoubleGenMat a = identity(300);
    a.diagonal() = factor;
    a(0, 0) = 4.0;
    const DoubleVec row = a.row(1).copy();
    a.row(1) = a.row(299);
    a.row(299) = row;
    double exponent = 0.0;
    const double sign = factor < 0.0 ? 1.0 : -1.0;
    EXPECT_NEAR(sign * 4.0, determinant(a, &exponent), 1000 * kEpsilon);
    EXPECT_EQ(299 * std::round(std::log10(std::fabs(factor))), exponent);
  }
  EXPECT_EQ(0.0, determinant(DoubleGenMat(5, 5, 1.0)));
  DoubleGenMat infinite = identity(2);
  infinite(0, 0) = -kInfinity;
  EXPECT_EQ(-kInfinity, determinant(infinite));
  EXPECT_EQ(1.0, determinant(DoubleGenMat(0, 0)));
}

TEST(dgeco, EstimateIsCloseAboveTheReciprocalCondition) {
  for (const auto& [name, a, condition] : squareMatrices()) {
    SCOPED_TRACE(name);
    const double rcond = estimate(a);
    EXPECT_THAT(rcond, AllOf(Ge(0.0), Le(1.0 + a.cols() * kEpsilon)));
    Lu lu(a);
    EXPECT_TRUE(lu.info == 0 || rcond <= a.cols() * kEpsilon);
    if (rcond < kEpsilon) continue;
    const double exact = 1.0 / norm1(a) / norm1(lu.inverse());
    EXPECT_GE(rcond, exact * (1.0 - a.cols() * kRatioLimit * kEpsilon));
    EXPECT_LE(rcond, 10.0 * exact);
  }
}

TEST(dgeco, KnownMatrices) {
  EXPECT_EQ(0.0, estimate(DoubleGenMat(3, 3, 0.0)));
  EXPECT_DOUBLE_EQ(1.0, estimate(identity(20)));
  DoubleGenMat a(vectorOf({0.0, 3.0, 2.0, 0.0}), 2, 2);
  EXPECT_DOUBLE_EQ(10.0 / 13.0, estimate(a));
  // Computed from the published steps in rational numbers; the signs of the second step count.
  EXPECT_DOUBLE_EQ(0.3,
                   estimate(DoubleGenMat(vectorOf({1., 1., 2., 4., -2., 0., 3., 3., -2.}), 3, 3)));
  Lu lu(a);
  EXPECT_THAT(lu.ipvt, ElementsAre(2, 2));
  EXPECT_THAT(list(lu.factors.matrix().copy().dataVec()), ElementsAre(3, 0, 0, 2));
  EXPECT_EQ(-6.0, determinant(a));
  EXPECT_EQ(0.25, Lu(DoubleGenMat(1, 1, 4.0)).inverse()(0, 0));
  // The multiplier of row 2 stays there though row 2 changes with row 1 in the second step.
  Lu exchanged(DoubleGenMat(vectorOf({4.0, 2.0, 1.0, 0.0, 1.0, 8.0, 0.0, 0.0, 3.0}), 3, 3));
  EXPECT_THAT(exchanged.ipvt, ElementsAre(1, 3, 3));
  EXPECT_EQ(-0.5, exchanged.factors(1, 0));
  EXPECT_EQ(-0.25, exchanged.factors(2, 0));
}
