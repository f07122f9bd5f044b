// Members of the table `denseKernels`: matrix times vector. DenseKernels says what they do.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels::KILN_ISA {

void gemv(Index m, Index n, double alpha, const double* a, Index lda, const double* x, double* y);
void gemvTransposed(Index m, Index n, double alpha, const double* a, Index lda, const double* x,
                    double* y);
void productVector(Index m, Index n, const double* a, Index lda, const double* x, double* y);
void productVectorTransposed(Index m, Index n, const double* a, Index lda, const double* x,
                             double* y);

}  // namespace vxKilnBase::kernels::KILN_ISA
