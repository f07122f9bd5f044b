// Gaussian elimination with partial pivoting in a few columns, and the triangular systems that
// carry the elimination to the other columns. Multipliers are negated: a step adds them times its
// row.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels {

struct LuKernels {
  // Columns that `factorPanel` handles at most.
  static constexpr Index kPanelColumns = tuning::kLuPanelColumns;

  // Eliminates the n columns of A, which has m >= n rows, and writes to pivots[k] the row that
  // changed places with row k in step k: the first one of the largest absolute value, or k if that
  // is 0 or element k a NaN. Rows of the multipliers of earlier steps stay. A step with pivot 0
  // does nothing. Returns the number of the last one from 1, or 0.
  Index (*factorPanel)(Index m, Index n, double* a, Index lda, int* pivots);

  // X := (I - M)⁻¹ X; M is strictly lower triangular of order k, a multiple of 8, of which nothing
  // else is read, and X is k by n.
  void (*solveMultipliers)(Index k, Index n, const double* m, Index ldm, double* x, Index ldx);
};

}  // namespace vxKilnBase::kernels
