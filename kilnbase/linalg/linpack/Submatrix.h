// A block of a column-major matrix.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::linpack {

using kernels::Index;

struct Submatrix {
  double* x;  // element (0, 0)
  Index ld;   // from one column to the next
  Index rows;
  Index columns;

  double* at(Index i, Index j) const { return x + (j * ld + i); }
  /// n columns from column j on, each from row i to the last row.
  Submatrix from(Index i, Index j, Index n) const { return {at(i, j), ld, rows - i, n}; }
};

}  // namespace vxKilnBase::linpack
