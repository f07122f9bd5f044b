// The reflections of a panel, applied to other columns as one block.
#pragma once

#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/Submatrix.h>

namespace vxKilnBase::linpack {

/// The product Q = H₀ H₁ ... = I − V T Vᵀ of the reflections of a panel, where V is the lower
/// trapezoid of their vectors and T upper triangular.
///
/// The object stores not T but T⁻¹, which is the upper triangle of VᵀV with its diagonal halved,
/// that is, with the v₀ on its diagonal. While the object lives, the panel holds V in full, zeros
/// above the diagonal; the destructor puts the R back that stood there.
///
/// Source: T. Joffrain, T. M. Low, E. S. Quintana-Ortí, R. van de Geijn, F. G. Van Zee,
/// Accumulating Householder transformations, revisited, ACM Trans. Math. Softw. 32 (2006), 169-179.
class BlockReflector {
 public:
  /// The most columns that a panel may have.
  static constexpr Index kMostColumns = kernels::tuning::kReflectorColumns;

  /// qraux[j] is v₀ of reflection j, 0 where there is none.
  BlockReflector(const Submatrix& panel, const double* qraux);
  ~BlockReflector();
  BlockReflector(const BlockReflector&) = delete;
  BlockReflector& operator=(const BlockReflector&) = delete;

  /// C := Q C. C has as many rows as the panel.
  void apply(const Submatrix& c) const;
  /// C := Qᵀ C.
  void applyTransposed(const Submatrix& c) const;

 private:
  double& inverse(Index i, Index j) { return inverse_[j * kMostColumns + i]; }

  const Submatrix panel_;
  double inverse_[kMostColumns * kMostColumns];  // T⁻¹; below its diagonal Rᵀ without its diagonal
  double diagonal_[kMostColumns];                // of R
};

}  // namespace vxKilnBase::linpack
