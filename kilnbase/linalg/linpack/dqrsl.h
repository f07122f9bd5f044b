// Applies the output of dqrdc: transformations, coefficients, residuals, fitted values.
#pragma once

namespace vxKilnBase::linpack {

/// Computes from the first k columns of a factorization by `dqrdc` what `job` asks for.
///
/// The decimal digits of `job` (abcde) choose: a: Q y in `qy`; b to e: Qᵀ y in `qty`, where b alone
/// stops; c: the coefficients (k elements) in `b`; d: the residual in `rsd`; e: the fitted values
/// in `xb`. `y` and all results but `b` have n elements. Results that are not asked for may be
/// null; `qty` may be `y`, and one of the others may be `qty`.
///
/// Returns 0, or the index from 1 of the first zero on the diagonal of R when coefficients were
/// asked for; then they are not solved for and `b` is the leading part of Qᵀ y.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 9.
int dqrsl(const double* x, int ldx, int n, int k, const double* qraux, const double* y, double* qy,
          double* qty, double* b, double* rsd, double* xb, int job);

}  // namespace vxKilnBase::linpack
