// The Cholesky factorization and its updates beside textbook loops, on triangles that end in
// guards.
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

#include <kilnbase/linalg/linpack/dchdc.h>

#include "padded.h"

namespace {

using namespace vxKilnBase::linpack;
using kilntest::Index;
using kilntest::Padded;

constexpr double kTolerance = 1e-10;

// A random positive definite matrix of order p.
Padded definite(Index p) {
  Padded x = Padded::random(p + 9, p, 5), a(p, p);
  for (Index j = 0; j < p; ++j) {
    for (Index i = 0; i <= j; ++i) {
      a.at(i, j) = 0.0;
      for (Index k = 0; k < p + 9; ++k) a.at(i, j) += x.at(k, i) * x.at(k, j);
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
    const Padded a = definite(p);
    expectFactorization(a, 0, 0);
    expectFactorization(a, 1, 0);
    expectFactorization(a, 1, p / 4);
  }
}

TEST(dchdc, StopsWhereThePivotIsNotPositive) {
  for (Index p : {5, 20, 40, 90}) {
    for (Index bad : {Index{0}, p / 3, p - 1}) {
      Padded a = definite(p);
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

}  // namespace
