// Singular value decomposition.
#pragma once

#include <cstddef>

namespace vxKilnBase::linpack {

/// Computes the singular value decomposition X = U S Vᵀ of the n by p matrix X, which is destroyed.
///
/// `s` (min(n + 1, p) elements) receives the singular values in descending order, `e` (p elements)
/// the super-diagonal that the iteration leaves, which is 0 on success. The tens digit of `job`
/// asks for left vectors: 0 for none, 1 for all n in the n by n matrix U, 2 or more for the first
/// min(n, p). The ones digit, when not 0, asks for the right vectors in the p by p matrix V. `work`
/// has n elements. Returns 0, or the number k of singular values that were not found: the first k
/// elements of `s` are not singular values, the later ones are.
///
/// A matrix with an infinite or NaN element has no decomposition: the routine returns min(n, p) and
/// all results are NaN. Finite elements may have any magnitude. The iteration takes at most 30
/// steps a singular value on average; when one value takes more than 30, the test for convergence
/// becomes less strict.
///
/// Where isTall(n, p), the columns of X are sorted by their norms and X is reduced to triangular
/// form first, in `triangle` of p (p + 1) elements, which is not used otherwise. This takes less
/// time, and spares least squares solved by the result most of what large residuals and norms of
/// rows that differ cost.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 11; T. F. Chan, An improved algorithm for
/// computing the singular value decomposition, ACM Trans. Math. Softw. 8 (1982), 72-83.
int dsvdc(double* x, int ldx, int n, int p, double* s, double* e, double* u, int ldu, double* v,
          int ldv, double* work, int job, double* triangle);

/// Whether rows are at least 1.6 times the columns.
constexpr bool isTall(std::ptrdiff_t n, std::ptrdiff_t p) {
  return 5 * n >= 8 * p && p > 0;
}

}  // namespace vxKilnBase::linpack
