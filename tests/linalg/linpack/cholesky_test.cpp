// The Cholesky factorization and its updates beside textbook loops, on triangles that end in
// guards.
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

#include <kilnbase/linalg/linpack/dchdc.h>
#include <kilnbase/linalg/linpack/dchdd.h>
#include <kilnbase/linalg/linpack/dchex.h>
#include <kilnbase/linalg/linpack/dchud.h>
#include <kilnbase/linalg/linpack/triangular.h>

#include "padded.h"

namespace {

using namespace vxKilnBase::linpack;
using kilntest::Doubles;
using kilntest::Index;
using kilntest::Padded;

constexpr double kTolerance = 1e-10;

// XᵀX for the rows `from` to `to` - 1 of X; guards below the diagonal.
Padded gram(Padded& x, Index from, Index to) {
  Padded a(x.columns, x.columns);
  for (Index j = 0; j < x.columns; ++j) {
    for (Index i = 0; i <= j; ++i) {
      a.at(i, j) = 0.0;
      for (Index k = from; k < to; ++k) a.at(i, j) += x.at(k, i) * x.at(k, j);
    }
  }
  return a;
}

double& symmetric(Padded& a, Index i, Index j) {
  return i <= j ? a.at(i, j) : a.at(j, i);
}

// dchdc in plain loops. Returns the number of rows eliminated.
Index factorPlainly(Padded& a, std::vector<int>& jpvt, Index begin, Index end) {
  const Index p = a.columns;
  for (Index k = 0; k < p; ++k) {
    Index pivot = k;
    for (Index j = k; k >= begin && j < end; ++j) {
      if (a.at(j, j) > a.at(pivot, pivot)) pivot = j;
    }
    if (!(a.at(pivot, pivot) > 0.0)) return k;
    Padded old = a;
    const auto place = [&](Index i) { return i == k ? pivot : i == pivot ? k : i; };
    for (Index j = 0; j < p; ++j) {
      for (Index i = 0; i <= j; ++i) {
        a.at(i, j) = i < k ? old.at(i, place(j)) : symmetric(old, place(i), place(j));
      }
    }
    std::swap(jpvt[static_cast<std::size_t>(k)], jpvt[static_cast<std::size_t>(pivot)]);
    a.at(k, k) = std::sqrt(a.at(k, k));
    for (Index j = k + 1; j < p; ++j) {
      a.at(k, j) /= a.at(k, k);
      for (Index i = k + 1; i <= j; ++i) a.at(i, j) -= a.at(k, i) * a.at(k, j);
    }
  }
  return p;
}

void expectFactorization(Padded a, int job, Index fixed) {
  const Index p = a.columns;
  SCOPED_TRACE(testing::Message() << "order " << p << ", job " << job << ", fixed " << fixed);
  std::vector<int> jpvt(static_cast<std::size_t>(p), 0), expectedJpvt(static_cast<std::size_t>(p));
  std::iota(expectedJpvt.begin(), expectedJpvt.end(), 1);
  for (Index j = 0; j < fixed; ++j) {
    jpvt[static_cast<std::size_t>(j)] = 1;
    jpvt[static_cast<std::size_t>(p - 1 - j)] = -1;
  }
  Padded expected = a;
  std::vector<double> work(static_cast<std::size_t>(p));
  const Index rows = factorPlainly(expected, expectedJpvt, job != 0 ? fixed : p, p - fixed);
  EXPECT_EQ(dchdc(a.data(), a.stride(), static_cast<int>(p), work.data(), jpvt.data(), job), rows);
  EXPECT_EQ(a.difference(expected, kTolerance), "");
  if (job != 0) {
    EXPECT_EQ(jpvt, expectedJpvt);
  }
}

TEST(dchdc, EqualsPlainLoops) {
  for (Index p : {0, 1, 2, 7, 8, 9, 16, 17, 31, 32, 33, 47, 80, 81, 130}) {
    Padded x(p + 9, p, 5);
    const Padded a = gram(x, 0, p + 9);
    expectFactorization(a, 0, 0);
    expectFactorization(a, 1, 0);
    expectFactorization(a, 1, p / 4);
  }
}

TEST(dchdc, StopsWhereThePivotIsNotPositive) {
  for (Index p : {5, 20, 40, 90}) {
    Padded x(p + 9, p, 6);
    for (Index bad : {Index{0}, p / 3, p - 1}) {
      Padded a = gram(x, 0, p + 9);
      a.at(bad, bad) = -1.0;
      expectFactorization(a, 1, 0);
      // Without pivoting the rows that are subtracted depend on the block.
      std::vector<int> unused(static_cast<std::size_t>(p));
      Padded expected = a;
      const Index rows = factorPlainly(expected, unused, p, p);
      EXPECT_EQ(dchdc(a.data(), a.stride(), static_cast<int>(p), nullptr, nullptr, 0), rows);
      for (Index j = 0; j < p; ++j) {
        for (Index i = 0; i < std::min(rows, j + 1); ++i) {
          EXPECT_NEAR(a.at(i, j), expected.at(i, j), kTolerance);
        }
      }
    }
  }
}

TEST(dchdc, TakesTheFirstOfEqualPivots) {
  for (Index p : {5, 32, 90}) {
    Padded a(p, p);
    for (Index j = 0; j < p; ++j) {
      for (Index i = 0; i <= j; ++i) a.at(i, j) = i == j ? 4.0 : 0.0;
    }
    expectFactorization(a, 1, 0);
  }
}

TEST(triangular, SolvesInPlace) {
  for (Index k = 0; k <= 20; ++k) {
    Padded x(k + 9, k, 1), solution(k, 1, 2);
    Padded r = gram(x, 0, k + 9);
    dchdc(r.data(), r.stride(), static_cast<int>(k), nullptr, nullptr, 0);
    Padded b(k, 1), bt(k, 1);
    for (Index i = 0; i < k; ++i) {
      b.at(i, 0) = bt.at(i, 0) = 0.0;
      for (Index j = 0; j < k; ++j) {
        if (i <= j) b.at(i, 0) += r.at(i, j) * solution.at(j, 0);
        if (j <= i) bt.at(i, 0) += r.at(j, i) * solution.at(j, 0);
      }
    }
    solveUpper(r.data(), r.ld, k, b.data());
    solveUpperTransposed(r.data(), r.ld, k, bt.data());
    EXPECT_EQ(b.difference(solution, kTolerance), "") << k;
    EXPECT_EQ(bt.difference(solution, kTolerance), "") << k;
  }
}

// R of the QR factorization of (X, Y), from which R, Z and rho of the problems min |X b - Y| come.
struct LeastSquares {
  LeastSquares(Padded& xy, Index rows, Index order)
      : p(order), nz(xy.columns - order), r(order, order), z(order, nz) {
    Padded a = gram(xy, 0, rows);
    std::vector<int> unused(static_cast<std::size_t>(xy.columns));
    factorPlainly(a, unused, xy.columns, xy.columns);
    for (Index j = 0; j < xy.columns; ++j) {
      for (Index i = 0; i < std::min(j + 1, p); ++i)
        (j < p ? r.at(i, j) : z.at(i, j - p)) = a.at(i, j);
      if (j < p) continue;
      double square = 0.0;
      for (Index i = p; i <= j; ++i) square += a.at(i, j) * a.at(i, j);
      rho.push_back(std::sqrt(square));
    }
  }

