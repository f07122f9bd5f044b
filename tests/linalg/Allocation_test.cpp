// Vector operations take memory for one result and for nothing else, and do without.

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <utility>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"

namespace {

int allocations = 0;
bool refusesNext = false;

}  // namespace

// Counts what the whole program takes, where the C library and the build let it.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
extern "C" void* __libc_malloc(std::size_t size);  // NOLINT(bugprone-reserved-identifier)
extern "C" void* malloc(std::size_t size) noexcept {
  ++allocations;
  return std::exchange(refusesNext, false) ? nullptr : __libc_malloc(size);
}
#endif

namespace {

int allocationsOf(const std::function<void()>& operation) {
  const int before = allocations;
  operation();
  return allocations - before;
}

}  // namespace

TEST(Allocation, AnOperationTakesMemoryForItsResultOnly) {
  if (allocationsOf([] { DoubleVec(1U); }) != 1)
    GTEST_SKIP() << "the memory that the library takes cannot be counted here";
  for (unsigned n : {2U, 10U, 100U, 10000U}) {
    DoubleVec a(n, 1.0), b(n, 2.0);
    const DoubleVec odd = a.slice(0, n / 2, 2);
    const std::function<void()> oneResult[] = {[&] { a + b; },
                                               [&] { a * 2.0; },
                                               [&] { 2.0 / odd; },
                                               [&] { reverse(a) - b; },
                                               [&] { return a.copy(); },
                                               [&] { DoubleVec(n, 0.0, 1.0); },
                                               [&] { return cos(a); },
                                               [&] { return cumsum(odd); },
                                               [&] { return a.valueIndex(1.0, 0.0); },
                                               [&] { return toInt(a); },
                                               [&] { -a; },
                                               [&] { return abs(a); }};
    for (const auto& operation : oneResult) EXPECT_EQ(1, allocationsOf(operation));
    const std::function<void()> noResult[] = {[&] { a += b; },
                                              [&] { a *= 3.0; },
                                              [&] { a = b; },
                                              [&] { a = a; },
                                              [&] { return dot(a, b); },
                                              [&] { return maxIndex(a); },
                                              [&] { a == b; },
                                              [&] { a += a; },
                                              [&] { reverse(a).slice(0, n).normalise(); },
                                              [&] { return a.vecLen(); },
                                              [&] { a.clampZero(0.5); }};
    for (const auto& operation : noResult) EXPECT_EQ(0, allocationsOf(operation));
  }
  const DoubleGenMat m(60U, 50U, 1.5);
  EXPECT_EQ(1, allocationsOf([&] { return product(m, m.row(0)); }));
  EXPECT_EQ(1, allocationsOf([&] { return transposeProduct(m, m); }));
  EXPECT_EQ(1, allocationsOf([&] { m + m; }));
}

TEST(Allocation, AResultWithoutMemoryIsEmpty) {
  kilntest::RecordedMathErrors errors;
  const DoubleVec a(10U, 1.0);
  const std::function<DoubleVec()> operations[] = {[&] { return a + a; }, [&] { return a * 2.0; },
                                                   [&] { return 1.0 / a; }, [&] { return -a; }};
  for (const auto& operation : operations) {
    refusesNext = true;
    const DoubleVec result = operation();
    if (std::exchange(refusesNext, false))
      GTEST_SKIP() << "the library takes memory elsewhere here";
    EXPECT_EQ(0U, result.length());
    const auto raised = errors.takeAll();
    ASSERT_EQ(1U, raised.size());
    EXPECT_EQ(vxKilnBase::kOutOfMemoryError, raised.front().number);
  }
}
