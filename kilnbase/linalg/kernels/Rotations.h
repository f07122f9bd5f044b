// Plane rotations of matrix columns, one at a time and in fused sweeps.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels {

// Sweeps that a fused application handles at once.
inline constexpr Index kFusedSweeps = 4;

// Up to kFusedSweeps sweeps over neighbouring columns 0 to `rotations` of a matrix, in a scaled
// form that takes two multiplications an element instead of four. Rotation r of sweep i replaces
// columns x = r and y = r + 1 by x + a y and y - b x with a = data[2 i ld + r] and b = data[(2 i +
// 1) ld + r]; when all are done, column j is multiplied by scale[j].
struct FusedSweeps {
  Index sweeps;
  Index rotations;  // of each sweep
  const double* data;
  Index ld;
  const double* scale;  // rotations + 1 factors
};

struct RotationKernels {
  // x and y become c x + s y and c y - s x.
  void (*rotate)(Index n, double* x, double* y, double c, double s);
  // Applies sweeps to the columns of the m by (rotations + 1) matrix X.
  void (*applySweeps)(Index m, double* x, Index ldx, const FusedSweeps& rotations);
};

}  // namespace vxKilnBase::kernels
