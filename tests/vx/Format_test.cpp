#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>

#include <vx/Format.h>

namespace {

// Prints into arrays of every size up to 40 and compares with what printf says of the same text.
VX_PRINTF(1, 2)
void expectAsPrintf(const char* format, ...) {
  for (std::size_t size = 0; size <= 40; ++size) {
    std::string expected(41, '#');
    std::string printed = expected;
    std::va_list first;
    std::va_list second;
    va_start(first, format);
    va_copy(second, first);
    const int length = std::vsnprintf(expected.data(), expected.size(), format, first);
    const bool fits = static_cast<std::size_t>(length) < size;
    EXPECT_EQ(MR_vsnprintf(printed.data(), size, format, second), fits ? length : -1) << format;
    if (fits) {
      EXPECT_EQ(printed, expected);
    }
    EXPECT_EQ(printed.substr(size), std::string(printed.size() - size, '#')) << format;
    va_end(second);
    va_end(first);
  }
}

TEST(Format, PrintsAsPrintfDoesUnlessTextAndTerminatorDoNotFit) {
  expectAsPrintf("%s", "");
  expectAsPrintf("100%% of %s, %c", "text", 'x');
  expectAsPrintf("%d %i %u %x", INT_MIN, INT_MAX, UINT_MAX, 0xbeefu);
  expectAsPrintf("%ld %li", LONG_MIN, 0L);
  expectAsPrintf("%lu %lx", ULONG_MAX, 77UL);
  expectAsPrintf("%lld", LLONG_MIN);
  expectAsPrintf("%llu|%llx", ULLONG_MAX, 1ULL << 63);
  expectAsPrintf("%zu %zx %zd", SIZE_MAX, SIZE_MAX, static_cast<std::ptrdiff_t>(-1));
  expectAsPrintf("a %s, then %5.2f and %-4d|%03x", "mixed", 3.14159, 7, 10u);
  expectAsPrintf("%.2s%*d", "abc", 5, 3);
  expectAsPrintf("%hhd %hd %lc", 300, 70000, L'w');
  expectAsPrintf("a%cb", 0);
}

}  // namespace
