// Householder transformations of the bidiagonal reduction.
#pragma once

#include <cstdint>

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels {

// One step of the bidiagonal reduction of an m by n matrix: the row transformation that the step
// before left to do, I - w eᵀ / e₀ on every column, then the column transformation I - v vᵀ / v₀.
struct BidiagonalStep {
  const double* v;
  double vFactor;   // 1 / v₀; 0 for no column transformation
  const double* w;  // finite even where there is no row transformation
  double wFactor;   // 1 / e₀; 0 for no row transformation
  double* e;        // in: the row vector; out: the first row of the new matrix
  double* work;     // += the new matrix times its first row
};

struct BidiagonalKernels {
  void (*step)(Index m, Index n, double* x, Index ldx, const BidiagonalStep& step);
  // X -= factor v vᵀ X; X is m by n.
  void (*reflect)(Index m, Index n, const double* v, double factor, double* x, Index ldx);
  // Returns the bits of the largest |x[i]|, which order like the numbers; above those of the
  // largest double stand infinity and NaN.
  std::uint64_t (*largestMagnitude)(Index n, const double* x);
};

}  // namespace vxKilnBase::kernels
