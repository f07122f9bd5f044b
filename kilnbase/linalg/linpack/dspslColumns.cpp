#include <cstddef>

#include <kilnbase/linalg/linpack/dspsl.h>
#include <kilnbase/linalg/linpack/dspslColumns.h>

namespace vxKilnBase::linpack {

void dspslColumns(const double* ap, int n, const int* kpvt, double* b, int ldb, int columns) {
  for (std::ptrdiff_t j = 0; j < columns; ++j) dspsl(ap, n, kpvt, b + j * ldb);
}

}  // namespace vxKilnBase::linpack
