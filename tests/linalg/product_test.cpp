// Products of whole numbers, which are exact, beside the sums that define them; for every layout of
// the operands. The kernels are tested for every shape.
#include <cmath>
#include <gtest/gtest.h>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/Matrices.h"

using namespace kilntest;

namespace {

DoubleGenMat wholeNumbers(unsigned m, unsigned n, std::uint64_t seed) {
  return DoubleGenMat(floor(randomVector(m * n, seed) * 5.0), m, n);
}

DoubleGenMat plainProduct(const DoubleGenMat& a, const DoubleGenMat& b) {
  DoubleGenMat c(a.rows(), b.cols(), 0.0);
  for (unsigned i = 0; i < a.rows(); ++i) {
    for (unsigned j = 0; j < b.cols(); ++j) {
      for (unsigned k = 0; k < a.cols(); ++k) c(i, j) += a(i, k) * b(k, j);
    }
  }
  return c;
}

// The same matrix over a data vector of stride -3.
DoubleGenMat scattered(const DoubleGenMat& a) {
  const unsigned n = a.rows() * a.cols();
  DoubleVec wide(3 * n + 1, kNaN);
  const DoubleGenMat result(wide.slice(static_cast<int>(3 * n), n, -3), a.rows(), a.cols());
  result.dataVec() = a.dataVec();
  return result;
}

}  // namespace

TEST(Product, EveryLayoutOfTheOperands) {
  const unsigned sizes[] = {0, 1, 2, 8, 9, 31, 300};
  for (unsigned shape = 0; shape < 7 * 7 * 7; ++shape) {
    const unsigned m = sizes[shape / 49], k = sizes[shape / 7 % 7], n = sizes[shape % 7];
    if (m * n * k > 300 * 300 * 31) continue;
    SCOPED_TRACE(testing::Message() << m << " by " << k << " by " << n);
    const DoubleGenMat left = wholeNumbers(m, k, 1), right = wholeNumbers(k, n, 2);
    const DoubleGenMat expected = plainProduct(left, right);
    for (const DoubleGenMat& a : {left, scattered(left)}) {
      for (const DoubleGenMat& b : {right, scattered(right)}) {
        const DoubleVec &row = a, &column = b;
        EXPECT_EQ(expected, product(a, b));
        EXPECT_EQ(expected, transProduct(a, transpose(b)));
        EXPECT_EQ(expected, transposeProduct(transpose(a), b));
        if (n == 1) {
          EXPECT_EQ(expected.dataVec(), product(a, column));
        }
        if (m == 1) {
          EXPECT_EQ(expected.dataVec(), product(row, b));
        }
      }
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
