// Reflections, norms for pivoting and the bidiagonal step beside plain loops.
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include <kilnbase/linalg/kernels/Kernels.h>

#include "tests/support/GuardedArray.h"

namespace {

using kilntest::Doubles;
using kilntest::Index;
using vxKilnBase::kernels::active;
using vxKilnBase::kernels::BidiagonalStep;
using vxKilnBase::kernels::PendingReflections;

Index longest() {
  return 3 * active().vectorDoubles + 1;
}

// C := C - w fᵀ / divisor. Exact for whole numbers and a divisor that is a power of 2.
void plainUpdate(Index m, Index n, const double* w, const double* f, double divisor, double* c,
                 Index ldc) {
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < m; ++i) c[j * ldc + i] -= w[i] * (f[j] / divisor);
  }
}

// Cᵀ v.
Doubles plainProjections(Index m, Index n, const double* v, const double* c, Index ldc) {
  Doubles p(n);
  for (Index j = 0; j < n; ++j) {
    p[j] = 0.0;
    for (Index i = 0; i < m; ++i) p[j] += v[i] * c[j * ldc + i];
  }
  return p;
}

// Calls test(m, n, above) for shapes with and without rows above.
template <class Test>
void forShapes(Test test) {
  for (Index m = 1; m <= longest(); ++m) {
    for (Index n = 0; n <= longest(); ++n) {
      for (Index above : {Index{0}, Index{1}, (m + n) % 8, Index{9}}) {
        SCOPED_TRACE(testing::Message() << m << " by " << n << " below " << above);
        test(m, n, above);
      }
    }
  }
}

TEST(HouseholderKernels, ReflectionsAreAppliedAndAddedLate) {
  forShapes([](Index m, Index n, Index above) {
    const Index count = (m + n + above) % 6, rows = above + m, ld = rows + 1;
    Doubles whole(rows, n, ld, 1), v(rows, 2), vectors(rows, count, ld, 3), projections(n, 5);
    Doubles factors(n, count, n + 2, 4);
    v[above] = 2.0;
    Doubles expected = whole, reflected = whole, expectedProjections = projections;
    const double* first = v.data() + above;
    double* c = reflected.data() + above;
    plainUpdate(m, n, first, plainProjections(m, n, first, c, ld).data(), 2.0, c, ld);
    Doubles got = whole;
    active().householder->reflect(m, n, above, first, got.data() + above, ld);
    EXPECT_EQ(got.difference(reflected), "");

    c = expected.data() + above;
    for (Index k = 0; k < count; ++k)
      plainUpdate(m, n, &vectors[k * ld + above], &factors[k * (n + 2)], -1.0, c, ld);
    Doubles added = plainProjections(m, n, first, c, ld);
    for (Index j = 0; j < n; ++j) expectedProjections[j] += added[j];
    const PendingReflections pending = {vectors.data() + above, ld, count, factors.data(), n + 2};
    active().householder->updateAndProject(m, n, above, pending, first, whole.data() + above, ld,
                                           projections.data());
    EXPECT_EQ(whole.difference(expected), "");
    EXPECT_EQ(projections.difference(expectedProjections), "");
  });
}

TEST(HouseholderKernels, DowndateNormsTakesAnElementOut) {
  for (Index n = 0; n <= longest(); ++n) {
    for (Index before : {0, 1, 5, 8}) {
      for (Index lost : {Index{-1}, Index{0}, n / 2, n - 1}) {
        SCOPED_TRACE(testing::Message() << n << " behind " << before << ", lost " << lost);
        Doubles removed(before + n, 1), norms(before + n, 2), references(before + n, 3);
        Doubles expected = norms;
        for (Index i = before; i < before + n; ++i) {
          norms[i] = references[i] = i % 3 == 0 ? 0.0 : 5.0 * static_cast<double>(i);
          removed[i] = 0.6 * norms[i];
          expected[i] = 0.8 * norms[i];
          if (i - before != lost) continue;
          norms[i] = references[i] = removed[i] = 1.0;
          expected[i] = -1.0;
        }
        const bool anyLost = active().householder->downdateNorms(
            n, before, removed.data() + before, norms.data() + before, references.data() + before);
        EXPECT_EQ(anyLost, lost >= 0 && lost < n);
        for (Index i = before; i < before + n; ++i) {
          EXPECT_DOUBLE_EQ(norms[i], expected[i]);
          norms[i] = expected[i];
        }
        EXPECT_EQ(norms.difference(expected), "");
      }
    }
  }
}

