// Systems with an upper triangular matrix.
#pragma once

#include <cstddef>

#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::linpack {

/// x := R⁻¹ x. R is upper triangular, of order k, with no 0 on its diagonal.
inline void solveUpper(const double* r, std::ptrdiff_t ldr, std::ptrdiff_t k, double* x) {
  const auto axpy = kernels::active().dense->axpy;
  for (std::ptrdiff_t j = k; j-- > 0;) {
    x[j] /= r[j * ldr + j];
    axpy(j, -x[j], r + j * ldr, x);
  }
}

/// x := R⁻ᵀ x, for R as above.
inline void solveUpperTransposed(const double* r, std::ptrdiff_t ldr, std::ptrdiff_t k, double* x) {
  const auto dot = kernels::active().dense->dot;
  for (std::ptrdiff_t j = 0; j < k; ++j) x[j] = (x[j] - dot(j, r + j * ldr, x)) / r[j * ldr + j];
}

}  // namespace vxKilnBase::linpack
