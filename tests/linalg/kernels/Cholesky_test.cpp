// The eliminations of the Cholesky factorization: from A = RᵀR, where R has whole numbers and the
// arithmetic is exact, they give R back.
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include <kilnbase/linalg/kernels/Kernels.h>

#include "tests/support/GuardedArray.h"

namespace {

using kilntest::Doubles;
using kilntest::Index;
using vxKilnBase::kernels::active;
using vxKilnBase::kernels::CholeskyKernels;

// An upper triangular R of order p in the upper triangle of an array; elements below stay guards.
Doubles triangle(Index p, Index ld, std::uint64_t seed) {
  Doubles numbers(p, p, ld, seed), r(p > 0 ? (p - 1) * ld + p : 0);
  for (Index j = 0; j < p; ++j) {
    for (Index i = 0; i < j; ++i) r[j * ld + i] = numbers[j * ld + i];
    r[j * ld + j] = static_cast<double>(1 + j % 5);
  }
  return r;
}

// The upper triangle of A, where rows 0 to `first` - 1 of R are subtracted from RᵀR and stand in
// their place.
Doubles partlyEliminated(Index p, Index ld, Doubles& r, Index first) {
  Doubles a = r;
  for (Index j = 0; j < p; ++j) {
    for (Index i = first; i <= j; ++i) {
      double sum = 0.0;
      for (Index k = first; k <= i; ++k) sum += r[i * ld + k] * r[j * ld + k];
      a[j * ld + i] = sum;
    }
  }
  return a;
}

TEST(CholeskyKernels, EliminateStripStopsAtTheFirstBadPivot) {
  constexpr Index kRows = CholeskyKernels::kStripRows;
  for (Index n = 0; n <= 5 * kRows; ++n) {
    const Index rows = std::min(n, kRows), ld = n + 3;
    for (Index bad = 0; bad <= rows; ++bad) {
      SCOPED_TRACE(testing::Message() << n << " columns, bad pivot " << bad);
      Doubles r = triangle(n, ld, 1);
      Doubles a = partlyEliminated(n, ld, r, 0), expected = partlyEliminated(n, ld, r, bad);
      // Rows below the strip stay as they are.
      for (Index j = rows; j < n; ++j)
        std::copy(&a[j * ld + rows], &a[j * ld + j] + 1, &expected[j * ld + rows]);
      if (bad < rows) {
        a[bad * ld + bad] -= expected[bad * ld + bad];
        expected[bad * ld + bad] = 0.0;
      }
      EXPECT_EQ(active().cholesky->eliminateStrip(rows, n, a.data(), ld), bad);
      EXPECT_EQ(a.difference(expected), "");
    }
  }
}

TEST(CholeskyKernels, EliminateRowSubtractsTheRowsAbove) {
  constexpr Index p = CholeskyKernels::kMostSmall + 50, ld = p + 1;
  for (Index first : {0, 3}) {
    for (Index m = 0; first + m + CholeskyKernels::kMostSmall < p; ++m) {
      SCOPED_TRACE(testing::Message() << "row " << m << " from " << first);
      const Index k = first + m;
      Doubles r = triangle(p, ld, 2);
      Doubles a(p, p, ld, 3), diagonal(p, 4);
      // Rows `first` to k - 1 of R above row k of A, in the columns from k on.
      for (Index j = k; j < p; ++j) {
        double sum = 0.0;
        for (Index i = first; i <= k; ++i) {
          a[j * ld + i] = r[j * ld + i];
          sum += r[k * ld + i] * r[j * ld + i];
        }
        a[j * ld + k] = sum;
      }
      Doubles expected = a, expectedDiagonal = diagonal;
      for (Index j = k + 1; j < p; ++j) {
        expected[j * ld + k] = r[j * ld + k];
        expectedDiagonal[j] -= r[j * ld + k] * r[j * ld + k];
      }
      active().cholesky->eliminateRow(m, p - k - 1, r[k * ld + k], &a[k * ld + first], ld,
                                      diagonal.data() + k + 1);
      EXPECT_EQ(a.difference(expected), "");
      EXPECT_EQ(diagonal.difference(expectedDiagonal), "");
    }
  }
}

TEST(CholeskyKernels, EliminateSmallMovesTheLargestFreePivot) {
  for (Index p = 0; p <= CholeskyKernels::kMostSmall; ++p) {
    for (Index fixed : {Index{0}, p / 4}) {
      SCOPED_TRACE(testing::Message() << "order " << p << ", fixed at both ends " << fixed);
      const Index ld = p + 2, freeEnd = p - fixed;
      Doubles r = triangle(p, ld, 5);
      Doubles a = partlyEliminated(p, ld, r, 0), diagonal(p, 6);
      // No two diagonal elements are ever equal.
      for (Index j = 0; j < p; ++j) diagonal[j] = a[j * ld + j] += 0.37 * static_cast<double>(j);
      // The same elimination in plain loops on the full matrix.
      std::vector<double> full(static_cast<std::size_t>(p * p));
      const auto at = [&](Index i, Index j) -> double& {
        return full[static_cast<std::size_t>(j * p + i)];
      };
      for (Index j = 0; j < p; ++j) {
        for (Index i = 0; i <= j; ++i) at(i, j) = at(j, i) = a[j * ld + i];
      }
      std::vector<int> places(static_cast<std::size_t>(p)), expectedPlaces;
      for (Index k = 0; k < p; ++k) {
        Index l = k;
        for (Index i = k + 1; k >= fixed && k < freeEnd && i < freeEnd; ++i) {
          if (at(i, i) > at(l, l)) l = i;
        }
        expectedPlaces.push_back(static_cast<int>(l));
        for (Index i = 0; i < p; ++i) std::swap(at(k, i), at(l, i));
        for (Index i = 0; i < p; ++i) std::swap(at(i, k), at(i, l));
        at(k, k) = std::sqrt(at(k, k));
        for (Index j = k + 1; j < p; ++j) at(k, j) = at(j, k) /= at(k, k);
        for (Index j = k + 1; j < p; ++j) {
          for (Index i = k + 1; i < p; ++i) at(i, j) -= at(k, i) * at(k, j);
        }
      }
      EXPECT_EQ(active().cholesky->eliminateSmall(p, fixed, freeEnd, a.data(), ld, diagonal.data(),
                                                  places.data()),
                p);
      EXPECT_EQ(places, expectedPlaces);
      for (Index j = 0; j < p; ++j) {
        for (Index i = 0; i <= j; ++i) {
          EXPECT_NEAR(a[j * ld + i], at(i, j), 1e-10) << i << ", " << j;
          a[j * ld + i] = r[j * ld + i];
        }
      }
      EXPECT_EQ(a.difference(r), "");
    }
  }
}

}  // namespace
