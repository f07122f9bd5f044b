#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/dqrdc.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;
using kernels::Index;
using kernels::PendingReflections;

// A block of columns that is being factored.
struct Columns {
  double* x;
  Index ld;
  Index rows;
  Index count;

  double* at(Index i, Index j) const { return x + (j * ld + i); }
};

// Turns the m elements of `x`, whose norm is not 0, into a Householder vector v, and returns what
// the transformation makes of the first element. Columns whose norm or its reciprocal is out of
// range are scaled first.
double makeHouseholderVector(Index m, double* x, double norm) {
  double factor = 1.0;
  if (norm < std::numeric_limits<double>::min()) factor = 0x1p600;
  if (norm > 0x1p1000) factor = 0x1p-600;
  if (factor != 1.0) {
    active().dense->scale(m, factor, x);
    norm = dnrm2(m, x, 1);
  }
  if (x[0] < 0.0) norm = -norm;
  active().dense->scale(m, 1.0 / norm, x);
  x[0] += 1.0;
  return -norm / factor;
}

// Householder transformations of a block of columns, from the left to the right.
//
// The later columns receive a transformation lazily: only its projections on them and the next row
// of R are computed at once. Several transformations are then added together, in the same pass over
// the columns that computes the projections of the next one. A column that is needed earlier is
// brought up to date alone. Source: G. Quintana-Ortí, X. Sun, C. H. Bischof, A BLAS-3 version of
// the QR factorization with column pivoting, SIAM J. Sci. Comput. 19 (1998), 1486-1494.
class LazyReflections {
 public:
  LazyReflections(const Columns& columns, double* qraux);

  // Exchanges columns i and j, neither of which has been transformed.
  void exchange(Index i, Index j);
  // Makes the transformation of column l, and row l of R. All before it have been made.
  void reflect(Index l);
  // Adds to column j, from row `row` on, what it lacks.
  void bringUpToDate(Index row, Index j);

 private:
  static constexpr Index kFactors = 6144;
  static constexpr Index kMostPending = 8;

  static Index mostPending(const Columns& columns);
  double* factors(Index k, Index j) { return factors_ + (k * columns_.count + j); }
  PendingReflections pendingFrom(Index row, Index j);
  void flush(Index row, Index j);
  void sweep(Index row, Index j, Index n, PendingReflections pending, const double* v,
             double* projections) const;
  void reflectLazily(Index l);
  void reflectAtOnce(Index l);
  void correct(Index l, double* projections);
  void finishRow(Index l, Index j, Index n, const PendingReflections& pending) const;

  const Columns columns_;
  double* const qraux_;
  const Index most_;   // transformations that may be pending; 0 when the columns are too many
  Index made_ = 0;     // transformations that have been made
  Index pending_ = 0;  // how many of them the later columns lack
  double factors_[kFactors];  // one for each column, of each pending transformation and one more
};

LazyReflections::LazyReflections(const Columns& columns, double* qraux)
    : columns_(columns), qraux_(qraux), most_(mostPending(columns)) {}

Index LazyReflections::mostPending(const Columns& columns) {
  // A matrix that stays in the cache is better updated at every step.
  constexpr Index kCached = 60000;
  const Index fitting = kFactors / std::max<Index>(columns.count, 1) - 1;
  return std::min(fitting, columns.rows * columns.count > kCached ? kMostPending : 1);
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
  bringUpToDate(l, l);
  const Index m = columns_.rows - l;
  double* x = columns_.at(l, l);
  const double norm = m > 1 ? dnrm2(m, x, 1) : 0.0;
  double diagonal = *x;
  qraux_[l] = 0.0;
  if (norm == 0.0) {
    flush(l, l + 1);
  } else {
    diagonal = makeHouseholderVector(m, x, norm);
    qraux_[l] = *x;
    most_ > 0 ? reflectLazily(l) : reflectAtOnce(l);
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

// For more columns than there is room for factors.
void LazyReflections::reflectAtOnce(Index l) {
  constexpr Index kSlice = kFactors / 2;
  const double* v = columns_.at(l, l);
  for (Index j = l + 1; j < columns_.count; j += kSlice) {
    const Index n = std::min(kSlice, columns_.count - j);
    sweep(l, j, n, {v, columns_.ld, 0, factors_, n}, v, factors_);
    active().dense->scale(n, -1.0 / *v, factors_);
    finishRow(l, j, n, {v, columns_.ld, 1, factors_, n});
    sweep(l + 1, j, n, {v + 1, columns_.ld, 1, factors_, n}, v + 1, factors_ + kSlice);
  }
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
  for (Index j = std::max(l + 1, first_); j < end_; j += kSlice) {
    double removed[kSlice];
    const Index count = std::min(kSlice, end_ - j);
    for (Index i = 0; i < count; ++i) removed[i] = *columns_.at(l, j + i);
    if (!active().householder->downdateNorms(count, removed, norms_ + j, references_ + j)) continue;
    for (Index i = j; i < j + count; ++i) {
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

void factorPanel(const Columns& columns, double* qraux) {
  LazyReflections reflections(columns, qraux);
  for (Index l = 0; l < std::min(columns.rows, columns.count); ++l) reflections.reflect(l);
}

}  // namespace

void dqrdc(double* x, int ldx, int n, int p, double* qraux, int* jpvt, double* work, int job) {
  const Columns columns = {x, ldx, n, p};
  if (job != 0) {
    factorPivoted(columns, qraux, jpvt, work);
  } else {
    factorPanel(columns, qraux);
  }
  // Columns beyond the last row have no transformation.
  for (int j = n; j < p; ++j) qraux[j] = 0.0;
}

}  // namespace vxKilnBase::linpack
