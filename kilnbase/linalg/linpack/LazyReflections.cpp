#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/LazyReflections.h>
#include <kilnbase/linalg/linpack/reflector.h>

namespace vxKilnBase::linpack {

using kernels::active;
using kernels::PendingReflections;

LazyReflections::LazyReflections(const Columns& columns, double* qraux)
    : columns_(columns), qraux_(qraux), most_(mostPending(columns)) {}

Index LazyReflections::mostPending(const Columns& columns) {
  constexpr Index kSmall = 1500;  // elements: two passes over them cost less than the bookkeeping
  if (columns.rows * columns.count <= kSmall) return 0;
  return std::clamp<Index>(kFactors / columns.count - 1, 0, kMostPending);
}

void LazyReflections::exchange(Index i, Index j) {
  std::swap_ranges(columns_.at(0, i), columns_.at(columns_.rows, i), columns_.at(0, j));
  for (Index k = 0; k < pending_; ++k) std::swap(*factors(k, i), *factors(k, j));
}

void LazyReflections::bringUpToDate(Index row, Index j) {
  double terms[kMostPending];
  for (Index k = 0; k < pending_; ++k) terms[k] = std::exchange(*factors(k, j), 0.0);
  active().dense->gemv(columns_.rows - row, pending_, 1.0, columns_.at(row, made_ - pending_),
                       columns_.ld, terms, columns_.at(row, j));
}

void LazyReflections::reflect(Index l) {
  if (pending_ > 0) bringUpToDate(l, l);
  const Index m = columns_.rows - l;
  double* x = columns_.at(l, l);
  double diagonal = *x;
  qraux_[l] = 0.0;
  if (m > 1) {
    diagonal = makeReflector(m, x);
    qraux_[l] = *x;
  }
  if (qraux_[l] == 0.0) {
    flush(l, l + 1);
  } else if (most_ == 0) {
    active().householder->reflect(m, columns_.count - l - 1, l, x, columns_.at(l, l + 1),
                                  columns_.ld);
  } else {
    reflectLazily(l);
  }
  *x = diagonal;
  made_ = l + 1;
}

// What the columns from j on lack in the rows from `row` on.
PendingReflections LazyReflections::pendingFrom(Index row, Index j) {
  return {columns_.at(row, made_ - pending_), columns_.ld, pending_, factors(0, j), columns_.count};
}

// Adds to the columns from j on, from row `row` on, what they lack.
void LazyReflections::flush(Index row, Index j) {
  if (pending_ == 0) return;
  const PendingReflections pending = pendingFrom(row, j);
  sweep(row, j, columns_.count - j, pending, pending.vectors, factors(most_, j));
  pending_ = 0;
}

// Adds what is pending to n columns from j on, from row `row` on, and computes their projections on
// v.
void LazyReflections::sweep(Index row, Index j, Index n, PendingReflections pending,
                            const double* v, double* projections) const {
  // The vectors of one tile stay in the cache while the columns pass by.
  constexpr Index kTile = 1024;
  std::fill_n(projections, n, 0.0);
  while (row < columns_.rows) {
    const Index left = columns_.rows - row;
    const Index m = left > 2 * kTile ? kTile + left % 8 : left;
    active().householder->updateAndProject(m, n, row, pending, v, columns_.at(row, j), columns_.ld,
                                           projections);
    row += m;
    v += m;
    pending.vectors += m;
  }
}

void LazyReflections::reflectLazily(Index l) {
  const double* v = columns_.at(l, l);
  const Index n = columns_.count - l - 1;
  double* projections = factors(pending_, l + 1);
  PendingReflections pending = pendingFrom(l, l + 1);
  if (pending_ < most_) {
    pending.count = 0;
    sweep(l, l + 1, n, pending, v, projections);
    correct(l, projections);
  } else {
    sweep(l, l + 1, n, pending, v, projections);
    pending_ = 0;
    projections = std::copy_n(projections, n, factors(0, l + 1)) - n;
  }
  active().dense->scale(n, -1.0 / *v, projections);
  made_ = l + 1;
  ++pending_;
  finishRow(l, l + 1, n, pendingFrom(l, l + 1));
}

// Turns projections of vector l on columns that lack transformations into those on the true
// columns.
void LazyReflections::correct(Index l, double* projections) {
  const PendingReflections pending = pendingFrom(l, l + 1);
  for (Index k = 0; k < pending.count; ++k) {
    const double product =
        active().dense->dot(columns_.rows - l, pending.vectors + k * pending.ld, columns_.at(l, l));
    active().dense->axpy(columns_.count - l - 1, product, factors(k, l + 1), projections);
  }
}

// Adds to row l of n columns from j on what is pending, in the matrix only.
void LazyReflections::finishRow(Index l, Index j, Index n,
                                const PendingReflections& pending) const {
  constexpr Index kSlice = 64;
  for (Index done = 0; done < n; done += kSlice) {
    double row[kSlice];
    const Index count = std::min(kSlice, n - done);
    double* x = columns_.at(l, j + done);
    for (Index i = 0; i < count; ++i) row[i] = x[i * columns_.ld];
    for (Index k = 0; k < pending.count; ++k) {
      active().dense->axpy(count, pending.vectors[k * pending.ld],
                           pending.factors + (k * pending.factorStride + done), row);
    }
    for (Index i = 0; i < count; ++i) x[i * columns_.ld] = row[i];
  }
}

}  // namespace vxKilnBase::linpack
