// Reflections and the QR factorization beside textbook loops, on matrices with room between
// columns.
#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <numeric>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/dqrdc.h>
#include <kilnbase/linalg/linpack/pivotOrder.h>
#include <kilnbase/linalg/linpack/reflector.h>

#include "padded.h"

namespace {

using namespace vxKilnBase::linpack;
using kilntest::Index;
using kilntest::Padded;
namespace tuning = vxKilnBase::kernels::tuning;

constexpr double kTolerance = 1e-11;

// y := (I - v vᵀ / v₀) y; nothing where v₀ is 0.
void reflectPlainly(Index m, const double* v, double* y) {
  if (v[0] == 0.0) return;
  double projection = 0.0;
  for (Index i = 0; i < m; ++i) projection += v[i] * y[i];
  for (Index i = 0; i < m; ++i) y[i] -= projection / v[0] * v[i];
}

// Random reflection vectors in the lower trapezoid; vector `missing` is 0.
Padded panelOf(Index m, Index n, Index missing) {
  Padded panel = Padded::random(m, n, 1);
  for (Index j = 0; j < std::min(m, n); ++j) {
    if (j == missing) std::fill_n(&panel.at(j, j), m - j, 0.0);
    makeReflector(m - j, &panel.at(j, j));
  }
  return panel;
}

TEST(formOrthogonal, MultipliesTheReflections) {
  for (Index n : {1, 4, 30, 64, 65, 100}) {
    for (Index columns : {n / 2, n}) {
      for (Index reflectors : {Index{0}, columns / 2, columns}) {
        SCOPED_TRACE(testing::Message() << n << " by " << columns << ", " << reflectors);
        Padded q = panelOf(n, columns, n / 3), expected(n, columns);
        for (Index j = 0; j < columns; ++j) {
          for (Index i = 0; i < n; ++i) expected.at(i, j) = i == j ? 1.0 : 0.0;
          for (Index l = reflectors; l-- > 0;)
            reflectPlainly(n - l, &q.at(l, l), &expected.at(l, j));
        }
        formOrthogonal(n, columns, reflectors, q.data(), q.ld);
        EXPECT_EQ(q.difference(expected, kTolerance), "");
      }
    }
  }
}

TEST(pivotOrder, MovesInitialElementsToTheFrontAndFinalOnesToTheEnd) {
  int jpvt[] = {-1, 0, 1, 0, -1, 1}, numbers[] = {1, 2, 3, 4, 5, 6};
  const FreeRange range = pivotOrder(6, jpvt, [&](Index i, Index j) {
    EXPECT_LT(i, j);
    std::swap(numbers[i], numbers[j]);
  });
  EXPECT_THAT(jpvt, testing::ElementsAre(3, 6, 2, 4, 1, 5));
  EXPECT_THAT(numbers, testing::ElementsAreArray(jpvt));
  EXPECT_EQ(range.begin, 2);
  EXPECT_EQ(range.end, 4);
}

// A matrix whose columns are numbered, and its factorization in plain loops.
struct PlainQr {
  void exchange(Index i, Index j) {
    if (i == j) return;
    std::swap_ranges(&x.at(0, i), &x.at(0, i) + x.rows, &x.at(0, j));
    std::swap(jpvt[static_cast<std::size_t>(i)], jpvt[static_cast<std::size_t>(j)]);
  }

  double norm(Index l, Index j) {
    double result = 0.0;
    for (Index i = l; i < x.rows; ++i) result = std::hypot(result, x.at(i, j));
    return result;
  }

  // Columns `begin` to `end` - 1 take part in pivoting.
  void factor(Index begin, Index end) {
    for (Index l = 0; l < x.columns; ++l) {
      qraux.at(l, 0) = 0.0;
      if (l >= x.rows) continue;
      Index pivot = l;
      for (Index j = l; l >= begin && j < end; ++j) pivot = norm(l, j) > norm(l, pivot) ? j : pivot;
      exchange(l, pivot);
      double* v = &x.at(l, l);
      const double length = std::copysign(norm(l, l), *v);
      if (l + 1 == x.rows || length == 0.0) continue;
      for (Index i = 0; i < x.rows - l; ++i) v[i] /= length;
      *v += 1.0;
      for (Index j = l + 1; j < x.columns; ++j) reflectPlainly(x.rows - l, v, &x.at(l, j));
      qraux.at(l, 0) = std::exchange(*v, -length);
    }
  }

