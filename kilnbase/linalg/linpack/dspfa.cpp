#include <algorithm>
#include <cmath>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/SymmetricFactors.h>
#include <kilnbase/linalg/linpack/dspfa.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// (1 + √17) / 8.
constexpr double kAlpha = 0.6403882032022076;

Index indexOfLargest(Index n, const double* x) {
  Index largest = 0;
  for (Index i = 1; i < n; ++i) {
    if (std::fabs(x[i]) > std::fabs(x[largest])) largest = i;
  }
  return largest;
}

class Elimination {
 public:
  Elimination(double* ap, Index n, int* kpvt) : a_{ap, n}, kpvt_(kpvt) {}

  int run() {
    for (Index k = a_.n - 1; k >= 0;) k -= eliminate(k);
    return info_;
  }

 private:
  // The block that ends with row k, and the row to be moved to its first one.
  struct Pivot {
    Index order;
    Index row;
  };

  Pivot choose(Index k) const {
    const double* column = a_.column(k);
    const double diagonal = std::fabs(column[k]);
    if (k == 0) return {1, 0};
    const Index imax = indexOfLargest(k, column);
    const double largest = std::fabs(column[imax]);
    if (diagonal >= kAlpha * largest) return {1, k};
    double inRow = 0.0;
    for (Index i = 0; i < imax; ++i) inRow = std::max(inRow, std::fabs(a_.at(i, imax)));
    for (Index j = imax + 1; j <= k; ++j) inRow = std::max(inRow, std::fabs(a_.at(imax, j)));
    if (std::fabs(a_.at(imax, imax)) >= kAlpha * inRow) return {1, imax};
    if (diagonal >= kAlpha * largest * (largest / inRow)) return {1, k};
    return {2, imax};
  }

  // Exchanges rows and columns k and l <= k of the leading k + 1.
  void exchange(Index l, Index k) {
    if (l == k) return;
    std::swap_ranges(a_.column(l), a_.column(l) + l, a_.column(k));
    for (Index j = l + 1; j < k; ++j) std::swap(a_.at(j, k), a_.at(l, j));
    std::swap(a_.at(l, l), a_.at(k, k));
  }

  // Returns the order of the block.
  Index eliminate(Index k) {
    const Pivot pivot = choose(k);
    const auto row = static_cast<int>(pivot.row + 1);
    if (pivot.order == 2) {
      exchange(pivot.row, k - 1);
      std::swap(a_.at(pivot.row, k), a_.at(k - 1, k));
      kpvt_[k] = kpvt_[k - 1] = -row;
      eliminateTwo(k);
      return 2;
    }
    kpvt_[k] = row;
    exchange(pivot.row, k);
    eliminateOne(k);
    return 1;
  }

  void eliminateOne(Index k) {
    double* column = a_.column(k);
    if (column[k] == 0.0) {
      info_ = static_cast<int>(k + 1);
      return;
    }
    for (Index j = k; j-- > 0;) {
      const double factor = -column[j] / column[k];
      kernels::active().dense->axpy(j + 1, factor, column, a_.column(j));
      column[j] = factor;
    }
  }

  void eliminateTwo(Index k) {
    double* second = a_.column(k);
    double* first = a_.column(k - 1);
    const double off = second[k - 1];
    const double d = second[k] / off;
    const double dAbove = first[k - 1] / off;
    const double denominator = 1.0 - d * dAbove;
    for (Index j = k - 1; j-- > 0;) {
      const double b = second[j] / off;
      const double bAbove = first[j] / off;
      const double factor = (dAbove * b - bAbove) / denominator;
      const double factorAbove = (d * bAbove - b) / denominator;
      kernels::active().dense->axpy(j + 1, factor, second, a_.column(j));
      kernels::active().dense->axpy(j + 1, factorAbove, first, a_.column(j));
      second[j] = factor;
      first[j] = factorAbove;
    }
  }

  PackedUpper<double> a_;
  int* kpvt_;
  int info_ = 0;
};

}  // namespace

int dspfa(double* ap, int n, int* kpvt) {
  return Elimination(ap, n, kpvt).run();
}

}  // namespace vxKilnBase::linpack
