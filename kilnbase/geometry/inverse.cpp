// Apart from the other members because static programs that call this code hold all kernels.

#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/linalg/kernels/Kernels.h>

T4dDblMatrix& T4dDblMatrix::invertIt() {
  return *this = inverse();
}

T4dDblMatrix T4dDblMatrix::inverse() const {
  T4dDblMatrix inverted{Unset()};
  vxKilnBase::kernels::active().inverse->invert4x4(element_[0], inverted.element_[0]);
  return inverted;
}
