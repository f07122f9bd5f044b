// The choice of pivots after Bunch and Kaufman, and blocks of order 2.
#pragma once

#include <kilnbase/linalg/kernels/Symmetric.h>

namespace vxKilnBase::kernels::KILN_ISA {

// See SymmetricKernels::factorSmall.
Index factorSmallSymmetric(Index n, double* ap, int* kpvt);
// The same for orders up to kMostTiny.
constexpr Index kMostTiny = 8;
Index factorTinySymmetric(Index n, double* ap, int* kpvt);

namespace {

// (1 + √17) / 8: two steps of order 1 let elements grow as much as one of order 2.
constexpr double kAlpha = 0.6403882032022076;

inline double* packedColumn(double* ap, Index j) {
  return ap + j * (j + 1) / 2;
}

inline void swap(double& x, double& y) noexcept {
  const double old = x;
  x = y;
  y = old;
}

// Exchanges rows and columns l < k of the leading matrix of order k + 1.
inline void exchange(double* ap, Index l, Index k) {
  if (l == k) return;
  double* right = packedColumn(ap, k);
  double* left = packedColumn(ap, l);
  for (Index i = 0; i < l; ++i) swap(left[i], right[i]);
  swap(left[l], right[k]);
  double* row = left + l;
  for (Index j = l + 1; j < k; ++j) {
    row += j;
    swap(*row, right[j]);
  }
}

// The order of a block, and the row that changes places with its first row.
struct Pivot {
  Index order;
  Index row;
};

struct Found {
  Index row;
  double value;
};

// The pivot of step k, whose diagonal element is smaller than kAlpha times the largest of its
// column, `found`. `other` and `inRow` are the diagonal element and the largest of the others in
// the row of that. All are absolute values.
inline Pivot choosePivot(Index k, const Found& found, double diagonal, double other, double inRow) {
  if (other >= kAlpha * inRow) return {1, found.row};
  if (diagonal >= kAlpha * found.value * (found.value / inRow)) return {1, k};
  return {2, found.row};
}

// Divides by a number other than 0: x / number = (x * lift) * factor. The lift keeps the
// reciprocals of subnormal numbers finite.
struct Division {
  double lift;
  double factor;

  explicit Division(double number)
      : lift(__builtin_fabs(number) < 0x1p-1000 ? 0x1p200 : 1.0), factor(1.0 / (number * lift)) {}

  template <class Number>
  inline __attribute__((always_inline)) Number of(Number x) const {
    return (x * lift) * factor;
  }
};

// A block of D of order 2: a and c on the diagonal, b beside.
struct Block {
  Division byB;
  double above;
  double below;

  Block(double a, double b, double c) : byB(b), above(byB.of(a)), below(byB.of(c)) {
    byB.factor /= 1.0 - above * below;
  }

  // Makes of elements of both columns their multipliers.
  template <class Number>
  inline __attribute__((always_inline)) void toMultipliers(Number& first, Number& second) const {
    const Number multiplier = byB.of(above * second - first);
    first = byB.of(below * first - second);
    second = multiplier;
  }
};

}  // namespace

}  // namespace vxKilnBase::kernels::KILN_ISA
