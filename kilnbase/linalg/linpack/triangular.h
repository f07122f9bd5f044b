// Systems with an upper triangular matrix.
#pragma once

#include <cstddef>

#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::linpack {

/// x := R⁻¹ x for the upper triangle R of order k, none of whose diagonal elements is 0.
inline void solveUpper(const double* r, std::ptrdiff_t ldr, std::ptrdiff_t k, double* x) {
  const auto axpy = kernels::active().dense->axpy;
  for (std::ptrdiff_t j = k; j-- > 0;) {
    x[j] /= r[j * ldr + j];
    axpy(j, -x[j], r + j * ldr, x);
  }
}

/// x := R⁻ᵀ x.
inline void solveUpperTransposed(const double* r, std::ptrdiff_t ldr, std::ptrdiff_t k, double* x) {
  const auto dot = kernels::active().dense->dot;
  for (std::ptrdiff_t j = 0; j < k; ++j) x[j] = (x[j] - dot(j, r + j * ldr, x)) / r[j * ldr + j];
}

}  // namespace vxKilnBase::linpack
