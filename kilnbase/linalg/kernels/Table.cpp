// The kernels of one instruction set.

#include <kilnbase/linalg/kernels/Kernels.h>

#define KILN_TEXT_OF(name) #name
#define KILN_TEXT(name) KILN_TEXT_OF(name)

namespace vxKilnBase::kernels::KILN_ISA {

extern const BidiagonalKernels bidiagonalKernels;
extern const CholeskyKernels choleskyKernels;
extern const DenseKernels denseKernels;
extern const HouseholderKernels householderKernels;
extern const InverseKernels inverseKernels;
extern const LuKernels luKernels;
extern const RotationKernels rotationKernels;
extern const SymmetricKernels symmetricKernels;
extern const TridiagonalKernels tridiagonalKernels;
extern const ElementKernels<double> doubleKernels;
extern const ElementKernels<int> intKernels;
extern const ElementKernels<signed char> scharKernels;

extern const Kernels kernels = {
    .name = KILN_TEXT(KILN_ISA),
    .vectorDoubles = KILN_VECTOR_BYTES / 8,
    .bidiagonal = &bidiagonalKernels,
    .cholesky = &choleskyKernels,
    .dense = &denseKernels,
    .householder = &householderKernels,
    .inverse = &inverseKernels,
    .lu = &luKernels,
    .rotations = &rotationKernels,
    .symmetric = &symmetricKernels,
    .tridiagonal = &tridiagonalKernels,
    .doubles = &doubleKernels,
    .ints = &intKernels,
    .schars = &scharKernels,
};

}  // namespace vxKilnBase::kernels::KILN_ISA
