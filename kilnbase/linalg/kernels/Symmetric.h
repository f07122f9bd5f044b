// The elimination of a symmetric indefinite matrix in packed storage: the upper triangle, column by
// column, from the last column to the first. Multipliers are negated.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels {

struct SymmetricKernels {
  // Columns that `factorPanel` eliminates at most.
  static constexpr Index kPanelColumns = 64;
  // Order of the largest matrix for `factorSmall`.
  static constexpr Index kMostSmall = 32;

  // Eliminates the matrix of order n, at most kMostSmall. Writes kpvt and returns the info of
  // LINPACK's dspfa.
  Index (*factorSmall)(Index n, double* ap, int* kpvt);

  // Eliminates the last columns of the matrix of order n: `columns` or one more of them. The others
  // are not updated. At least kMostSmall columns are left. The rows of all multipliers are in the
  // order that the exchanges lead to. Writes kpvt and returns the order of what is left. `info` is
  // set as dspfa does when a pivot is 0.
  Index (*factorPanel)(Index n, Index columns, double* ap, int* kpvt, Index* info);

  // Carries what the columns from n on to before `end` eliminate into the leading matrix of order
  // n.
  void (*updateLeading)(Index n, Index end, double* ap, const int* kpvt);
};

}  // namespace vxKilnBase::kernels