// The norm is trusted while 1 + 0.05 t² (norm / reference)² is not 1, where t is the part that is
// left.
TEST(HouseholderKernels, DowndateNormsComparesWithTheReference) {
  for (const auto& [reference, left] : {std::pair{1e3, 0.8}, {1e7, 0.8}, {1e8, -1.0}}) {
    double removed = 0.6, norm = 1.0;
    active().householder->downdateNorms(1, 0, &removed, &norm, &reference);
    EXPECT_DOUBLE_EQ(norm, left) << reference;
  }
}

TEST(HouseholderKernels, IndexOfLargestIsTheFirst) {
  const double nan = std::nan("");
  for (Index n = 0; n <= longest(); ++n) {
    for (Index largest = 0; largest < n; ++largest) {
      SCOPED_TRACE(testing::Message() << largest << " of " << n);
      Doubles x(n, 1);
      x[largest] = 7.0;
      x[n - 1] = 7.0;
      if (largest > 0) x[0] = nan;
      EXPECT_EQ(active().householder->indexOfLargest(n, x.data()), largest);
    }
    std::vector<double> negative(static_cast<std::size_t>(n), -1.0);
    EXPECT_EQ(active().householder->indexOfLargest(n, negative.data()), 0);
  }
}

TEST(BidiagonalKernels, StepAppliesBothReflections) {
  forShapes([](Index m, Index n, Index padding) {
    const Index lda = m + padding;
    Doubles a(m, n, lda, 1), v(m, 2), w(m, 3), z(n, 4), work(m, 5);
    const double v0 = v[0] = 4.0, z0 = 2.0;
    const bool fromLeft = (m + n) % 3 != 0, fromRight = (m + n) % 4 != 0;
    Doubles newA = a, newZ = z, newWork = work;
    if (fromRight) plainUpdate(m, n, w.data(), z.data(), z0, newA.data(), lda);
    if (fromLeft) {
      const double* c = newA.data();
      plainUpdate(m, n, v.data(), plainProjections(m, n, v.data(), c, lda).data(), v0, newA.data(),
                  lda);
    }
    for (Index j = 0; j < n; ++j) {
      newZ[j] = newA[j * lda];
      for (Index i = 0; i < m; ++i) newWork[i] += newA[j * lda + i] * newZ[j];
    }
    const BidiagonalStep step = {v.data(), fromLeft ? 1.0 / v0 : 0.0,
                                 w.data(), fromRight ? 1.0 / z0 : 0.0,
                                 z.data(), work.data()};
    active().bidiagonal->step(m, n, a.data(), lda, step);
    EXPECT_EQ(a.difference(newA), "");
    EXPECT_EQ(z.difference(newZ), "");
    EXPECT_EQ(work.difference(newWork), "");
  });
}

TEST(BidiagonalKernels, LargestMagnitudeOrdersInfinityAboveAllNumbers) {
  const auto largestOf = [](const std::vector<double>& x) {
    const Index n = static_cast<Index>(x.size());
    return std::bit_cast<double>(active().bidiagonal->largestMagnitude(n, x.data()));
  };
  EXPECT_EQ(largestOf({}), 0.0);
  EXPECT_EQ(largestOf({1.0, -3.0, 2.0}), 3.0);
  EXPECT_EQ(largestOf({1.0, -INFINITY, 2.0}), INFINITY);
  EXPECT_TRUE(std::isnan(largestOf({INFINITY, -std::nan(""), 2.0})));
  for (Index n = 1; n <= longest(); ++n) {
    std::vector<double> x(static_cast<std::size_t>(n), 1.0);
    x.back() = -2.0;
    EXPECT_EQ(largestOf(x), 2.0) << n;
  }
}

}  // namespace
