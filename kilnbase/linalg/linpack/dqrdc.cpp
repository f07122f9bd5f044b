#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/BlockReflector.h>
#include <kilnbase/linalg/linpack/LazyReflections.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/dqrdc.h>
#include <kilnbase/linalg/linpack/pivotOrder.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;
namespace tuning = kernels::tuning;

// The free columns and the norms of their elements below the finished rows of R.
class Pivoting {
 public:
  // `norms` and `references` have one element for each column.
  Pivoting(const Submatrix& a, const FreeRange& free, int* jpvt, double* norms, double* references);

  // Moves the free column of the largest norm to place l.
  void choose(Index l, LazyReflections& reflections);
  // Takes row l of R out of the norms of the free columns behind column l.
  void downdate(Index l, LazyReflections& reflections);

 private:
  void recompute(Index l, Index j, LazyReflections& reflections);

  const Submatrix a_;
  int* const jpvt_;
  double* const norms_;
  double* const references_;  // each norm when it was last computed from the elements
  const FreeRange free_;
};

Pivoting::Pivoting(const Submatrix& a, const FreeRange& free, int* jpvt, double* norms,
                   double* references)
    : a_(a), jpvt_(jpvt), norms_(norms), references_(references), free_(free) {
  for (Index j = free_.begin; j < free_.end; ++j) {
    norms_[j] = references_[j] = dnrm2(a_.rows, a_.at(0, j), 1);
  }
}

void Pivoting::choose(Index l, LazyReflections& reflections) {
  if (l < free_.begin || l + 1 >= free_.end) return;
  const Index largest = l + active().householder->indexOfLargest(free_.end - l, norms_ + l);
  if (largest == l) return;
  reflections.exchange(l, largest);
  std::swap(jpvt_[l], jpvt_[largest]);
  norms_[largest] = norms_[l];
  references_[largest] = references_[l];
}

// Source: LINPACK Users' Guide, chapter 9: a norm is computed from the elements when the formula
// would leave too few digits.
void Pivoting::downdate(Index l, LazyReflections& reflections) {
  constexpr Index kBefore = tuning::kWidestRegister;
  double removed[kBefore + tuning::kRowSlice];
  std::fill_n(removed, kBefore, 0.0);
  for (Index j = std::max(l + 1, free_.begin); j < free_.end; j += tuning::kRowSlice) {
    const Index n = std::min(tuning::kRowSlice, free_.end - j);
    for (Index i = 0; i < n; ++i) removed[kBefore + i] = *a_.at(l, j + i);
    const bool anyLost = active().householder->downdateNorms(
        n, std::min(j, kBefore), removed + kBefore, norms_ + j, references_ + j);
    for (Index i = j; anyLost && i < j + n; ++i) {
      if (norms_[i] < 0.0) recompute(l, i, reflections);
    }
  }
}

void Pivoting::recompute(Index l, Index j, LazyReflections& reflections) {
  reflections.bringUpToDate(l + 1, j);
  norms_[j] = references_[j] = dnrm2(a_.rows - l - 1, a_.at(l + 1, j), 1);
}

// Factors the matrix at once if it is small and its squares are safe. Returns whether it did.
bool factorSmall(const Submatrix& a, const FreeRange& free, double* qraux, int* jpvt) {
  constexpr Index kMost = kernels::HouseholderKernels::kMostSmall;
  int order[kMost], old[kMost];
  if (!active().householder->factorSmall(a.rows, a.columns, free.begin, free.end, a.x, a.ld, qraux,
                                         order)) {
    return false;
  }
  std::copy_n(jpvt, a.columns, old);
  for (Index j = 0; j < a.columns; ++j) jpvt[j] = old[order[j]];
  return true;
}

void factorPivoted(const Submatrix& a, double* qraux, int* jpvt, double* work) {
  const FreeRange free = pivotOrder(a.columns, jpvt, [&a](Index i, Index j) {
    std::swap_ranges(a.at(0, i), a.at(a.rows, i), a.at(0, j));
  });
  if (factorSmall(a, free, qraux, jpvt)) return;
  Pivoting pivoting(a, free, jpvt, qraux, work);
  LazyReflections reflections(a, qraux);
  for (Index l = 0; l < std::min(a.rows, a.columns); ++l) {
    pivoting.choose(l, reflections);
    reflections.reflect(l);
    pivoting.downdate(l, reflections);
  }
}

// Not inlined, so that its stack is free again when the panel is applied.
[[gnu::noinline]] void factorPanel(const Submatrix& panel, double* qraux) {
  LazyReflections reflections(panel, qraux);
  for (Index l = 0; l < std::min(panel.rows, panel.columns); ++l) reflections.reflect(l);
}

// Factors panels of columns from the left to the right, and applies the reflections of each panel
// as one block to the columns behind it.
//
// Source: R. Schreiber, C. Van Loan, A storage-efficient WY representation for products of
// Householder transformations, SIAM J. Sci. Stat. Comput. 10 (1989), 53-57.
void factorUnpivoted(const Submatrix& a, double* qraux) {
  constexpr Index kWidth = tuning::kReflectorColumns;
  Index j = 0;
  for (; std::min(a.rows, a.columns) - j > tuning::kMostUnblocked; j += kWidth) {
    const Submatrix panel = a.from(j, j, kWidth);
    factorPanel(panel, qraux + j);
    const BlockReflector reflector(panel, qraux + j);
    reflector.applyTransposed(a.from(j, j + kWidth, a.columns - j - kWidth));
  }
  factorPanel(a.from(j, j, a.columns - j), qraux + j);
}

}  // namespace

void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, int job) {
  const Submatrix a = {x, ldx, n, p};
  if (job != 0) {
    factorPivoted(a, qraux, jpvt, work);
  } else {
    factorUnpivoted(a, qraux);
  }
  for (int j = n; j < p; ++j) qraux[j] = 0.0;
}

}  // namespace vxKilnBase::linpack
