// Products of vectors and matrices, from which the dense factorizations are built. All vectors have
// stride 1. All sizes may be 0.
#pragma once

#include <cstddef>

#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels {

using Index = std::ptrdiff_t;

// A matrix that is only read: element (i, j) is data[i * rowStride + j * columnStride].
struct MatrixView {
  const double* data;
  Index rowStride;
  Index columnStride;
};

// Doubles of scratch that a large product takes, whatever the instruction set.
inline constexpr Index kProductScratch = tuning::kBlockScratch<tuning::kWidestRegister>;

struct DenseKernels {
  // Returns Σ x[i] y[i].
  double (*dot)(Index n, const double* x, const double* y);
  // y += alpha x.
  void (*axpy)(Index n, double alpha, const double* x, double* y);
  // x *= alpha.
  void (*scale)(Index n, double alpha, double* x);
  // y += alpha A x; A is m by n, column-major.
  void (*gemv)(Index m, Index n, double alpha, const double* a, Index lda, const double* x,
               double* y);
  // y += alpha Aᵀ x; A is m by n, column-major, x has m elements and y n.
  void (*gemvTransposed)(Index m, Index n, double alpha, const double* a, Index lda,
                         const double* x, double* y);
  // C += alpha A B; A is m by k, B is k by n, C is m by n, column-major with leading dimension ldc.
  // C overlaps neither A nor B.
  void (*gemm)(Index m, Index n, Index k, double alpha, const MatrixView& a, const MatrixView& b,
               double* c, Index ldc);
  // y := A x, y := Aᵀ x and C := A B, for operands as above. Old values of y and C are not read.
  // `scratch` has kProductScratch doubles, or is null for a product that takes the stack alone.
  void (*productVector)(Index m, Index n, const double* a, Index lda, const double* x, double* y);
  void (*productVectorTransposed)(Index m, Index n, const double* a, Index lda, const double* x,
                                  double* y);
  void (*product)(Index m, Index n, Index k, const MatrixView& a, const MatrixView& b, double* c,
                  Index ldc, double* scratch);
  // C += alpha A B on and above the diagonal of C, which is n by n. Elements below the diagonal are
  // neither read nor written.
  void (*syrkUpper)(Index n, Index k, double alpha, const MatrixView& a, const MatrixView& b,
                    double* c, Index ldc);
  // X := L⁻¹ X; L is k by k, lower triangular, and X k by n, column-major.
  void (*solveLower)(Index k, Index n, const MatrixView& l, double* x, Index ldx);
};

}  // namespace vxKilnBase::kernels
