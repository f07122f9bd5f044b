// Euclidean norm without destructive overflow or underflow.
#pragma once

#include <cstddef>

namespace vxKilnBase::linpack {

/// The Euclidean norm of the elements x[0], x[increment], ..., x[(n - 1) increment]; 0 when n is 0.
///
/// A sum of squares that neither overflows nor underflows is taken as it is. Otherwise elements
/// below 8.232e-11 and above 1.304e+19 / n are scaled. An infinite or NaN element gives an infinite
/// or NaN norm.
///
/// Source: C. L. Lawson, R. J. Hanson, D. R. Kincaid, F. T. Krogh, Basic Linear Algebra Subprograms
/// for Fortran Usage, ACM TOMS 5 (1979).
double dnrm2(std::ptrdiff_t n, const double* x, std::ptrdiff_t increment);

}  // namespace vxKilnBase::linpack
