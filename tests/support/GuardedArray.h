// Arrays for tests of inner loops.
//
// The elements are small whole numbers, whose sums and products are exact in any order: a kernel
// and a plain loop give the same bits. Everything that a kernel must leave alone, around the
// elements and between the columns of a matrix, holds a guard value, each a different one. A
// kernel that uses a guard spoils its result, because a guard is a NaN, and `difference` finds a
// guard that a kernel writes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace kilntest {

using Index = std::ptrdiff_t;

#ifdef __SANITIZE_ADDRESS__
constexpr Index kMargin = 0;  // the sanitizer stops reads in front of and behind the elements too
#else
constexpr Index kMargin = 64;
#endif

template <class T>
class GuardedArray {
 public:
  /// n guards.
  explicit GuardedArray(Index n) : storage_(static_cast<std::size_t>(n + 2 * kMargin)) {
    for (std::size_t i = 0; i < storage_.size(); ++i) storage_[i] = guard(i);
  }
  /// A vector of n elements.
  GuardedArray(Index n, std::uint64_t seed) : GuardedArray(n, 1, n, seed) {}
  /// A column-major matrix of m rows and n columns, `ld` elements apart; ld >= m.
  GuardedArray(Index m, Index n, Index ld, std::uint64_t seed)
      : GuardedArray(n > 0 && m > 0 ? (n - 1) * ld + m : 0) {
    std::uint64_t state = seed;
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < m; ++i) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        (*this)[j * ld + i] = static_cast<T>(static_cast<int>((state >> 33) % 7) - 3);
      }
    }
  }

  T* data() { return storage_.data() + kMargin; }
  T& operator[](Index i) { return data()[i]; }

  /// The first element that differs from the expected one, guards included; empty when none does.
  std::string difference(const GuardedArray& expected) const {
    for (std::size_t i = 0; i < storage_.size(); ++i) {
      const T got = storage_[i], wanted = expected.storage_[i];
      // A NaN is itself. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
      if (got == wanted || std::memcmp(&got, &wanted, sizeof(T)) == 0) continue;
      std::ostringstream text;
      text << "[" << static_cast<Index>(i) - kMargin << "] is " << +got << ", not " << +wanted;
      return text.str();
    }
    return {};
  }

 private:
  static T guard(std::size_t i) {
    if constexpr (std::is_same_v<T, double>) {
      return std::bit_cast<double>(0x7FF8000000000000U + i);
    } else {
      return static_cast<T>(std::numeric_limits<T>::max() - static_cast<T>(i % 97));
    }
  }

  std::vector<T> storage_;
};

using Doubles = GuardedArray<double>;

}  // namespace kilntest
