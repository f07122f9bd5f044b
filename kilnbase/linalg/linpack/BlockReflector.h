// The transformations of a panel, applied together.
#pragma once

#include <kilnbase/linalg/linpack/LazyReflections.h>

namespace vxKilnBase::linpack {

/// The product Q = I - V T Vᵀ of the Householder transformations of a panel that has been factored.
///
/// While it lives the panel holds V in full, zeros above its diagonal; the end of its life restores
/// the R that stood there. It keeps no T but its inverse, the upper triangle of VᵀV with its
/// diagonal halved. Source: T. Joffrain, T. M. Low, E. S. Quintana-Ortí, R. van de Geijn, F. G. Van
/// Zee, Accumulating Householder transformations, revisited, ACM Trans. Math. Softw. 32 (2006),
/// 169-179.
class BlockReflector {
 public:
  /// The most columns that a panel may have.
  static constexpr Index kMostColumns = 24;

  /// `qraux` has the first elements of the vectors, 0 where there is no transformation.
  BlockReflector(const Columns& panel, const double* qraux);
  ~BlockReflector();
  BlockReflector(const BlockReflector&) = delete;
  BlockReflector& operator=(const BlockReflector&) = delete;

  /// Multiplies the columns, which have as many rows as the panel, by Q.
  void apply(const Columns& columns) const;
  /// The same by Qᵀ.
  void applyTransposed(const Columns& columns) const;

 private:
  double& inverse(Index i, Index j) { return inverse_[j * kMostColumns + i]; }

  const Columns panel_;
  double inverse_[kMostColumns * kMostColumns];  // of T; below its diagonal the rows of R
  double diagonal_[kMostColumns];                // of R
};

}  // namespace vxKilnBase::linpack
