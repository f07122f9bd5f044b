// Linear systems with a factored symmetric matrix and many right-hand sides.
#pragma once

namespace vxKilnBase::linpack {

/// Solves A X = B; X replaces B, which has n rows and `columns` columns, column-major with leading
/// dimension `ldb`.
///
/// The same as `dspsl` for each column, up to rounding, in less time.
void dspslColumns(const double* ap, int n, const int* kpvt, double* b, int ldb, int columns);

}  // namespace vxKilnBase::linpack
