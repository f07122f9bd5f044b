#include "peers/Peak.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>

namespace bench {

namespace {

#if defined(__AVX512F__)
constexpr int kBytes = 64;
#elif defined(__AVX__)
constexpr int kBytes = 32;
#else
constexpr int kBytes = 16;
#endif

using Register = double __attribute__((vector_size(kBytes)));

// Enough that no sum waits for its own last step: 2 a cycle, each of at most 6 cycles.
constexpr int kSums = 12;
constexpr int kSteps = 20000;
constexpr double kFlops = 2.0 * kSums * kSteps * (kBytes / sizeof(double));
constexpr int kBlocks = 120;

// The sums stay where they are: x * 1 + 0 for all that the compiler knows.
void multiplyAndAdd(Register (&sums)[kSums], Register factor, Register summand) {
  Register s[kSums];
  std::copy(std::begin(sums), std::end(sums), s);
  for (int step = 0; step < kSteps; ++step) {
    for (Register& sum : s) sum = sum * factor + summand;
  }
  std::copy(std::begin(s), std::end(s), sums);
}

double secondsOfBlock(Register (&sums)[kSums]) {
  double one = 1.0;
  double zero = 0.0;
  benchmark::DoNotOptimize(one);
  benchmark::DoNotOptimize(zero);
  const auto start = std::chrono::steady_clock::now();
  multiplyAndAdd(sums, Register{} + one, Register{} + zero);
  benchmark::DoNotOptimize(sums);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

double peakFlops() {
  Register sums[kSums] = {};
  double least = secondsOfBlock(sums);
  for (int block = 1; block < kBlocks; ++block) least = std::min(least, secondsOfBlock(sums));
  return kFlops / least;
}

}  // namespace bench
