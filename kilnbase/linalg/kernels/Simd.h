// The register of doubles of the instruction set that a kernel source is compiled for.
#pragma once

#include <cstddef>

namespace vxKilnBase::kernels::KILN_ISA {

inline constexpr std::ptrdiff_t kWidth = KILN_VECTOR_BYTES / 8;

typedef double Vector __attribute__((vector_size(KILN_VECTOR_BYTES)));
typedef long long Lanes __attribute__((vector_size(KILN_VECTOR_BYTES)));
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

// The sum of the lanes: the two halves are added, then the halves of the result, and so on.
template <int distance = kWidth / 2>
static inline __attribute__((always_inline)) double sumOf(Vector value) {
  Lanes partner;
  for (int i = 0; i < kWidth; ++i) partner[i] = i ^ distance;
  value += __builtin_shuffle(value, partner);
  if constexpr (distance > 1) return sumOf<distance / 2>(value);
  return value[0];
}

// Lanes 0 to first - 1 of `other` and the later lanes of `kept`.
static inline __attribute__((always_inline)) Vector lanesFrom(std::ptrdiff_t first, Vector kept,
                                                              Vector other) {
  Lanes lane;
  for (std::ptrdiff_t i = 0; i < kWidth; ++i) lane[i] = i;
  return lane >= first ? kept : other;
}

// One step of a transposition: where the lanes are cut into blocks of `distance` lanes, the odd
// blocks of `a` change places with the even blocks of `b`.
template <int distance>
static inline __attribute__((always_inline)) void exchangeBlocks(Vector& a, Vector& b) {
  Lanes low, high;
  for (int i = 0; i < kWidth; ++i) {
    const bool odd = (i & distance) != 0;
    low[i] = odd ? kWidth + (i ^ distance) : i;
    high[i] = odd ? kWidth + i : i ^ distance;
  }
  const Vector oldA = a;
  a = __builtin_shuffle(oldA, b, low);
  b = __builtin_shuffle(oldA, b, high);
}

// Transposes the kWidth by kWidth matrix whose columns are `v`.
template <int distance = kWidth / 2>
static inline __attribute__((always_inline)) void transpose(Vector* v) {
  for (int i = 0; i < kWidth; ++i) {
    if ((i & distance) == 0) exchangeBlocks<distance>(v[i], v[i + distance]);
  }
  if constexpr (distance > 1) transpose<distance / 2>(v);
}

// Lane i of the result is the sum of the lanes of v[i]. `v` is overwritten.
template <int distance = kWidth / 2>
static inline __attribute__((always_inline)) Vector sumsOf(Vector* v) {
  for (int i = 0; i < distance; ++i) {
    exchangeBlocks<distance>(v[i], v[i + distance]);
    v[i] += v[i + distance];
  }
  if constexpr (distance > 1) return sumsOf<distance / 2>(v);
  return v[0];
}

}  // namespace vxKilnBase::kernels::KILN_ISA
