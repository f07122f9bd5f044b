// Vector operations take memory for one result and for nothing else.

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <new>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/vecmath.h>

namespace {

int allocations = 0;

}  // namespace

// Not inlined: GCC warns of new and delete that do not fit when it inlines one of them only.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++allocations;
  return std::malloc(size);
}
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

int allocationsOf(const std::function<void()>& operation) {
  const int before = allocations;
  operation();
  return allocations - before;
}

}  // namespace

TEST(Allocation, AnOperationTakesMemoryForItsResultOnly) {
  if (allocationsOf([] { DoubleVec(1U); }) != 1)
    GTEST_SKIP() << "the library is linked with an allocator of its own";
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
