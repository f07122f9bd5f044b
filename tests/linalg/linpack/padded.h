// Matrices with room between their columns, and textbook loops on them.
#pragma once

#include <cmath>

#include "tests/support/GuardedArray.h"
#include "tests/support/Matrices.h"

namespace kilntest {

/// A column-major matrix whose columns are `ld` elements apart, with guards between them.
struct Padded {
  Padded(Index m, Index n, std::uint64_t seed) : Padded(m, n) {
    const DoubleGenMat a = randomMatrix(static_cast<unsigned>(m), static_cast<unsigned>(n), seed);
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < m; ++i) at(i, j) = a(static_cast<int>(i), static_cast<int>(j));
    }
  }
  /// Guards only.
  Padded(Index m, Index n) : rows(m), columns(n), ld(m + 3), array(n > 0 ? (n - 1) * ld + m : 0) {}

  double& at(Index i, Index j) { return array[j * ld + i]; }
  double* data() { return array.data(); }
  int stride() const { return static_cast<int>(ld); }

  /// Where an element differs from the expected one by more than the tolerance, or a guard was
  /// written; empty when nowhere. Leaves the expected elements here.
  std::string difference(Padded& expected, double tolerance) {
    for (Index j = 0; j < columns; ++j) {
      for (Index i = 0; i < rows; ++i) {
        if (std::fabs(at(i, j) - expected.at(i, j)) <= tolerance) at(i, j) = expected.at(i, j);
      }
    }
    return array.difference(expected.array);
  }

  Index rows, columns, ld;
  Doubles array;
};

/// y := (I - v vᵀ / v₀) y.
inline void reflectPlainly(Index m, const double* v, double* y) {
  double projection = 0.0;
  for (Index i = 0; i < m; ++i) projection += v[i] * y[i];
  for (Index i = 0; i < m; ++i) y[i] -= projection / v[0] * v[i];
}

}  // namespace kilntest
