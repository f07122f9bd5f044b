// The inner loops of Householder factorizations.
#pragma once

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::kernels {

// `count` Householder vectors and what is still to be added of them to each column of a matrix:
// column j lacks Σ vectors[i] factors[i * factorStride + j].
struct PendingReflections {
  const double* vectors;  // column-major
  Index ld;
  Index count;
  const double* factors;
  Index factorStride;
};

struct HouseholderKernels {
  // Adds what is pending to the n columns of C, which have m rows, and then vᵀ c to projections[j]
  // for each of them. The vectors start at the first of the m rows. The `above` elements before
  // each first row may be read, and written back as they are.
  void (*updateAndProject)(Index m, Index n, Index above, const PendingReflections& pending,
                           const double* v, double* c, Index ldc, double* projections);
  // Applies I - v vᵀ / v[0] to the n columns of C in the same way.
  void (*reflect)(Index m, Index n, Index above, const double* v, double* c, Index ldc);
  // Takes an element out of each of n vectors whose norms are known: norms[j] becomes that of the
  // rest, or -1 where too few digits of it would be left. references[j] is the norm when it was
  // last computed afresh. Norms of 0 stay. Returns whether any became -1. The `before` elements
  // before each first one may be read, and norms written back as they are.
  bool (*downdateNorms)(Index n, Index before, const double* removed, double* norms,
                        const double* references);
  // The first index of the largest element if that is greater than 0, otherwise 0. NaNs are passed
  // over.
  Index (*indexOfLargest)(Index n, const double* x);
};

}  // namespace vxKilnBase::kernels
