#include <cstddef>

#include <kilnbase/linalg/linpack/dgesl.h>
#include <kilnbase/linalg/linpack/dgeslColumns.h>

namespace vxKilnBase::linpack {

void dgeslColumns(const double* a, int lda, int n, const int* ipvt, double* b, int ldb, int columns,
                  int job) {
  for (std::ptrdiff_t j = 0; j < columns; ++j) dgesl(a, lda, n, ipvt, b + j * ldb, job);
}

}  // namespace vxKilnBase::linpack
