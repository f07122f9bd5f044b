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

  /// Solves with the block of order 2 in rows k - 1 and k.
  void solveBlock(Index k, double& above, double& below) const {
    const double off = at(k - 1, k);
    const double d = at(k, k) / off;
    const double dAbove = at(k - 1, k - 1) / off;
    const double b = below / off;
    const double bAbove = above / off;
    const double denominator = d * dAbove - 1.0;
    below = (dAbove * b - bAbove) / denominator;
    above = (d * bAbove - b) / denominator;
  }
};

}  // namespace vxKilnBase::linpack
