// The Cholesky factorization beside textbook loops, on triangles that end in guards.
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numeric>

#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/dchdc.h>
#include <kilnbase/linalg/vecmath.h>

#include "padded.h"

namespace {

using namespace vxKilnBase::linpack;
using namespace kilntest;

constexpr double kTolerance = 1e-10;

// The upper triangle of a matrix; guards below it.
Padded upper(const DoubleGenMat& matrix) {
  Padded a(matrix.rows(), matrix.cols());
  for (int j = 0; j < a.columns; ++j) {
    for (int i = 0; i <= j; ++i) a.at(i, j) = matrix(i, j);
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
  std::vector<int> jpvt(static_cast<std::size_t>(p), 0), expectedJpvt = jpvt;
  std::iota(expectedJpvt.begin(), expectedJpvt.end(), 1);
  std::fill_n(jpvt.begin(), fixed, 1);
  std::fill_n(jpvt.rbegin(), fixed, -1);
  Padded expected = a;
  std::vector<double> work(static_cast<std::size_t>(p));
  const Index rows = factorPlainly(expected, expectedJpvt, job != 0 ? fixed : p, p - fixed);
  EXPECT_EQ(dchdc(a.data(), a.stride(), a.order(), work.data(), jpvt.data(), job), rows);
  // Without pivoting, rows behind the strip of the last row may not have these rows subtracted.
  const Index strip = vxKilnBase::kernels::tuning::kStripRows;
  for (Index i = job != 0 ? p : rows / strip * strip + strip; i < p; ++i) {
    for (Index j = i; j < p; ++j) expected.at(i, j) = a.at(i, j);
  }
  EXPECT_EQ(a.difference(expected, kTolerance), "");
  if (job != 0) {
    EXPECT_EQ(jpvt, expectedJpvt);
  }
}

TEST(dchdc, EqualsPlainLoops) {
  for (int p = 0; p <= 130; p += p < 50 ? 1 : 16) {
    const auto order = static_cast<unsigned>(p);
    const DoubleGenMat x = randomMatrix(order + 9, order, 5), square = transposeProduct(x, x);
    for (int bad : {-1, 0, p / 3, p - 1}) {
      Padded a = upper(square);
      if (bad >= 0 && bad < p) a.at(bad, bad) = -1.0;
      expectFactorization(a, 0, 0);
      expectFactorization(a, 1, 0);
      expectFactorization(a, 1, p / 4);
    }
    expectFactorization(upper(identity(order)), 1, 0);  // the first of equal pivots
    expectFactorization(upper(DoubleGenMat(order, order, 0.0)), 1, 0);
  }
}

}  // namespace
