#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/dchdc.h>
#include <kilnbase/linalg/linpack/pivotOrder.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// The upper triangle of a symmetric matrix.
struct Triangle {
  double* a;
  Index lda;
  Index p;

  double* column(Index j) const { return a + j * lda; }
  double& at(Index i, Index j) const { return a[j * lda + i]; }
};

// Exchanges rows and columns k < l.
void exchange(const Triangle& t, Index k, Index l) {
  std::swap_ranges(t.column(k), t.column(k) + k, t.column(l));
  std::swap(t.at(k, k), t.at(l, l));
  for (Index j = k + 1; j < l; ++j) std::swap(t.at(k, j), t.at(j, l));
  for (Index j = l + 1; j < t.p; ++j) std::swap(t.at(k, j), t.at(l, j));
}

// Subtracts the products of `rows` rows of R, from row `begin` on, from rows `first` to end - 1 of
// A.
void subtractProducts(const Triangle& t, Index begin, Index rows, Index first, Index end) {
  const auto& dense = *kernels::active().dense;
  const double* above = &t.at(begin, first);
  const Index height = end - first;
  const kernels::MatrixView transposed{above, t.lda, 1};
  dense.syrkUpper(height, rows, -1.0, transposed, {above, 1, t.lda}, &t.at(first, first), t.lda);
  if (end == t.p) return;
  dense.gemm(height, t.p - end, rows, -1.0, transposed, {&t.at(begin, end), 1, t.lda},
             &t.at(first, end), t.lda);
}

// Eliminates rows `begin` to end - 1, without pivoting, while the diagonal is positive. Subtracts
// the eliminated rows from the others of these rows. Returns how many rows were eliminated.
Index eliminate(const Triangle& t, Index begin, Index end) {
  constexpr Index kStrip = kernels::CholeskyKernels::kStripRows;
  const Index strips = (end - begin + kStrip - 1) / kStrip;
  if (strips <= 1) {
    const auto& kernel = *kernels::active().cholesky;
    return kernel.eliminateStrip(end - begin, t.p - begin, &t.at(begin, begin), t.lda);
  }
  const Index middle = begin + (strips + 1) / 2 * kStrip;
  const Index done = eliminate(t, begin, middle);
  subtractProducts(t, begin, done, middle, end);
  return done < middle - begin ? done : done + eliminate(t, middle, end);
}

// The elimination with pivoting. diagonal[j] is a_jj minus the squares of the eliminated rows in
// column j.
class PivotedElimination {
 public:
  PivotedElimination(const Triangle& t, const FreeRange& range, double* diagonal, int* jpvt)
      : t_(t), range_(range), diagonal_(diagonal), jpvt_(jpvt) {
    for (Index j = 0; j < t.p; ++j) diagonal[j] = t.at(j, j);
  }

  // Eliminates blocks of rows, then the last kMostSmall rows. Returns the number of rows
  // eliminated.
  Index run() {
    Index begin = 0;
    while (t_.p - begin > kMostSmall) {
      const Index end = begin + std::min(kBlockRows, t_.p - begin - kMostSmall);
      const Index stop = eliminateRows(begin, end);
      subtractProducts(t_, begin, stop - begin, stop, t_.p);
      begin = stop;
      if (stop < end) break;
    }
    if (t_.p - begin <= kMostSmall) begin += eliminateRest(begin);
    for (Index j = begin; j < t_.p; ++j) t_.at(j, j) = diagonal_[j];
    return begin;
  }

 private:
  static constexpr Index kBlockRows = kernels::tuning::kPivotedRows;
  static constexpr Index kMostSmall = kernels::CholeskyKernels::kMostSmall;

  // Eliminates rows `begin` to end - 1. Each row has the rows above subtracted when its turn comes.
  // Stops where no pivot is positive. Returns the first row that was not eliminated.
  Index eliminateRows(Index begin, Index end) {
    const auto eliminateRow = kernels::active().cholesky->eliminateRow;
    for (Index k = begin; k < end; ++k) {
      const Index l = findPivot(k);
      if (!(diagonal_[l] > 0.0)) return k;
      if (l != k) {
        exchange(t_, k, l);
        std::swap(diagonal_[k], diagonal_[l]);
        std::swap(jpvt_[k], jpvt_[l]);
      }
      const double pivot = std::sqrt(diagonal_[k]);
      t_.at(k, k) = pivot;
      eliminateRow(k - begin, t_.p - k - 1, pivot, &t_.at(begin, k), t_.lda, diagonal_ + k + 1);
    }
    return end;
  }

  // The place of the first largest diagonal element that may be moved to place k.
  Index findPivot(Index k) const {
    if (k < range_.begin || k >= range_.end) return k;
    return k + kernels::elements<double>().maxIndex(range_.end - k, diagonal_ + k, 1);
  }

  // Eliminates rows `begin` to p - 1, at most kMostSmall. Returns how many were eliminated.
  Index eliminateRest(Index begin) {
    int exchanges[kMostSmall];
    const Index done = kernels::active().cholesky->eliminateSmall(
        t_.p - begin, range_.begin - begin, range_.end - begin, &t_.at(begin, begin), t_.lda,
        diagonal_ + begin, exchanges);
    for (Index k = begin; k < begin + done; ++k) {
      const Index l = begin + exchanges[k - begin];
      if (l == k) continue;
      std::swap_ranges(t_.column(k), t_.column(k) + begin, t_.column(l));
      std::swap(jpvt_[k], jpvt_[l]);
    }
    return done;
  }

  const Triangle& t_;
  const FreeRange& range_;
  double* diagonal_;
  int* jpvt_;
};

}  // namespace

int dchdc(double* a, int lda, int p, double* work, int* jpvt, int job) {
  if (p <= 0) return 0;
  const Triangle t{a, lda, p};
  if (job == 0) return static_cast<int>(eliminate(t, 0, p));
  const FreeRange range = pivotOrder(p, jpvt, [&t](Index i, Index j) { exchange(t, i, j); });
  return static_cast<int>(PivotedElimination(t, range, work, jpvt).run());
}

}  // namespace vxKilnBase::linpack