  // Rows of R and Z are determined up to their sign.
  void makeDiagonalPositive() {
    for (Index i = 0; i < p; ++i) {
      if (r.at(i, i) >= 0.0) continue;
      for (Index j = i; j < p; ++j) r.at(i, j) = -r.at(i, j);
      for (Index j = 0; j < nz; ++j) z.at(i, j) = -z.at(i, j);
    }
  }

  void expectEqual(LeastSquares& expected) {
    makeDiagonalPositive();
    EXPECT_EQ(r.difference(expected.r, kTolerance), "");
    EXPECT_EQ(z.difference(expected.z, kTolerance), "");
    for (std::size_t j = 0; j < rho.size(); ++j) EXPECT_NEAR(rho[j], expected.rho[j], kTolerance);
  }

  Index p, nz;
  Padded r, z;
  std::vector<double> rho;
};

TEST(dchud, AddsARowAndDchddRemovesIt) {
  for (Index p : {1, 2, 9, 20}) {
    for (Index nz : {0, 1, 3}) {
      SCOPED_TRACE(testing::Message() << "order " << p << ", " << nz << " right-hand sides");
      Padded xy(p + 9, p + nz, 4);
      LeastSquares with(xy, p + 9, p), without(xy, p + 8, p);
      std::vector<double> row, c(static_cast<std::size_t>(p)), s(c);
      for (Index j = 0; j < p + nz; ++j) row.push_back(xy.at(p + 8, j));
      const int order = static_cast<int>(p), count = static_cast<int>(nz);
      LeastSquares updated = without, downdated = with;
      dchud(updated.r.data(), updated.r.stride(), order, row.data(), updated.z.data(),
            updated.z.stride(), count, row.data() + p, updated.rho.data(), c.data(), s.data());
      updated.expectEqual(with);
      EXPECT_EQ(dchdd(downdated.r.data(), downdated.r.stride(), order, row.data(),
                      downdated.z.data(), downdated.z.stride(), count, row.data() + p,
                      downdated.rho.data(), c.data(), s.data()),
                0);
      downdated.expectEqual(without);
    }
  }
}

TEST(dchdd, LeavesEverythingWhereTheRowIsTooLarge) {
  Padded xy(12, 4, 4);
  LeastSquares problem(xy, 12, 3);
  LeastSquares old = problem;
  double row[] = {100.0, 100.0, 100.0}, y = 1.0, c[3], s[3];
  EXPECT_EQ(dchdd(problem.r.data(), problem.r.stride(), 3, row, problem.z.data(),
                  problem.z.stride(), 1, &y, problem.rho.data(), c, s),
            -1);
  problem.expectEqual(old);
}

TEST(dchex, FactorsTheShiftedColumns) {
  constexpr Index p = 9, nz = 2;
  for (Index k = 1; k <= p; ++k) {
    for (Index l = k; l <= p; ++l) {
      for (int job : {1, 2}) {
        SCOPED_TRACE(testing::Message() << "columns " << k << " to " << l << ", job " << job);
        Padded xy(p + 6, p + nz, 8);
        LeastSquares shifted(xy, p + 6, p);
        Padded moved = xy;
        for (Index i = 0; i < p + 6; ++i) {
          double* first = moved.data() + (k - 1) * moved.ld + i;
          for (Index j = k; j < l; ++j, first += moved.ld) {
            *first = job == 2 ? xy.at(i, j) : xy.at(i, j == k ? l - 1 : j - 2);
          }
          moved.at(i, l - 1) = job == 2 ? xy.at(i, k - 1) : xy.at(i, l == k ? l - 1 : l - 2);
        }
        LeastSquares expected(moved, p + 6, p);
        double c[p], s[p];
        dchex(shifted.r.data(), shifted.r.stride(), p, static_cast<int>(k), static_cast<int>(l),
              shifted.z.data(), shifted.z.stride(), nz, c, s, job);
        shifted.expectEqual(expected);
      }
    }
  }
}

}  // namespace
