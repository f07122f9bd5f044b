// Householder vectors in the form that the decompositions share.
#pragma once

#include <cstddef>

namespace vxKilnBase::linpack {

/// Turns x into the vector v of the reflection I - v vᵀ / v₀ that maps x onto a multiple of its
/// first unit vector, and returns that multiple, positive where x₀ is negative and negative
/// otherwise.
///
/// v₀ lies between 1 and 2. A zero vector stays and gives 0: where v₀ is 0 there is no reflection.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 9.
double makeReflector(std::ptrdiff_t n, double* x);

/// Replaces the reflection vectors in the lower trapezoid of Q by the first `columns` columns of
/// the orthogonal n by n matrix H₀ H₁ ... that their product is.
///
/// Vector l stands in rows l to n - 1 of column l; `reflectors` <= min(n, columns). Nothing else of
/// Q is read.
///
/// Source: R. Schreiber, C. Van Loan, A storage-efficient WY representation for products of
/// Householder transformations, SIAM J. Sci. Stat. Comput. 10 (1989).
void formOrthogonal(std::ptrdiff_t n, std::ptrdiff_t columns, std::ptrdiff_t reflectors, double* q,
                    std::ptrdiff_t ldq);

}  // namespace vxKilnBase::linpack
