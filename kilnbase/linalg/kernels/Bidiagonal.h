// One step of the reduction of a matrix to bidiagonal form.
//
// The reduction Uᵀ A V = B (Golub and Van Loan, Matrix Computations, 5.4) multiplies A from the
// left and from the right by reflections in turn:
//
//     A := (I − v vᵀ / v₀) A           makes column l a multiple of e₁,
//     A := A (I − z zᵀ / z₀)           makes row l, behind its first element, a multiple of e₁.
//
// The second one is A − w zᵀ / z₀ with w = A z. A step does the second one of the step before and
// then the first one, so that each element of A is read and written once a step:
//
//     C := A − w zᵀ / z₀,   A := C − v (Cᵀ v)ᵀ / v₀,   z := row 0 of A,   work += A z.
#pragma once

#include <cstdint>

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels {

struct BidiagonalStep {
  const double* v;
  double vFactor;   // 1 / v₀, or 0 for no reflection from the left
  const double* w;  // finite numbers, also where wFactor is 0
  double wFactor;   // 1 / z₀, or 0 for no reflection from the right
  double* z;        // in: the elements of z for the columns of A; out: row 0 of A
  double* work;     // += A z, with the new A and z
};

struct BidiagonalKernels {
  // The step for A of m rows and n columns; m > 0.
  void (*step)(Index m, Index n, double* a, Index lda, const BidiagonalStep& step);
  // Returns the bits of the largest |x[i]|. Bits of numbers that are not negative order like the
  // numbers; the bits of infinity and NaN are above those of all finite numbers.
  std::uint64_t (*largestMagnitude)(Index n, const double* x);
};

}  // namespace vxKilnBase::kernels
