#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

#include "examples/surface_fit/NumericErrors.h"
#include "examples/surface_fit/Refinement.h"

namespace {

std::size_t largestAllocation = SIZE_MAX;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return size <= largestAllocation ? std::malloc(size) : nullptr;
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

namespace surfacefit {

struct MemoryLimit {
  explicit MemoryLimit(std::size_t bytes) { largestAllocation = bytes; }
  ~MemoryLimit() { largestAllocation = SIZE_MAX; }
};

// Runs where no allocation may be larger.
Refinement refineWithin(std::size_t bytes, const std::vector<Point>& points) {
  const ThrowingNumericErrors errors;
  const MemoryLimit limit(bytes);
  TbaseReporter silent;
  return refine(points, {1e-9, 900, 100, 6}, silent);
}

TEST(Refinement, KeepsTheStepsBeforeTheOneThatLacksMemory) {
  std::vector<Point> points;
  for (int k = 0; k < 900; ++k)
    points.push_back({1.0 * (k % 30), std::floor(k / 30.0), 1.0 * (k % 7)});
  EXPECT_EQ(Stop::kMaxSteps, refineWithin(1'000'000, points).stop);
  const Refinement stopped = refineWithin(40'000, points);
  if (stopped.stop == Stop::kMaxSteps)
    GTEST_SKIP() << "the library is linked with an allocator of its own";
  EXPECT_EQ(Stop::kOutOfMemory, stopped.stop);
  EXPECT_EQ(5U, stopped.steps.size());
  EXPECT_THROW(refineWithin(10'000, points), std::bad_alloc);
}

}  // namespace surfacefit
