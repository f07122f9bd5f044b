// Random matrices with room between their columns.
#pragma once

#include <cmath>

#include "tests/support/GuardedArray.h"
#include "tests/support/Matrices.h"

namespace kilntest {

/// A column-major matrix with `gap` guards between its columns.
struct Padded {
  /// Guards only.
  Padded(Index m, Index n, Index gap = 3)
      : rows(m), columns(n), ld(m + gap), array(n > 0 ? (n - 1) * ld + m : 0) {}
  static Padded random(Index m, Index n, std::uint64_t seed, Index gap = 3) {
    const DoubleGenMat a = randomMatrix(static_cast<unsigned>(m), static_cast<unsigned>(n), seed);
    Padded result(m, n, gap);
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < m; ++i) result.at(i, j) = a(static_cast<int>(i), static_cast<int>(j));
    }
    return result;
  }

  double& at(Index i, Index j) { return array[j * ld + i]; }
  double* data() { return array.data(); }
  int stride() const { return static_cast<int>(ld); }

  /// Where an element differs from the expected one by more than the tolerance, or a guard was
  /// written; empty when nowhere. The gaps may be different.
  std::string difference(Padded expected, double tolerance) {
    Padded wanted(rows, columns, ld - rows);
    for (Index j = 0; j < columns; ++j) {
      for (Index i = 0; i < rows; ++i) {
        const double got = at(i, j), number = expected.at(i, j);
        const bool guards = std::isnan(got) && std::isnan(number);
        wanted.at(i, j) = guards || std::fabs(got - number) <= tolerance ? got : number;
      }
    }
    return array.difference(wanted.array);
  }

  Index rows, columns, ld;
  Doubles array;
};

}  // namespace kilntest
