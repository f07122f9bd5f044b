// What dqrsl and the triangular solves do to one column, for many columns at once.
#pragma once

#include <cstddef>

#include <kilnbase/linalg/linpack/BlockReflector.h>

namespace vxKilnBase::linpack {

/// Fewer columns than this are multiplied by Q one after the other. Forming a block of w
/// transformations costs as much as applying it to about w / 4 columns, w = 24, and regains that
/// from the fifth to the eighth column on (n = 32 to 500, Xeon with AVX-512; bench: "QR, right-hand
/// sides").
constexpr Index kLeastBlockedColumns = 8;

/// The Q of a factorization by `dqrdc`: the product of its first k transformations.
struct OrthogonalFactor {
  /// Bytes of `work` for each row of the factor: room for one block of transformations.
  static constexpr std::size_t kWorkPerRow = BlockReflector::kMostColumns * sizeof(double);
  /// Whether `work` makes this many columns faster.
  static bool needsWork(Index columns) { return columns >= kLeastBlockedColumns; }

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
  void multiplyTransposed(const Columns& c, double* work) const;
  /// C := Q C.
  void multiply(const Columns& c, double* work) const;

 private:
  void multiplyEach(const Columns& c, int job) const;
  Columns copyPanel(Index j, Index end, double* work) const;
};

/// X := R⁻¹ X. R is the upper triangle of order `x.rows`; no diagonal element is 0.
void solveUpper(const double* r, Index ldr, const Columns& x);
/// X := R⁻ᵀ X.
void solveUpperTransposed(const double* r, Index ldr, const Columns& x);

}  // namespace vxKilnBase::linpack
