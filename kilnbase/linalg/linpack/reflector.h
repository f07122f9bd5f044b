// Householder vectors in the form that the decompositions share.
//
// A vector v makes the reflection H = I − v vᵀ / v₀, which is orthogonal when vᵀv = 2 v₀. Where v
// is 0 there is no reflection: H = I.
#pragma once

#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::linpack {

/// Replaces x by the vector v with H x = ρ e₁, and returns ρ = −‖x‖ where x₀ >= 0, otherwise ‖x‖.
///
/// v = −x / ρ + e₁, so that 1 <= v₀ <= 2. A zero vector stays and gives 0.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 9.
double makeReflector(std::ptrdiff_t n, double* x);

/// y := H y for v = (first, rest), where first is not 0; y has as many elements as v.
///
/// For one vector, when v₀ is stored apart from the rest of v. Matrices go through the kernel
/// `HouseholderKernels::reflect`.
inline void reflectVector(std::ptrdiff_t n, double first, const double* rest, double* y) {
  const kernels::DenseKernels& dense = *kernels::active().dense;
  const double projection = first * y[0] + dense.dot(n - 1, rest, y + 1);
  y[0] -= projection;
  dense.axpy(n - 1, -projection / first, rest, y + 1);
}

/// Replaces the reflection vectors in the lower trapezoid of Q by the first `columns` columns of
/// the orthogonal n by n matrix H₀ H₁ ... .
///
/// Vector l stands in rows l to n - 1 of column l; `reflectors` <= min(n, columns). The result does
/// not depend on other elements of Q.
///
/// Source: R. Schreiber, C. Van Loan, A storage-efficient WY representation for products of
/// Householder transformations, SIAM J. Sci. Stat. Comput. 10 (1989), 53-57.
void formOrthogonal(std::ptrdiff_t n, std::ptrdiff_t columns, std::ptrdiff_t reflectors, double* q,
                    std::ptrdiff_t ldq);

}  // namespace vxKilnBase::linpack
