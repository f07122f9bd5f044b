// Householder reflections of the columns of a matrix, and the norms that pivoting needs.
//
// A vector v with vᵀv = 2 v₀ makes the reflection H = I − v vᵀ / v₀ (in Golub and Van Loan, Matrix
// Computations, 5.1, H = I − β v vᵀ with β = 2 / vᵀv = 1 / v₀). Applied to a matrix C it gives
//
//     H C = C + v fᵀ,   f = −p / v₀,   p = Cᵀ v.
//
// p holds the projections of the columns of C on v, f the factors of the reflection. A reflection
// is pending while v and f are known and v fᵀ has not been added to C.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels {

// The product V F that a matrix C with `count` pending reflections lacks.
struct PendingReflections {
  const double* vectors;  // V, column-major, with as many rows as C
  Index ld;               // of V
  Index count;            // columns of V and rows of F
  const double* factors;  // F; element (k, j) is factors[k * factorStride + j]
  Index factorStride;
};

// C has m rows and n columns. `above` says how many elements in front of c[0] belong to its column,
// and likewise in the other columns: the kernels may read these elements and write them back
// unchanged.
struct HouseholderKernels {
  // C += V F, then projections += Cᵀ v.
  void (*updateAndProject)(Index m, Index n, Index above, const PendingReflections& pending,
                           const double* v, double* c, Index ldc, double* projections);
  // C := (I − v vᵀ / v₀) C.
  void (*reflect)(Index m, Index n, Index above, const double* v, double* c, Index ldc);
  // Takes one element out of each of n vectors: norms[j] := √(norms[j]² − removed[j]²), or −1 where
  // rounding would leave too few digits. references[j] is the norm when it was last computed from
  // the elements. A norm of 0 stays 0. Returns whether any norm became −1. The kernel may read the
  // `before` elements in front of each array, and write those of `norms` back unchanged.
  bool (*downdateNorms)(Index n, Index before, const double* removed, double* norms,
                        const double* references);
  // Returns the first index of the largest element if that element is greater than 0, otherwise 0.
  // NaNs are ignored.
  Index (*indexOfLargest)(Index n, const double* x);

  // Rows and columns of the largest matrix that `factorSmall` may factor.
  static constexpr Index kMostSmall = tuning::kSmallQrRegisters * tuning::kWidestRegister;

  // Factors A, whose free columns are freeBegin to freeEnd - 1, as LINPACK's dqrdc does. order[j],
  // j < n, is the column of A that stands at place j afterwards. Returns false, and leaves A and
  // `order` as they were, where A is too large or sums of squares may underflow or overflow.
  bool (*factorSmall)(Index m, Index n, Index freeBegin, Index freeEnd, double* a, Index lda,
                      double* qraux, int* order);
};

}  // namespace vxKilnBase::kernels
