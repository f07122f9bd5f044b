// Reflections and the QR factorization beside textbook loops, on matrices with room between
// columns.
#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>

#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/BlockReflector.h>
#include <kilnbase/linalg/linpack/dqrdc.h>
#include <kilnbase/linalg/linpack/dqrsl.h>
#include <kilnbase/linalg/linpack/pivotOrder.h>
#include <kilnbase/linalg/linpack/reflector.h>

#include "padded.h"

namespace {

using namespace vxKilnBase::linpack;
using kilntest::Doubles;
using kilntest::Padded;
using kilntest::reflectPlainly;
namespace tuning = vxKilnBase::kernels::tuning;

constexpr double kTolerance = 1e-11;

// The column of reflection vector l of a factored panel: 0 above the diagonal, qraux on it.
std::vector<double> vectorOf(Padded& x, const std::vector<double>& qraux, Index l) {
  std::vector<double> v(static_cast<std::size_t>(x.rows - l));
  for (Index i = l; i < x.rows; ++i) v[static_cast<std::size_t>(i - l)] = x.at(i, l);
  v[0] = qraux[static_cast<std::size_t>(l)];
  return v;
}

TEST(makeReflector, MapsOntoTheFirstUnitVector) {
  for (double scale : {1.0, 1e-310, 1e307}) {
    for (Index n : {1, 2, 7, 30}) {
      for (double sign : {1.0, -1.0}) {
        SCOPED_TRACE(testing::Message() << n << " elements of size " << scale << ", sign " << sign);
        Padded x(n, 1, 3);
        x.at(0, 0) = sign * std::fabs(x.at(0, 0));
        Padded y = x;
        for (Index i = 0; i < n; ++i) x.at(i, 0) *= scale;
        const double rho = makeReflector(n, x.data());
        EXPECT_GE(x.at(0, 0), 1.0);
        EXPECT_LE(x.at(0, 0), 2.0 + kTolerance);
        EXPECT_LT(rho * sign, 0.0);
        reflectPlainly(n, x.data(), y.data());
        EXPECT_NEAR(y.at(0, 0), rho / scale, kTolerance);
        for (Index i = 1; i < n; ++i) EXPECT_NEAR(y.at(i, 0), 0.0, kTolerance);
      }
    }
  }
}

TEST(makeReflector, LeavesAZeroVector) {
  double x[] = {0.0, 0.0};
  EXPECT_EQ(makeReflector(2, x), 0.0);
  EXPECT_EQ(x[0], 0.0);
}

// The reflection vectors of a random panel in place, with no reflection `missing`.
std::vector<double> makePanel(Padded& panel, Index missing) {
  std::vector<double> qraux(static_cast<std::size_t>(panel.columns), 0.0);
  for (Index j = 0; j < std::min(panel.rows, panel.columns); ++j) {
    double* v = &panel.at(j, j);
    if (j == missing) std::fill_n(v, panel.rows - j, 0.0);
    makeReflector(panel.rows - j, v);
    qraux[static_cast<std::size_t>(j)] = *v;
  }
  return qraux;
}

TEST(BlockReflector, AppliesTheReflectionsOneByOne) {
  for (Index m : {1, 5, 24, 60}) {
    for (Index k : {Index{1}, Index{2}, Index{7}, BlockReflector::kMostColumns}) {
      for (Index n : {Index{0}, Index{1}, Index{30}, tuning::kReflectedSlice + 5}) {
        if (k > m) continue;
        SCOPED_TRACE(testing::Message()
                     << m << " rows, " << k << " reflections, " << n << " columns");
        Padded panel(m, k, 1), c(m, n, 2);
        const std::vector<double> qraux = makePanel(panel, k / 2);
        Padded expected = c, expectedT = c, old = panel, ct = c;
        for (Index j = 0; j < n; ++j) {
          for (Index l = 0; l < k; ++l) {
            const Index back = k - 1 - l;
            if (qraux[static_cast<std::size_t>(back)] != 0.0)
              reflectPlainly(m - back, vectorOf(panel, qraux, back).data(), &expected.at(back, j));
            if (qraux[static_cast<std::size_t>(l)] != 0.0)
              reflectPlainly(m - l, vectorOf(panel, qraux, l).data(), &expectedT.at(l, j));
          }
        }
        {
          const BlockReflector reflector({panel.data(), panel.ld, m, k}, qraux.data());
          reflector.apply({c.data(), c.ld, m, n});
          reflector.applyTransposed({ct.data(), ct.ld, m, n});
        }
        EXPECT_EQ(c.difference(expected, kTolerance), "");
        EXPECT_EQ(ct.difference(expectedT, kTolerance), "");
        EXPECT_EQ(panel.difference(old, 0.0), "") << "the panel is restored";
      }
    }
  }
}

TEST(formOrthogonal, MultipliesTheReflections) {
  for (Index n : {1, 4, 30, 64, 65, 100}) {
    for (Index columns : {n / 2, n}) {
      for (Index reflectors : {Index{0}, columns / 2, columns}) {
        SCOPED_TRACE(testing::Message() << n << " by " << columns << ", " << reflectors);
        Padded q(n, columns, 1), expected(n, columns);
        const std::vector<double> qraux = makePanel(q, n / 3);
        for (Index j = 0; j < columns; ++j) {
          for (Index i = 0; i < n; ++i) expected.at(i, j) = i == j ? 1.0 : 0.0;
          for (Index l = reflectors; l-- > 0;) {
            if (qraux[static_cast<std::size_t>(l)] != 0.0)
              reflectPlainly(n - l, vectorOf(q, qraux, l).data(), &expected.at(l, j));
          }
        }
        formOrthogonal(n, columns, reflectors, q.data(), q.ld);
        EXPECT_EQ(q.difference(expected, kTolerance), "");
      }
    }
  }
}

// The free column from l on of the largest norm of rows l to n - 1.
Index pivotColumn(Padded& x, Index l, Index end) {
  Index best = l;
  double largest = -1.0;
  for (Index j = l; j < end; ++j) {
    double square = 0.0;
    for (Index i = l; i < x.rows; ++i) square += x.at(i, j) * x.at(i, j);
    if (square > largest) {
      largest = square;
      best = j;
    }
  }
  return best;
}

// dqrdc in plain loops, where columns `begin` to `end` - 1 take part in pivoting.
void factorPlainly(Padded& x, std::vector<double>& qraux, std::vector<int>& jpvt, Index begin,
                   Index end) {
  for (Index l = 0; l < std::min(x.rows, x.columns); ++l) {
    if (l >= begin && l < end) {
      const Index pivot = pivotColumn(x, l, end);
      std::swap_ranges(&x.at(0, l), &x.at(0, l) + x.rows, &x.at(0, pivot));
      std::swap(jpvt[static_cast<std::size_t>(l)], jpvt[static_cast<std::size_t>(pivot)]);
    }
    if (l + 1 == x.rows) break;
    double norm = 0.0;
    for (Index i = l; i < x.rows; ++i) norm = std::hypot(norm, x.at(i, l));
    if (norm == 0.0) continue;
    if (x.at(l, l) < 0.0) norm = -norm;
    for (Index i = l; i < x.rows; ++i) x.at(i, l) /= norm;
    x.at(l, l) += 1.0;
    for (Index j = l + 1; j < x.columns; ++j) reflectPlainly(x.rows - l, &x.at(l, l), &x.at(l, j));
    qraux[static_cast<std::size_t>(l)] = std::exchange(x.at(l, l), -norm);
  }
}

struct Shape {
  Index n, p;
};

// Below and above every switch point: eager, lazy, wide, very wide, tall, blocked.
constexpr Shape kShapes[] = {{1, 1},
                             {1, 9},
                             {9, 1},
                             {8, 8},
                             {30, 30},
                             {50, 31},
                             {31, 50},
                             {70, 66},
                             {66, 130},
                             {130, 66},
                             {9, 1300},
                             {5, 3100},
                             {2 * tuning::kSweepRows + 11, 9}};

TEST(pivotOrder, MovesInitialElementsToTheFrontAndFinalOnesToTheEnd) {
  std::vector<int> jpvt = {-1, 0, 1, 0, -1, 1}, numbers = {1, 2, 3, 4, 5, 6};
  const FreeRange range = pivotOrder(6, jpvt.data(), [&](Index i, Index j) {
    EXPECT_LT(i, j);
    std::swap(numbers[static_cast<std::size_t>(i)], numbers[static_cast<std::size_t>(j)]);
  });
  EXPECT_EQ(jpvt, (std::vector<int>{3, 6, 2, 4, 1, 5}));
  EXPECT_EQ(numbers, jpvt);
  EXPECT_EQ(range.begin, 2);
  EXPECT_EQ(range.end, 4);
}

void expectFactorization(const Shape& shape, int job, Index fixed) {
  SCOPED_TRACE(testing::Message() << shape.n << " by " << shape.p << ", job " << job << ", fixed "
                                  << fixed);
  Padded x(shape.n, shape.p, 7);
  if (shape.p > 4) std::fill_n(&x.at(0, 2), shape.n, 0.0);
  const std::size_t p = static_cast<std::size_t>(shape.p);
  std::vector<double> qraux(p, -1.0), expectedQraux(p, 0.0), work(p);
  std::vector<int> jpvt(p, 0), expectedJpvt(p);
  std::iota(expectedJpvt.begin(), expectedJpvt.end(), 1);
  Padded expected = x;
  // Final columns stand first and initial ones last: each changes places with one of the others.
  for (Index j = 0; j < fixed; ++j) {
    const std::size_t first = static_cast<std::size_t>(j);
    const std::size_t last = static_cast<std::size_t>(shape.p - fixed + j);
    jpvt[first] = -1;
    jpvt[last] = 1;
    std::swap(expectedJpvt[first], expectedJpvt[last]);
    std::swap_ranges(&expected.at(0, j), &expected.at(0, j) + shape.n,
                     &expected.at(0, shape.p - fixed + j));
  }
  factorPlainly(expected, expectedQraux, expectedJpvt, job != 0 ? fixed : shape.p, shape.p - fixed);
  dqrdc(x.data(), x.stride(), static_cast<int>(shape.n), static_cast<int>(shape.p), qraux.data(),
        jpvt.data(), work.data(), job);
  EXPECT_EQ(x.difference(expected, 1e-9), "");
  for (std::size_t j = 0; j < p; ++j) EXPECT_NEAR(qraux[j], expectedQraux[j], 1e-9) << j;
  if (job != 0) {
    EXPECT_EQ(jpvt, expectedJpvt);
  }
}

TEST(dqrdc, EqualsPlainLoops) {
  for (const Shape& shape : kShapes) {
    expectFactorization(shape, 0, 0);
    expectFactorization(shape, 1, 0);
    expectFactorization(shape, 1, shape.p / 5);
  }
}

TEST(dqrsl, AppliesTheReflectionsAndSolves) {
  constexpr int n = 30, p = 7, k = 5;
  Padded x(n, p, 1);
  std::vector<double> qraux(p);
  dqrdc(x.data(), x.stride(), n, p, qraux.data(), nullptr, nullptr, 0);
  const Padded y(n, 1, 2);
  Padded expectedQy = y, expectedQty = y, expectedFit(n, 1);
  for (Index l = 0; l < k; ++l) {
    reflectPlainly(n - (k - 1 - l), vectorOf(x, qraux, k - 1 - l).data(),
                   &expectedQy.at(k - 1 - l, 0));
    reflectPlainly(n - l, vectorOf(x, qraux, l).data(), &expectedQty.at(l, 0));
  }
  Padded residual = expectedQty, coefficients(k, 1), expectedCoefficients(k, 1);
  for (Index j = 0; j < k; ++j) residual.at(j, 0) = 0.0;
  for (Index l = k; l-- > 0;)
    reflectPlainly(n - l, vectorOf(x, qraux, l).data(), &residual.at(l, 0));
  for (Index j = k; j-- > 0;) {
    double sum = expectedQty.at(j, 0);
    for (Index i = j + 1; i < k; ++i) sum -= x.at(j, i) * expectedCoefficients.at(i, 0);
    expectedCoefficients.at(j, 0) = sum / x.at(j, j);
  }
  Padded in = y, qy(n, 1), qty(n, 1), rsd(n, 1), xb(n, 1);
  for (Index i = 0; i < n; ++i) expectedFit.at(i, 0) = in.at(i, 0) - residual.at(i, 0);
  EXPECT_EQ(dqrsl(x.data(), x.stride(), n, k, qraux.data(), in.data(), qy.data(), qty.data(),
                  coefficients.data(), rsd.data(), xb.data(), 11111),
            0);
  EXPECT_EQ(qy.difference(expectedQy, kTolerance), "");
  EXPECT_EQ(qty.difference(expectedQty, kTolerance), "");
  EXPECT_EQ(coefficients.difference(expectedCoefficients, kTolerance), "");
  EXPECT_EQ(rsd.difference(residual, kTolerance), "");
  EXPECT_EQ(xb.difference(expectedFit, kTolerance), "");
}

}  // namespace
