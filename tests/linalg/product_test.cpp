// Products against the sums that define them, over the shapes at which the register tiles change.
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include <kilnbase/linalg/DoubleGenMat.h>

#include "tests/support/Matrices.h"

using namespace kilntest;

namespace {

// The largest element of |C - AB|, each in units of the rounding error that its sum may have.
// Infinite when the size of C is wrong.
double residual(const DoubleGenMat& a, const DoubleGenMat& b, const DoubleGenMat& c) {
  if (c.rows() != a.rows() || c.cols() != b.cols()) return kInfinity;
  double worst = 0.0;
  for (unsigned i = 0; i < c.rows(); ++i) {
    for (unsigned j = 0; j < c.cols(); ++j) {
      double sum = 0.0;
      double magnitude = std::numeric_limits<double>::min();
      for (unsigned k = 0; k < a.cols(); ++k) {
        sum += a(i, k) * b(k, j);
        magnitude += std::abs(a(i, k) * b(k, j));
      }
      const double error = ratio(c(i, j) - sum, magnitude, 2 * a.cols() + 2);
      worst = std::isnan(error) ? kInfinity : std::max(worst, std::abs(error));
    }
  }
  return worst;
}

// The same matrix over a data vector of stride -3.
DoubleGenMat scattered(const DoubleGenMat& a) {
  const unsigned n = a.rows() * a.cols();
  DoubleVec wide(3 * n + 1, kNaN);
  const DoubleGenMat result(wide.slice(static_cast<int>(3 * n), n, -3), a.rows(), a.cols());
  result.dataVec() = a.dataVec();
  return result;
}

double worstProduct(unsigned m, unsigned n, unsigned k) {
  const DoubleGenMat a = randomMatrix(m, k, 1 + m), b = randomMatrix(k, n, 2 + n);
  const DoubleGenMat transposed = transpose(b);
  return std::max({residual(a, b, product(a, b)), residual(a, b, product(scattered(a), b)),
                   residual(a, b, product(a, scattered(b))),
                   residual(a, b, transProduct(a, transposed)),
                   residual(a, b, transProduct(scattered(a), scattered(transposed))),
                   residual(a, b, transposeProduct(transpose(a), b))});
}

}  // namespace

TEST(Product, EverySmallShapeAndSomeOfManyBlocks) {
  for (const unsigned k : {0U, 1U, 2U, 7U, 8U, 9U, 17U}) {
    for (unsigned i = 0; i < 41 * 41; ++i) {
      ASSERT_LE(worstProduct(i / 41, i % 41, k), 1.0) << i / 41 << " x " << i % 41 << ", " << k;
    }
  }
  const unsigned large[][3] = {{30, 30, 1000}, {17, 801, 20},  {1001, 5, 5},
                               {300, 9, 200},  {97, 390, 390}, {3, 400, 193}};
  for (const auto& [m, n, k] : large) {
    EXPECT_LE(worstProduct(m, n, k), 1.0) << m << " x " << n << ", inner " << k;
  }
}

TEST(Product, MatrixTimesVector) {
  for (const unsigned m : {0U, 1U, 3U, 8U, 9U, 31U, 65U, 72U, 130U, 333U}) {
    for (const unsigned n : {0U, 1U, 5U, 8U, 13U, 64U, 127U, 300U}) {
      const DoubleGenMat a = randomMatrix(m, n, m + n), right = randomMatrix(n, 1, m),
                         left = randomMatrix(1, m, n);
      const auto check = [&](const DoubleGenMat& same, const DoubleVec& x, const DoubleVec& y) {
        EXPECT_LE(residual(a, right, DoubleGenMat(product(same, x), m, 1)), 1.0) << m << ' ' << n;
        EXPECT_LE(residual(left, a, DoubleGenMat(product(y, same), 1, n)), 1.0) << m << ' ' << n;
      };
      check(a, right, left);
      check(scattered(a), right, left);
      check(a, scattered(right), scattered(left));
    }
  }
}

// An infinity or NaN reaches the sums that it takes part in, and no others.
TEST(Product, NotFinite) {
  for (const unsigned n : {3, 8, 9, 13, 25, 33, 70}) {
    const DoubleGenMat ones(n, n, 1.0);
    for (unsigned at = 0; at < n; at += 2) {
      DoubleGenMat a(n, n, 0.0), infinite = ones.copy();
      a(at, n / 2) = kNaN;
      infinite(n - 1, at) = kInfinity;
      const DoubleVec found[] = {product(a, ones.col(0)), product(ones.col(0), transpose(a)),
                                 product(a, ones).col(n - 1)};
      const DoubleVec columnSums = product(ones.col(0), infinite);
      for (unsigned i = 0; i < n; ++i) {
        for (const DoubleVec& sums : found) EXPECT_EQ(i == at, std::isnan(sums(i))) << n;
        EXPECT_EQ(i == at ? kInfinity : n, columnSums(i)) << n;
      }
    }
  }
}
