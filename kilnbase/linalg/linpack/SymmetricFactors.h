// The layout that dspfa leaves.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace vxKilnBase::linpack {

/// The upper triangle of a symmetric matrix, column by column without gaps.
template <class Number>
struct PackedUpper {
  using Index = std::ptrdiff_t;

  Number* elements;
  Index n;

  Number* column(Index j) const { return elements + j * (j + 1) / 2; }
  Number& at(Index i, Index j) const { return column(j)[i]; }
};

/// The factors and pivots of a symmetric matrix.
struct SymmetricFactors : PackedUpper<const double> {
  const int* kpvt;

  /// The order of the block of D to which row k belongs.
  Index orderOfBlock(Index k) const { return kpvt[k] < 0 ? 2 : 1; }
  /// The row that changed places with the first row of the block of row k.
  Index exchanged(Index k) const { return std::abs(kpvt[k]) - 1; }

  /// Divides x by the block of D whose first row is k.
  void divideByBlock(Index k, double* x) const {
    if (orderOfBlock(k) == 1) {
      x[k] /= at(k, k);
      return;
    }
    const double beside = at(k, k + 1);
    const double above = at(k, k) / beside;
    const double below = at(k + 1, k + 1) / beside;
    const double first = x[k] / beside;
    const double second = x[k + 1] / beside;
    const double denominator = above * below - 1.0;
    x[k] = (below * first - second) / denominator;
    x[k + 1] = (above * second - first) / denominator;
  }
};

}  // namespace vxKilnBase::linpack
