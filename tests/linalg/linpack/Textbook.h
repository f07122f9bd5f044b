// The loops of the LINPACK Users' Guide, and storage whose surroundings must not change.
#pragma once

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleGenMat.h>

#include "tests/support/Matrices.h"

namespace kilntest {

// Rows further apart than the matrix needs, and a zone before and behind it.
class Guarded {
 public:
  static constexpr int kGap = 3;

  // The columns one by one; of a packed matrix the upper triangle alone.
  explicit Guarded(const DoubleGenMat& a, bool packed = false)
      : rows(static_cast<int>(a.rows())), columns(static_cast<int>(a.cols())), isPacked(packed) {
    ld = rows + kGap;
    storage.assign(static_cast<std::size_t>(ld) * a.cols() + 2 * kGap, kGuard);
    forEach([&](double& x, int i, int j) { x = a(i, j); });
  }
  ~Guarded() {
    forEach([](double& x, int, int) { x = kGuard; });
    EXPECT_EQ(storage, std::vector<double>(storage.size(), kGuard));
  }

  double* data() { return storage.data() + kGap; }
  double& operator()(int i, int j) { return data()[isPacked ? j * (j + 1) / 2 + i : j * ld + i]; }
  // A packed matrix is symmetric.
  DoubleGenMat matrix() {
    DoubleGenMat a(rows, columns, 0.0);
    forEach([&](double& x, int i, int j) {
      a(i, j) = x;
      if (isPacked) a(j, i) = x;
    });
    return a;
  }

  int rows, columns, ld;

 private:
  static constexpr double kGuard = -12345.0;

  template <class Use>
  void forEach(const Use& use) {
    for (int j = 0; j < columns; ++j) {
      for (int i = 0; i < (isPacked ? j + 1 : rows); ++i) use((*this)(i, j), i, j);
    }
  }

  bool isPacked;
  std::vector<double> storage;
};

// dgefa, loop by loop.
inline int textbookLu(Guarded& a, std::vector<int>& ipvt) {
  int info = 0;
  const int n = a.columns;
  for (int k = 0; k < n; ++k) {
    int l = k;
    for (int i = k + 1; i < n; ++i) l = std::fabs(a(i, k)) > std::fabs(a(l, k)) ? i : l;
    ipvt.push_back(l + 1);
    if (a(l, k) == 0.0) {
      info = k + 1;
      continue;
    }
    for (int j = k; j < n; ++j) std::swap(a(l, j), a(k, j));
    for (int i = k + 1; i < n; ++i) {
      a(i, k) *= -1.0 / a(k, k);
      for (int j = k + 1; j < n; ++j) a(i, j) += a(i, k) * a(k, j);
    }
  }
  return info;
}

// Exchanges rows and columns l <= k of the leading matrix of order k + 1.
inline void exchangeSymmetric(Guarded& a, int l, int k) {
  for (int i = 0; i < l; ++i) std::swap(a(i, l), a(i, k));
  for (int j = l + 1; j < k; ++j) std::swap(a(j, k), a(l, j));
  std::swap(a(l, l), a(k, k));
}

// dspfa, loop by loop.
inline int textbookSymmetric(Guarded& a, std::vector<int>& kpvt) {
  const double alpha = (1.0 + std::sqrt(17.0)) / 8.0;
  int info = 0;
  kpvt.assign(static_cast<std::size_t>(a.columns), 0);
  for (int k = a.columns - 1; k >= 0;) {
    int row = 0, pivot = k;
    for (int i = 1; i < k; ++i) row = std::fabs(a(i, k)) > std::fabs(a(row, k)) ? i : row;
    const double diagonal = std::fabs(a(k, k)), largest = k > 0 ? std::fabs(a(row, k)) : 0.0;
    bool isTwo = false;
    if (diagonal < alpha * largest) {
      double inRow = 0.0;
      for (int j = 0; j <= k; ++j) {
        if (j != row) inRow = std::max(inRow, std::fabs(a(std::min(row, j), std::max(row, j))));
      }
      const bool isOther = std::fabs(a(row, row)) >= alpha * inRow;
      isTwo = !isOther && diagonal < alpha * largest * (largest / inRow);
      if (isOther || isTwo) pivot = row;
    }
    const int first = isTwo ? k - 1 : k;
    exchangeSymmetric(a, pivot, first);
    if (isTwo) std::swap(a(pivot, k), a(k - 1, k));
    for (int i = first; i <= k; ++i) kpvt[i] = isTwo ? -(pivot + 1) : pivot + 1;
    if (std::max(diagonal, largest) == 0.0) {
      info = k + 1;
    } else {
      // The multipliers, negated, are minus the columns times the inverse of the block.
      const double b = isTwo ? a(first, k) : 1.0, d = a(k, k) / b, e = a(first, first) / b;
      for (int j = first - 1; j >= 0; --j) {
        const double y = isTwo ? (e * a(j, k) / b - a(j, first) / b) / (1.0 - d * e) : -a(j, k) / d;
        const double x = isTwo ? (d * a(j, first) / b - a(j, k) / b) / (1.0 - d * e) : 0.0;
        for (int i = 0; i <= j; ++i) a(i, j) += y * a(i, k) + (isTwo ? x * a(i, first) : 0.0);
        if (isTwo) a(j, first) = x;
        a(j, k) = y;
      }
    }
    k = first - 1;
  }
  return info;
}

// The largest difference of two matrices, in units of the rounding errors of a factorization.
inline double difference(const DoubleGenMat& a, const DoubleGenMat& b) {
  return ratio(norm1(a - b), norm1(b), std::max(1U, a.rows()));
}

}  // namespace kilntest
