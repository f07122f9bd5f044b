// Eigenvalues and eigenvectors of a symmetric matrix.
#pragma once

#include <kilnbase/linalg/linpack/tridiagonalize.h>

namespace vxKilnBase::linpack {

/// What became of the eigenvalues.
enum class EigenOutcome { kFound, kNotFinite, kNotConverged };

/// Computes A = V L Vᵀ, where V is orthogonal and L diagonal, for the matrix of `problem`, which is
/// destroyed.
///
/// `problem.d` receives the eigenvalues in ascending order. `vectors`, n by n unless null, receives
/// V: column j belongs to value j. In each column the first element of at least kSignificant times
/// the largest magnitude is positive. When the outcome is not kFound, all results are NaN.
///
/// An infinite or NaN element gives kNotFinite. Finite elements may have any magnitude as long as
/// the eigenvalues are in range. The iteration takes at most 30 steps a value on average; when one
/// value takes more than 30, the test for convergence becomes less strict.
///
/// Source: R. S. Martin, J. H. Wilkinson, The implicit QL algorithm, Numer. Math. 12 (1968),
/// 377-383, from the top down; A. Dubrulle, A short note on the implicit QL algorithm for symmetric
/// tridiagonal matrices, Numer. Math. 15 (1970), 450.
EigenOutcome symmetricEigen(const SymmetricProblem& problem, double* vectors, kernels::Index ld);

/// Elements of an eigenvector from this share of the largest magnitude on may decide its sign. The
/// share is below 1 by more than rounding errors, which so do not decide among equal elements.
inline constexpr double kSignificant = 0.9;

}  // namespace vxKilnBase::linpack
