// The elimination of a symmetric indefinite matrix in packed storage: the upper triangle, column by
// column, from the last column to the first. Multipliers are negated.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels {

struct SymmetricKernels {
  // Columns that `factorPanel` eliminates at most.
  static constexpr Index kPanelColumns = tuning::kSymmetricPanelColumns;
  // Order of the largest matrix for `factorSmall`.
  static constexpr Index kMostSmall = tuning::kMostSmallSymmetric;

  // Eliminates the matrix of order n, at most kMostSmall. Writes kpvt and returns the info of
  // LINPACK's dspfa.
  Index (*factorSmall)(Index n, double* ap, int* kpvt);

  // Eliminates `columns` of the last columns of the matrix of order n, or one more, and leaves the
  // others as they are: columns <= kPanelColumns, columns <= n - kMostSmall. The rows of all
  // multipliers are in the order after the last step. Writes kpvt, and puts the number of a step
  // whose pivot is 0 into `info`. Returns the order of what is left.
  Index (*factorPanel)(Index n, Index columns, double* ap, int* kpvt, Index* info);

  // Carries what the columns from n on to before `end` eliminate into the leading matrix of order
  // n.
  void (*updateLeading)(Index n, Index end, double* ap, const int* kpvt);
};

}  // namespace vxKilnBase::kernels
