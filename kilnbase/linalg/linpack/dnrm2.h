// Euclidean norm without destructive overflow or underflow.
#pragma once

#include <cstddef>

namespace vxKilnBase::linpack {

/// The Euclidean norm of the n elements `increment` apart from `x` on; 0 when n is 0.
///
/// Squares that are neither tiny nor huge are summed as they are; otherwise the sum is scaled, with
/// the cut-offs 8.232e-11 and 1.304e+19. An infinite or NaN element gives a NaN or infinite norm.
///
/// Source: C. L. Lawson, R. J. Hanson, D. R. Kincaid, F. T. Krogh, Basic Linear Algebra Subprograms
/// for Fortran Usage, ACM TOMS 5 (1979).
double dnrm2(std::ptrdiff_t n, const double* x, std::ptrdiff_t increment);

}  // namespace vxKilnBase::linpack
