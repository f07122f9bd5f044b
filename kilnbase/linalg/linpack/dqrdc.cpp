#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/BlockReflector.h>
#include <kilnbase/linalg/linpack/LazyReflections.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/dqrdc.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;

// The columns that take part in pivoting, and what is left of their norms.
class Pivoting {
 public:
  // Moves the initial columns to the front and the final ones to the end. `norms` and `references`
  // have one element for each column.
  Pivoting(const Columns& columns, int* jpvt, double* norms, double* references);

  // Brings the free column of largest norm to place l.
  void choose(Index l, LazyReflections& reflections);
  // Takes row l of R out of the norms of the later free columns.
  void downdate(Index l, LazyReflections& reflections);

 private:
  void exchange(Index i, Index j);
  void recompute(Index l, Index j, LazyReflections& reflections);

  const Columns columns_;
  int* const jpvt_;
  double* const norms_;
  double* const references_;  // the norms when they were last computed afresh
  Index first_ = 0;           // the free columns
  Index end_ = 0;
};

Pivoting::Pivoting(const Columns& columns, int* jpvt, double* norms, double* references)
    : columns_(columns), jpvt_(jpvt), norms_(norms), references_(references), end_(columns.count) {
  for (Index j = 0; j < columns_.count; ++j) {
    const int place = static_cast<int>(j) + 1;
    const bool initial = jpvt_[j] > 0;
    jpvt_[j] = jpvt_[j] < 0 ? -place : place;
    if (initial) exchange(first_++, j);
  }
  for (Index j = columns_.count; j-- > 0;) {
    if (jpvt_[j] > 0) continue;
    jpvt_[j] = -jpvt_[j];
    exchange(--end_, j);
  }
  for (Index j = first_; j < end_; ++j) {
    norms_[j] = references_[j] = dnrm2(columns_.rows, columns_.at(0, j), 1);
  }
}

void Pivoting::exchange(Index i, Index j) {
  if (i == j) return;
  std::swap_ranges(columns_.at(0, i), columns_.at(columns_.rows, i), columns_.at(0, j));
  std::swap(jpvt_[i], jpvt_[j]);
}

void Pivoting::choose(Index l, LazyReflections& reflections) {
  if (l < first_ || l + 1 >= end_) return;
  const Index largest = l + active().householder->indexOfLargest(end_ - l, norms_ + l);
  if (largest == l) return;
  reflections.exchange(l, largest);
  std::swap(jpvt_[l], jpvt_[largest]);
  norms_[largest] = norms_[l];
  references_[largest] = references_[l];
}

// Source: LINPACK Users' Guide, chapter 9: a norm is computed afresh when what is left of it would
// be lost in the rounding of the formula.
void Pivoting::downdate(Index l, LazyReflections& reflections) {
  constexpr Index kSlice = 64;
  constexpr Index kBefore = 8;
  double removed[kBefore + kSlice];
  std::fill_n(removed, kBefore, 0.0);
  for (Index j = std::max(l + 1, first_); j < end_; j += kSlice) {
    const Index n = std::min(kSlice, end_ - j);
    for (Index i = 0; i < n; ++i) removed[kBefore + i] = *columns_.at(l, j + i);
    const bool anyLost = active().householder->downdateNorms(
        n, std::min(j, kBefore), removed + kBefore, norms_ + j, references_ + j);
    for (Index i = j; anyLost && i < j + n; ++i) {
      if (norms_[i] < 0.0) recompute(l, i, reflections);
    }
  }
}

void Pivoting::recompute(Index l, Index j, LazyReflections& reflections) {
  reflections.bringUpToDate(l + 1, j);
  norms_[j] = references_[j] = dnrm2(columns_.rows - l - 1, columns_.at(l + 1, j), 1);
}

void factorPivoted(const Columns& columns, double* qraux, int* jpvt, double* work) {
  Pivoting pivoting(columns, jpvt, qraux, work);
  LazyReflections reflections(columns, qraux);
  for (Index l = 0; l < std::min(columns.rows, columns.count); ++l) {
    pivoting.choose(l, reflections);
    reflections.reflect(l);
    pivoting.downdate(l, reflections);
  }
}

// Not inlined, so that its room on the stack is free again when the panel is applied.
[[gnu::noinline]] void factorPanel(const Columns& panel, double* qraux) {
  LazyReflections reflections(panel, qraux);
  for (Index l = 0; l < std::min(panel.rows, panel.count); ++l) reflections.reflect(l);
}

// Factors panel by panel, each of which is applied to the columns behind it as a whole. Source: R.
// Schreiber, C. Van Loan, A storage-efficient WY representation for products of Householder
// transformations, SIAM J. Sci. Stat. Comput. 10 (1989), 53-57.
void factorUnpivoted(const Columns& columns, double* qraux) {
  constexpr Index kWidth = BlockReflector::kMostColumns;
  constexpr Index kLeastBlocked = 64;
  Index j = 0;
  for (; std::min(columns.rows, columns.count) - j > kLeastBlocked; j += kWidth) {
    const Columns panel = columns.from(j, j, kWidth);
    factorPanel(panel, qraux + j);
    const BlockReflector reflector(panel, qraux + j);
    reflector.applyTransposed(columns.from(j, j + kWidth, columns.count - j - kWidth));
  }
  factorPanel(columns.from(j, j, columns.count - j), qraux + j);
}

}  // namespace

void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, int job) {
  const Columns columns = {x, ldx, n, p};
  if (job != 0) {
    factorPivoted(columns, qraux, jpvt, work);
  } else {
    factorUnpivoted(columns, qraux);
  }
  // Columns beyond the last row have no transformation.
  for (int j = n; j < p; ++j) qraux[j] = 0.0;
}

}  // namespace vxKilnBase::linpack
