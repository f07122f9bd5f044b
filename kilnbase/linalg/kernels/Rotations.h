// Plane rotations of the columns of a matrix, one at a time and in fused sweeps.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels {

// Sweeps that one call applies at most.
inline constexpr Index kFusedSweeps = tuning::kFusedSweeps;

// Sweeps over columns 0 to `rotations` of a matrix. A rotation is stored in a scaled form, which
// takes two multiplications an element and not four: rotation r of sweep i replaces columns x = r
// and y = r + 1 by
//
//     x + a y  and  y − b x     with a = data[2 i ld + r], b = data[(2 i + 1) ld + r].
//
// Rotations of a sweep are applied in the order of r, sweeps in the order of i. Then column j is
// multiplied by scale[j].
struct FusedSweeps {
  Index sweeps;     // at most kFusedSweeps
  Index rotations;  // of each sweep
  const double* data;
  Index ld;
  const double* scale;  // rotations + 1 factors
};

struct RotationKernels {
  // x and y become c x + s y and c y − s x.
  void (*rotate)(Index n, double* x, double* y, double c, double s);
  // Applies the sweeps to the m by (rotations + 1) matrix X.
  void (*applySweeps)(Index m, double* x, Index ldx, const FusedSweeps& sweeps);
};

}  // namespace vxKilnBase::kernels
