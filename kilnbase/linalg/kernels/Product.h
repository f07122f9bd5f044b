// Members of the table `denseKernels`: matrix times matrix, and the triangular solve that stands on
// it. DenseKernels says what they do.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels::KILN_ISA {

void gemm(Index m, Index n, Index k, double alpha, const MatrixView& a, const MatrixView& b,
          double* c, Index ldc);
void product(Index m, Index n, Index k, const MatrixView& a, const MatrixView& b, double* c,
             Index ldc, double* scratch);
void syrkUpper(Index n, Index k, double alpha, const MatrixView& a, const MatrixView& b, double* c,
               Index ldc);
void solveLower(Index k, Index n, const MatrixView& l, double* x, Index ldx);

}  // namespace vxKilnBase::kernels::KILN_ISA
