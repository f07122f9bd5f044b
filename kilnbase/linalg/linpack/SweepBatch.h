// Plane rotations of the columns of a matrix, collected and applied together.
#pragma once

#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/kernels/Rotations.h>

namespace vxKilnBase::linpack {

/// Collects sweeps of plane rotations over neighbouring columns of a matrix Q and applies up to
/// kFusedSweeps of them, a batch, in one pass over Q. Complete batches wait for each other: then
/// each part of Q stays in the caches while all of them are applied to it.
///
/// A sweep is `begin(first, last)`, then `rotate(k, c, s)` for k = first, ..., last - 1: columns x
/// = k and y = k + 1 become c x + s y and c y - s x. Columns of Q are valid after `apply`. Without
/// a matrix nothing happens.
///
/// Each column carries a scale, so that a rotation costs two multiplications an element. A cosine
/// of magnitude below 2^-64 is taken as 2^-64, an error far below the rounding of the rotation.
///
/// Source: W. M. Gentleman, Least squares computations by Givens transformations without square
/// roots, J. Inst. Math. Appl. 12 (1973); F. G. Van Zee, R. A. van de Geijn, G. Quintana-Ortí,
/// Restructuring the tridiagonal and bidiagonal QR algorithms for performance, ACM TOMS 40 (2014).
class SweepBatch {
 public:
  using Index = kernels::Index;

  /// Columns of the storage that a batch needs.
  static constexpr Index kStorageColumns = 2 * kernels::kFusedSweeps + 2;

  /// Q has `rows` rows; null stands for no matrix. The storage holds `columns` >= kStorageColumns
  /// columns, each with one element for each column that a sweep spans.
  SweepBatch(double* q, Index ldq, Index rows, double* storage, Index ldStorage, Index columns)
      : q_(q),
        ldq_(ldq),
        rows_(rows),
        storage_(storage),
        ld_(ldStorage),
        most_(std::min(columns / kStorageColumns, kernels::tuning::kMostBatches)) {}
  SweepBatch(const SweepBatch&) = delete;
  SweepBatch& operator=(const SweepBatch&) = delete;

  void begin(Index first, Index last);
  void rotate(Index k, double c, double s) {
    if (q_ != nullptr) record(k - first_, c, s);
  }
  void apply();

  /// Applies the collected sweeps, then the rotation of columns j and k.
  void rotateNow(Index j, Index k, double c, double s);

 private:
  static constexpr double kLeastCosine = 0x1p-64;

  void record(Index r, double c, double s);
  void open(Index first, Index last);
  void close();
  void applyComplete();
  double* factors(Index sweep) const { return batch_ + 2 * sweep * ld_; }
  double* scales() const { return factors(kernels::kFusedSweeps); }

  struct Complete {
    Index first;
    kernels::FusedSweeps sweeps;
  };

  double* q_;
  Index ldq_;
  Index rows_;
  double* storage_;
  Index ld_;
  Index most_;  // complete batches at a time
  Index count_ = 0;
  Complete complete_[kernels::tuning::kMostBatches];
  double* batch_ = storage_;  // storage of the batch that is not complete
  Index first_ = 0;           // the batch spans columns first_ to last_
  Index last_ = 0;
  Index sweeps_ = 0;
};

// The stored columns X and Y stand for x = d X and y = d' Y. With t = s / c,
//   c x + s y = (c d)  (X + t d' / d Y),
//   c y - s x = (c d') (Y - t d / d' X).
inline void SweepBatch::record(Index r, double c, double s) {
  const double cosine = std::copysign(std::max(std::fabs(c), kLeastCosine), c);
  const double secant = 1.0 / cosine;
  const double tangent = s * secant;
  double* scale = scales() + r;
  double* inverse = scale + ld_;
  double* a = factors(sweeps_ - 1) + r;
  a[0] = tangent * (scale[1] * inverse[0]);
  a[ld_] = tangent * (scale[0] * inverse[1]);
  for (Index i = 0; i < 2; ++i) {
    scale[i] *= cosine;
    inverse[i] *= secant;
  }
}

}  // namespace vxKilnBase::linpack
