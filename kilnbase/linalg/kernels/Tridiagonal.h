// One step of the reduction of a symmetric matrix to tridiagonal form.
//
// The reduction Qᵀ A Q = T (Golub and Van Loan, Matrix Computations, 8.3) applies one reflection
// H = I − x xᵀ / x₀ from both sides for each column:
//
//     A := H A H = A − x wᵀ − w xᵀ,   w = y / x₀ − (xᵀy / 2 x₀²) x,   y = A x.
//
// A step subtracts the sum of the step before, v wᵀ + w vᵀ, and multiplies by the next x, so that
// each element of A is read and written once a step:
//
//     A := A − v wᵀ − w vᵀ,   y += A x.
//
// The lower triangle of A is stored. Element (i, j) is a[i + j * lda]. The vectors have an element
// for each row of A.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels {

struct TridiagonalStep {
  const double* v;
  const double* w;
  const double* x;
  double* y;
};

struct TridiagonalKernels {
  // Rows come in groups of this many, so that no instruction set has a rest: `lda` is a multiple of
  // kRowGroup, and elements of A, v, w and x behind the last row are 0.
  static constexpr Index kRowGroup = tuning::kWidestRegister;

  // The step for rows and columns `begin` to `end` - 1 of A. Elements of the vectors before `begin`
  // are finite numbers that count for nothing, and `y` keeps them. Elements of A above the diagonal
  // may change.
  void (*step)(Index begin, Index end, double* a, Index lda, const TridiagonalStep& step);
};

}  // namespace vxKilnBase::kernels
