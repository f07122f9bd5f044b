// The vector register of the instruction set that a kernel source is compiled for.
#pragma once

#include <cstddef>

namespace vxKilnBase::kernels::KILN_ISA {

inline constexpr std::ptrdiff_t kWidth = KILN_VECTOR_BYTES / 8;

typedef double Vector __attribute__((vector_size(KILN_VECTOR_BYTES)));
typedef double UnalignedVector
    __attribute__((vector_size(KILN_VECTOR_BYTES), aligned(8), may_alias));

static inline __attribute__((always_inline)) Vector load(const double* from) {
  return *reinterpret_cast<const UnalignedVector*>(from);
}

static inline __attribute__((always_inline)) void store(double* to, Vector value) {
  *reinterpret_cast<UnalignedVector*>(to) = value;
}

static inline __attribute__((always_inline)) Vector splat(double value) {
  return value - Vector{};
}

static inline __attribute__((always_inline)) double sumOf(Vector value) {
  double sum = 0.0;
  for (std::ptrdiff_t i = 0; i < kWidth; ++i) sum += value[i];
  return sum;
}

}  // namespace vxKilnBase::kernels::KILN_ISA
