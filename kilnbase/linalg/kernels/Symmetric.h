// The elimination of a symmetric indefinite matrix in packed storage: the upper triangle, column by
// column, from the last column to the first. Multipliers are negated.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels {

struct SymmetricKernels {
  // Columns that `factorPanel` eliminates at most. For n = 1000 they are 256 KB, an eighth of the
  // second-level cache of a Xeon of family 6, model 207. There 24 and 48 took up to 10% longer and
  // 64 up to 40% (kiln_bench --filter symmetric --sizes 100,200,500).
  static constexpr Index kPanelColumns = 32;
  // Order of the largest matrix for `factorSmall`, whose square, 8 KiB, stays in the first-level
  // cache.
  static constexpr Index kMostSmall = 32;

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
