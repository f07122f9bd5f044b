// A routine gives the same bits wherever its matrices lie, and leaves the room between columns
// alone.
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

#include <kilnbase/linalg/linpack/dchdd.h>
#include <kilnbase/linalg/linpack/dchex.h>
#include <kilnbase/linalg/linpack/dchud.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/dqrdc.h>
#include <kilnbase/linalg/linpack/dqrsl.h>
#include <kilnbase/linalg/linpack/dsvdc.h>

#include "padded.h"

namespace {

using namespace vxKilnBase::linpack;
using kilntest::Doubles;
using kilntest::Index;
using kilntest::Padded;
using Results = std::vector<Padded>;

// An upper triangle with a heavy diagonal; guards below the diagonal.
Padded factor(Index p, Index gap) {
  Padded numbers = Padded::random(p, p, 1), r(p, p, gap);
  for (Index j = 0; j < p; ++j) {
    for (Index i = 0; i <= j; ++i) r.at(i, j) = numbers.at(i, j) + (i == j ? 4.0 : 0.0);
  }
  return r;
}

Results shifted(Index gap, int job) {
  Padded r = factor(20, gap), z = Padded::random(20, 3, 2, gap), c(16, 1), s(16, 1);
  dchex(r.data(), r.stride(), 20, 2, 18, z.data(), z.stride(), 3, c.data(), s.data(), job);
  return {r, z, c, s};
}

Results changedRow(Index gap, bool removed) {
  Padded r = factor(20, gap), z = Padded::random(20, 3, 2, gap), x = Padded::random(23, 1, 3);
  Padded rho(3, 1), c(20, 1), s(20, 1);
  for (Index j = 0; j < 3; ++j) rho.at(j, 0) = 20.0;
  const auto change = [&](auto routine) {
    routine(r.data(), r.stride(), 20, x.data(), z.data(), z.stride(), 3, x.data() + 20, rho.data(),
            c.data(), s.data());
  };
  removed ? change(dchdd) : change(dchud);
  return {r, z, rho, c, s};
}

Results factored(Index gap, int job) {
  Padded x = Padded::random(90, 80, 4, gap), qraux(80, 1), work(80, 1),
         y = Padded::random(90, 1, 5);
  Padded qy(90, 1), qty(90, 1), b(80, 1), rsd(90, 1), xb(90, 1);
  std::vector<int> jpvt(80, 0);
  if (job == 0) std::fill_n(&x.at(0, 5), 90, 0.0);
  dqrdc(x.data(), x.stride(), 90, 80, qraux.data(), jpvt.data(), work.data(), job);
  const int zero = dqrsl(x.data(), x.stride(), 90, 80, qraux.data(), y.data(), qy.data(),
                         qty.data(), b.data(), rsd.data(), xb.data(), 11111);
  EXPECT_EQ(zero, job == 0 ? 6 : 0);
  return {x, qraux, qy, qty, b, rsd, xb};
}

Results decomposed(Index gap, Index n, Index p, int job) {
  Padded x = Padded::random(n, p, 6, gap), s(std::min(n + 1, p), 1), e(p, 1), work(n, 1);
  Padded u(n, job == 21 ? std::min(n, p) : n, gap), v(p, p, gap), triangle(p, p + 1, 0);
  dsvdc(x.data(), x.stride(), static_cast<int>(n), static_cast<int>(p), s.data(), e.data(),
        u.data(), u.stride(), v.data(), v.stride(), work.data(), job, triangle.data());
  return {s, e, u, v};
}

TEST(linpack, ResultsDoNotDependOnTheLayout) {
  const std::pair<const char*, std::function<Results(Index gap)>> routines[] = {
      {"dchex to the right", [](Index gap) { return shifted(gap, 1); }},
      {"dchex to the left", [](Index gap) { return shifted(gap, 2); }},
      {"dchud", [](Index gap) { return changedRow(gap, false); }},
      {"dchdd", [](Index gap) { return changedRow(gap, true); }},
      {"dqrdc and dqrsl", [](Index gap) { return factored(gap, 0); }},
      {"dqrdc with pivoting and dqrsl", [](Index gap) { return factored(gap, 1); }},
      {"dsvdc, tall", [](Index gap) { return decomposed(gap, 90, 70, 11); }},
      {"dsvdc, tall, few vectors", [](Index gap) { return decomposed(gap, 90, 17, 21); }},
      {"dsvdc, wide", [](Index gap) { return decomposed(gap, 17, 30, 11); }}};
  for (const auto& [name, routine] : routines) {
    Results dense = routine(0), padded = routine(3);
    for (std::size_t i = 0; i < dense.size(); ++i) {
      EXPECT_EQ(padded[i].difference(dense[i], 0.0), "") << name << ", result " << i;
    }
  }
}

TEST(dnrm2, SumsEveryLengthAndStride) {
  for (Index n = 0; n <= 40; ++n) {
    for (Index stride : {1, 3, -2}) {
      for (double scale : {1.0, 1e-200, 1e200}) {
        Doubles x(1, n, std::abs(stride), 1);
        double square = 0.0;
        for (Index i = 0; i < n; ++i) {
          double& element = x[i * std::abs(stride)];
          square += element * element;
          element *= scale;
        }
        const double* first = x.data() + (stride < 0 && n > 0 ? (n - 1) * -stride : 0);
        const double expected = std::sqrt(square) * scale;
        EXPECT_NEAR(dnrm2(n, first, stride), expected, 1e-14 * expected) << n << ", " << stride;
      }
    }
  }
  const double mixed[] = {0.0, 3e-300, 4e-300, 1.0, 3e200, 4e200};
  EXPECT_DOUBLE_EQ(dnrm2(3, mixed, 1), 5e-300);
  EXPECT_DOUBLE_EQ(dnrm2(4, mixed, 1), 1.0);
  EXPECT_DOUBLE_EQ(dnrm2(6, mixed, 1), 5e200);
}

}  // namespace
