// Linear systems with a factored general matrix and many right-hand sides.
#pragma once

namespace vxKilnBase::linpack {

/// Solves A X = B, or with `job` not 0 Aᵀ X = B; X replaces B, which has n rows and `columns`
/// columns, column-major with leading dimension `ldb`.
///
/// The same as `dgesl` for each column, up to rounding, in less time. About 56 KiB of stack are
/// used.
void dgeslColumns(const double* a, int lda, int n, const int* ipvt, double* b, int ldb, int columns,
                  int job);

}  // namespace vxKilnBase::linpack