  Padded x, qraux;
  std::vector<int> jpvt;
};

void expectFactorization(Index n, Index p, int job, Index fixed) {
  SCOPED_TRACE(testing::Message() << n << " by " << p << ", job " << job << ", fixed " << fixed);
  Padded x = Padded::random(n, p, 7), qraux(p, 1), work(p, 1);
  if (p > 4 && n % 2 == 0) std::fill_n(&x.at(0, 2), n, 0.0);
  std::vector<int> jpvt(static_cast<std::size_t>(p), 0), numbers = jpvt;
  std::iota(numbers.begin(), numbers.end(), 1);
  PlainQr expected = {x, qraux, numbers};
  // Final columns stand first and initial ones last: each changes places with one of the others.
  for (Index j = 0; j < fixed; ++j) expected.exchange(j, p - fixed + j);
  std::fill_n(jpvt.begin(), fixed, -1);
  std::fill_n(jpvt.rbegin(), fixed, 1);
  expected.factor(job != 0 ? fixed : p, p - fixed);
  dqrdc(x.data(), x.stride(), static_cast<int>(n), x.order(), qraux.data(), jpvt.data(),
        work.data(), job);
  EXPECT_EQ(x.difference(expected.x, 1e-9), "");
  EXPECT_EQ(qraux.difference(expected.qraux, 1e-9), "");
  if (job == 0) return;
  EXPECT_EQ(jpvt, expected.jpvt);
}

// The norm is trusted while 1 + 0.05 t² (norm / reference)² is not 1, where t is the part that is
// left.
TEST(HouseholderKernels, DowndateNormsComparesWithTheReference) {
  struct Row {
    double norm, removed, reference, expected;
  };
  for (const Row& row : {Row{1.0, 0.6, 1e3, 0.8},
                         {1.0, 0.6, 1e7, 0.8},
                         {1.0, 0.6, 1e8, -1.0},
                         {1.0, 1.0, 1.0, -1.0},
                         {0.0, 0.0, 1.0, 0.0}}) {
    double norm = row.norm;
    const bool anyLost = vxKilnBase::kernels::active().householder->downdateNorms(
        1, 0, &row.removed, &norm, &row.reference);
    EXPECT_DOUBLE_EQ(norm, row.expected) << row.reference;
    EXPECT_EQ(anyLost, row.expected < 0.0) << row.reference;
  }
}

TEST(HouseholderKernels, IndexOfLargestIsTheFirst) {
  const auto indexOfLargest = vxKilnBase::kernels::active().householder->indexOfLargest;
  std::vector<double> x(25, -1.0);
  EXPECT_EQ(indexOfLargest(25, x.data()), 0);
  x[0] = std::nan("");
  x[7] = x[9] = x[24] = 7.0;
  EXPECT_EQ(indexOfLargest(25, x.data()), 7);
}

TEST(dqrdc, EqualsPlainLoops) {
  for (Index n = 1; n <= 26; ++n) {
    for (Index p = 1; p <= 26; ++p) expectFactorization(n, p, 1, n % 3 == 0 ? p / 5 : 0);
  }
  // Below and above every switch point: eager, lazy, blocked, wide, very wide, tall.
  const std::pair<Index, Index> shapes[] = {
      {1, 1},   {1, 9},    {9, 1},    {8, 8},    {30, 30},  {50, 31},
      {31, 50}, {66, 130}, {130, 66}, {9, 1300}, {5, 3100}, {2 * tuning::kSweepRows + 11, 9}};
  for (const auto& [n, p] : shapes) {
    expectFactorization(n, p, 0, 0);
    expectFactorization(n, p, 1, 0);
    expectFactorization(n, p, 1, p / 5);
  }
}

}  // namespace
