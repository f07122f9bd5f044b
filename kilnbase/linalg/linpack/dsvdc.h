// Singular value decomposition.
#pragma once

namespace vxKilnBase::linpack {

/// Computes the singular value decomposition X = U S Vᵀ of the n by p matrix X, which is destroyed.
///
/// `s` (min(n + 1, p) elements) receives the singular values, descending; `e` (p elements) the
/// super-diagonal, ordinarily zero. The tens digit of `job` asks for left vectors (0 none, 1 all n
/// in the n by n U, 2 or more the first min(n, p)), the ones digit for right vectors in the p by p
/// V. `work` has n elements. Returns 0, or the number of the last singular value that was not
/// found: those after it are correct.
///
/// A matrix with an infinite or NaN element has no decomposition: min(n, p) is returned and all
/// results are NaN. The magnitude of the others does not matter. The iteration may take 30 steps a
/// value, which the values share, and is less strict with one that has taken 30.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 11.
int dsvdc(double* x, int ldx, int n, int p, double* s, double* e, double* u, int ldu, double* v,
          int ldv, double* work, int job);

}  // namespace vxKilnBase::linpack
