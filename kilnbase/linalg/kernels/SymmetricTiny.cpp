// Symmetric indefinite matrices of the order of a few elements, in place, with a copy of the code
// for each order: what is left of a loop is a few operations.
#include <kilnbase/linalg/kernels/SymmetricPivot.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

inline __attribute__((always_inline)) Found largestOf(Index n, const double* x) {
  Found found{0, 0.0};
#pragma GCC unroll 8
  for (Index i = 0; i < n; ++i) {
    const double value = __builtin_fabs(x[i]);
    if (value > found.value) found = {i, value};
  }
  return found;
}

// The largest element of row l of the leading matrix of order k + 1, but for that on the diagonal.
template <Index k>
inline __attribute__((always_inline)) double largestInRow(const double* ap, Index l) {
  const double* element = ap + l * (l + 1) / 2;
  double largest = 0.0;
  for (Index i = 0; i < l; ++i) {
    const double value = __builtin_fabs(element[i]);
    largest = value > largest ? value : largest;
  }
  element += l;
  for (Index j = l + 1; j <= k; ++j) {
    element += j;
    const double value = __builtin_fabs(*element);
    largest = value > largest ? value : largest;
  }
  return largest;
}

template <Index k>
inline __attribute__((always_inline)) Pivot choose(double* ap) {
  const double* column = packedColumn(ap, k);
  const Found found = largestOf(k, column);
  const double diagonal = __builtin_fabs(column[k]);
  if (diagonal >= kAlpha * found.value || found.value == 0.0) return {1, k};
  const double other = __builtin_fabs(packedColumn(ap, found.row)[found.row]);
  return choosePivot(k, found, diagonal, other, largestInRow<k>(ap, found.row));
}

template <Index k>
inline __attribute__((always_inline)) void eliminateOne(double* ap) {
  double* column = packedColumn(ap, k);
  const Division division(-column[k]);
#pragma GCC unroll 8
  for (Index j = 0; j < k; ++j) {
    const double multiplier = division.of(column[j]);
#pragma GCC unroll 8
    for (Index i = j; i < k; ++i) packedColumn(ap, i)[j] += multiplier * column[i];
    column[j] = multiplier;
  }
}

template <Index k>
inline __attribute__((always_inline)) void eliminateTwo(double* ap) {
  double* second = packedColumn(ap, k);
  double* first = second - k;
  const Block block(first[k - 1], second[k - 1], second[k]);
#pragma GCC unroll 8
  for (Index j = 0; j + 1 < k; ++j) {
    double x = first[j], y = second[j];
    block.toMultipliers(x, y);
#pragma GCC unroll 8
    for (Index i = j; i + 1 < k; ++i) {
      packedColumn(ap, i)[j] += x * first[i] + y * second[i];
    }
    first[j] = x;
    second[j] = y;
  }
}

// Carries out step k and returns the order of its block.
template <Index k>
inline __attribute__((always_inline)) Index eliminate(double* ap, int* kpvt, Index& info) {
  double* column = packedColumn(ap, k);
  const Pivot pivot = choose<k>(ap);
  const auto row = static_cast<int>(pivot.row + 1);
  if constexpr (k > 0) {
    if (pivot.order == 2) {
      exchange(ap, pivot.row, k - 1);
      swap(column[pivot.row], column[k - 1]);
      kpvt[k] = kpvt[k - 1] = -row;
      eliminateTwo<k>(ap);
      return 2;
    }
    exchange(ap, pivot.row, k);
  }
  kpvt[k] = row;
  if (column[k] == 0.0) {
    info = k + 1;
  } else {
    eliminateOne<k>(ap);
  }
  return 1;
}

// The step with this number, counted down.
template <Index k = kMostTiny - 1>
inline __attribute__((always_inline)) Index eliminateAt(Index number, double* ap, int* kpvt,
                                                        Index& info) {
  if (number == k) return eliminate<k>(ap, kpvt, info);
  if constexpr (k > 0) return eliminateAt<k - 1>(number, ap, kpvt, info);
  return 1;
}

}  // namespace

Index factorTinySymmetric(Index n, double* ap, int* kpvt) {
  Index info = 0;
  for (Index k = n - 1; k >= 0;) k -= eliminateAt(k, ap, kpvt, info);
  return info;
}

}  // namespace vxKilnBase::kernels::KILN_ISA
