#include <kilnbase/linalg/linpack/dspsl.h>
#include <kilnbase/linalg/linpack/dspslColumns.h>

namespace vxKilnBase::linpack {

void dspsl(const double* ap, int n, const int* kpvt, double* b) {
  dspslColumns(ap, n, kpvt, b, n, 1);
}

}  // namespace vxKilnBase::linpack
