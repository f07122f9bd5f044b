// What dqrsl and the triangular solves do to one column, for many columns at once.
#pragma once

#include <cstddef>

#include <kilnbase/linalg/linpack/BlockReflector.h>

namespace vxKilnBase::linpack {

/// The Q of a factorization by `dqrdc`: the product of its first k transformations.
struct OrthogonalFactor {
  /// Bytes of `work` for each row of the factor: room for one block of transformations.
  static constexpr std::size_t kWorkPerRow = BlockReflector::kMostColumns * sizeof(double);
  /// Whether `work` makes this many columns faster.
  static bool needsWork(Index columns) { return columns >= kernels::tuning::kLeastBlockedColumns; }

  const double* x;  ///< The Householder vectors, n rows.
  Index ldx;
  Index n;
  Index k;  ///< At most n.
  const double* qraux;

  /// C := Qᵀ C for columns of n rows, by blocks of transformations that are formed in `work`.
  /// Without `work` (null), one column after the other.
  ///
  /// Source: R. Schreiber, C. Van Loan, A storage-efficient WY representation for products of
  /// Householder transformations, SIAM J. Sci. Stat. Comput. 10 (1989), 53-57.
  void multiplyTransposed(const Submatrix& c, double* work) const;
  /// C := Q C.
  void multiply(const Submatrix& c, double* work) const;

 private:
  void multiplyEach(const Submatrix& c, int job) const;
  Submatrix copyPanel(Index j, Index end, double* work) const;
};

/// X := R⁻¹ X. R is the upper triangle of order `x.rows`; no diagonal element is 0.
void solveUpper(const double* r, Index ldr, const Submatrix& x);
/// X := R⁻ᵀ X.
void solveUpperTransposed(const double* r, Index ldr, const Submatrix& x);

}  // namespace vxKilnBase::linpack
