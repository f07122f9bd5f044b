// The inverse of 4 by 4 matrices beside plain Gauss-Jordan elimination with partial pivoting.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <gtest/gtest.h>
#include <random>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>

namespace {

using vxKilnBase::kernels::active;

using Matrix = std::array<double, 16>;

Matrix plainInverse(const Matrix& m) {
  double rows[4][8] = {};
  for (std::ptrdiff_t r = 0; r < 4; ++r) {
    std::copy_n(m.data() + 4 * r, 4, rows[r]);
    rows[r][4 + r] = 1.0;
  }
  for (int k = 0; k < 4; ++k) {
    const auto square = [&](int row) { return rows[row][k] * rows[row][k]; };
    int pivotRow = k;
    for (int row = k + 1; row < 4; ++row) {
      if (square(row) > square(pivotRow)) pivotRow = row;
    }
    std::swap(rows[k], rows[pivotRow]);
    const double pivot = rows[k][k];
    for (double& x : rows[k]) x /= pivot;
    for (int row = 0; row < 4; ++row) {
      const double factor = rows[row][k];
      for (int c = 0; c < 8 && row != k; ++c) rows[row][c] -= factor * rows[k][c];
    }
  }
  Matrix inverse;
  for (std::ptrdiff_t r = 0; r < 4; ++r) std::copy_n(rows[r] + 4, 4, inverse.data() + 4 * r);
  return inverse;
}

}  // namespace

// Small integers make ties and singular matrices, great exponents squares of 0 and infinity.
TEST(Inverse, HasTheDigitsOfPlainElimination) {
  std::mt19937_64 engine(1);
  std::normal_distribution<double> normal;
  int singular = 0;
  const auto isFinite = [](double x) { return std::isfinite(x); };
  for (int i = 0; i < 20000; ++i) {
    Matrix m;
    for (double& x : m) {
      const double random = normal(engine);
      x = i % 3 == 0 ? random : i % 3 == 1 ? std::round(random) : std::exp(200 * random);
    }
    const Matrix expected = plainInverse(m);
    active().inverse->invert4x4(m.data(), m.data());
    if (std::ranges::all_of(expected, isFinite)) {
      EXPECT_EQ(expected, m) << i;
    } else {
      EXPECT_FALSE(std::ranges::all_of(m, isFinite)) << i;
      ++singular;
    }
  }
  EXPECT_GT(singular, 1000);
}
