// Householder reduction of a symmetric matrix to tridiagonal form.
#pragma once

#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::linpack {

/// The lower triangle of a symmetric matrix A, and what the reduction needs.
struct SymmetricProblem {
  using Index = kernels::Index;

  /// The distance of columns for n rows.
  static constexpr Index strideFor(Index n) {
    constexpr Index kGroup = kernels::TridiagonalKernels::kRowGroup;
    return (n + kGroup - 1) / kGroup * kGroup;
  }
  /// Elements of `work` in multiples of lda.
  static constexpr Index kWorkColumns = 4;

  Index n;
  double* a;  ///< Column-major; elements behind row n - 1 are 0.
  Index lda;  ///< strideFor(n)
  double* d;  ///< n elements
  double* e;  ///< n elements
  double* work;
};

/// Reduces A to the tridiagonal matrix T = QᵀAQ with diagonal `d` and `e` beside; e[n - 1] is 0.
/// n > 0.
///
/// Reflection l, of n - 2, stands in column l from row l + 1 on; see reflector.h. About 4n³/3
/// operations.
///
/// Source: R. S. Martin, C. Reinsch, J. H. Wilkinson, Householder's tridiagonalization of a
/// symmetric matrix, Numer. Math. 11 (1968), 181-195; the order of the operations is that of
/// kernels/Tridiagonal.h.
void tridiagonalize(const SymmetricProblem& problem);

/// Writes Q, n by n, from the reflections that `tridiagonalize` left. About 4n³/3 operations.
void formTridiagonalizer(const SymmetricProblem& problem, double* q, kernels::Index ldq);

}  // namespace vxKilnBase::linpack
