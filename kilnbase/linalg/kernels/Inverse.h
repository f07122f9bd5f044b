// The inverse of a 4 by 4 matrix.
#pragma once

namespace vxKilnBase::kernels {

struct InverseKernels {
  // Inverts the row-major matrix `from` by Gauss-Jordan elimination into `to`, which may be `from`.
  // The pivot of a column is the element of greatest square among the rows from the diagonal down,
  // of equal ones the uppermost. Products are rounded before they are subtracted, whatever the
  // processor has, so that all sets of kernels give the same digits.
  void (*invert4x4)(const double* from, double* to);
};

}  // namespace vxKilnBase::kernels
