// Householder reduction to bidiagonal form.
#pragma once

#include <cstddef>

namespace vxKilnBase::linpack {

/// The arguments of `dsvdc` in the shape that its steps work on.
struct SingularProblem {
  using Index = std::ptrdiff_t;

  Index n;
  Index p;
  double* x;
  Index ldx;
  double* s;
  double* e;
  double* u = nullptr;  // null when no left vectors are wanted
  Index ldu;
  Index leftVectors = 0;  // columns of U
  double* v = nullptr;    // null when no right vectors are wanted
  Index ldv;
  double* work;
  double* triangle;  // of p (p + 1) elements; see dsvdc

  /// The order of the bidiagonal matrix.
  Index order() const { return p < n + 1 ? p : n + 1; }
};

/// Reduces X to the upper bidiagonal matrix B = Uᵀ X V of order min(n + 1, p), with diagonal `s`
/// and super-diagonal `e`, and forms U and V where they are wanted. X is destroyed; n and p are at
/// least 1.
///
/// Step l reflects the columns from l on from the left and the rows from l on from the right. See
/// kernels/Bidiagonal.h for the order in which this happens.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 11; G. W. Howell, J. W. Demmel, C. T. Fulton,
/// S. Hammarling, K. Marmol, Cache efficient bidiagonalization using BLAS 2.5 operators, ACM TOMS
/// 34 (2008).
void bidiagonalize(const SingularProblem& problem);

}  // namespace vxKilnBase::linpack
