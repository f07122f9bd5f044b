// Householder transformations of a block of columns, one column at a time.
#pragma once

#include <kilnbase/linalg/kernels/Householder.h>

namespace vxKilnBase::linpack {

using kernels::Index;

/// Columns of a column-major matrix.
struct Columns {
  double* x;
  Index ld;
  Index rows;
  Index count;

  double* at(Index i, Index j) const { return x + (j * ld + i); }
  /// The rows from i on of n columns from j on.
  Columns from(Index i, Index j, Index n) const { return {at(i, j), ld, rows - i, n}; }
};

/// Householder transformations of a block of columns, from the left to the right.
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
  static constexpr Index kMostPending = 4;

  static Index mostPending(const Columns& columns);
  double* factors(Index k, Index j) { return factors_ + (k * columns_.count + j); }
  kernels::PendingReflections pendingFrom(Index row, Index j);
  void flush(Index row, Index j);
  void sweep(Index row, Index j, Index n, kernels::PendingReflections pending, const double* v,
             double* projections) const;
  void reflectLazily(Index l);
  void correct(Index l, double* projections);
  void finishRow(Index l, Index j, Index n, const kernels::PendingReflections& pending) const;

  const Columns columns_;
  double* const qraux_;
  const Index most_;   // transformations that may be pending; 0 in small and very wide matrices
  Index made_ = 0;     // transformations that have been made
  Index pending_ = 0;  // how many of them the later columns lack
  double factors_[kFactors];  // one for each column, of each pending transformation and one more
};

}  // namespace vxKilnBase::linpack
