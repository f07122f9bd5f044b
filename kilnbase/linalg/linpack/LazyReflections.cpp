#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/LazyReflections.h>
#include <kilnbase/linalg/linpack/reflector.h>

namespace vxKilnBase::linpack {

using kernels::active;
using kernels::PendingReflections;
namespace tuning = kernels::tuning;

LazyReflections::LazyReflections(const Submatrix& a, double* qraux)
    : a_(a), qraux_(qraux), most_(mostPending(a)) {}

// The factors take one row for each pending reflection and one for the reflection at hand.
Index LazyReflections::mostPending(const Submatrix& a) {
  if (a.rows * a.columns <= tuning::kMostEager) return 0;
  return std::clamp<Index>(tuning::kLazyFactors / a.columns - 1, 0, tuning::kMostPending);
}

void LazyReflections::exchange(Index i, Index j) {
  std::swap_ranges(a_.at(0, i), a_.at(a_.rows, i), a_.at(0, j));
  for (Index k = 0; k < pending_; ++k) std::swap(*factors(k, i), *factors(k, j));
}

void LazyReflections::bringUpToDate(Index row, Index j) {
  double f[tuning::kMostPending];
  for (Index k = 0; k < pending_; ++k) f[k] = std::exchange(*factors(k, j), 0.0);
  active().dense->gemv(a_.rows - row, pending_, 1.0, a_.at(row, made_ - pending_), a_.ld, f,
                       a_.at(row, j));
}

void LazyReflections::reflect(Index l) {
  if (pending_ > 0) bringUpToDate(l, l);
  const Index m = a_.rows - l;
  double* x = a_.at(l, l);
  double diagonal = *x;
  qraux_[l] = 0.0;
  if (m > 1) {
    diagonal = makeReflector(m, x);
    qraux_[l] = *x;
  }
  if (qraux_[l] == 0.0) {
    flush(l, l + 1);
  } else if (most_ == 0) {
    active().householder->reflect(m, a_.columns - l - 1, l, x, a_.at(l, l + 1), a_.ld);
  } else {
    reflectLazily(l);
  }
  *x = diagonal;
  made_ = l + 1;
}

// V F for the columns from j on and the rows from `row` on.
PendingReflections LazyReflections::pendingFrom(Index row, Index j) {
  return {a_.at(row, made_ - pending_), a_.ld, pending_, factors(0, j), a_.columns};
}

// S += V F in the columns from j on and the rows from `row` on.
void LazyReflections::flush(Index row, Index j) {
  if (pending_ == 0) return;
  const PendingReflections pending = pendingFrom(row, j);
  sweep(row, j, pending, pending.vectors, factors(most_, j));
  pending_ = 0;
}

// S += V F, then projections = Sᵀ v, in the columns from j on and the rows from `row` on.
void LazyReflections::sweep(Index row, Index j, PendingReflections pending, const double* v,
                            double* projections) const {
  const Index n = a_.columns - j;
  std::fill_n(projections, n, 0.0);
  while (row < a_.rows) {
    // Tiles of kSweepRows, the first of which also takes the rows that fill no register.
    const Index left = a_.rows - row;
    const bool several = left > 2 * tuning::kSweepRows;
    const Index m = several ? tuning::kSweepRows + left % tuning::kWidestRegister : left;
    active().householder->updateAndProject(m, n, row, pending, v, a_.at(row, j), a_.ld,
                                           projections);
    row += m;
    v += m;
    pending.vectors += m;
  }
}

void LazyReflections::reflectLazily(Index l) {
  const double* v = a_.at(l, l);
  const Index n = a_.columns - l - 1;
  double* projections = factors(pending_, l + 1);
  PendingReflections pending = pendingFrom(l, l + 1);
  if (pending_ < most_) {
    pending.count = 0;
    sweep(l, l + 1, pending, v, projections);
    correct(l, projections);
  } else {
    sweep(l, l + 1, pending, v, projections);
    pending_ = 0;
    projections = std::copy_n(projections, n, factors(0, l + 1)) - n;
  }
  active().dense->scale(n, -1.0 / *v, projections);
  made_ = l + 1;
  ++pending_;
  finishRow(l);
}

// projections += Fᵀ (Vᵀ v), which turns Sᵀ v into A⁽ˡ⁾ᵀ v.
void LazyReflections::correct(Index l, double* projections) {
  const PendingReflections pending = pendingFrom(l, l + 1);
  for (Index k = 0; k < pending.count; ++k) {
    const double product =
        active().dense->dot(a_.rows - l, pending.vectors + k * pending.ld, a_.at(l, l));
    active().dense->axpy(a_.columns - l - 1, product, factors(k, l + 1), projections);
  }
}

// S += V F in row l behind column l. Row l of R is then final: later sums start at row l + 1.
void LazyReflections::finishRow(Index l) {
  double row[tuning::kRowSlice];
  for (Index j = l + 1; j < a_.columns; j += tuning::kRowSlice) {
    const Index n = std::min(tuning::kRowSlice, a_.columns - j);
    const PendingReflections pending = pendingFrom(l, j);
    for (Index i = 0; i < n; ++i) row[i] = *a_.at(l, j + i);
    for (Index k = 0; k < pending.count; ++k) {
      active().dense->axpy(n, pending.vectors[k * pending.ld], factors(k, j), row);
    }
    for (Index i = 0; i < n; ++i) *a_.at(l, j + i) = row[i];
  }
}

}  // namespace vxKilnBase::linpack
