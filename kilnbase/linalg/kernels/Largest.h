// The search for the first largest absolute value.
#pragma once

#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

static inline __attribute__((always_inline)) Lanes lanes() {
  Lanes lane;
  for (std::ptrdiff_t i = 0; i < kWidth; ++i) lane[i] = i;
  return lane;
}

static inline __attribute__((always_inline)) Lanes splatLanes(std::ptrdiff_t value) {
  return value - Lanes{};
}

static inline __attribute__((always_inline)) Vector absolute(Vector x) {
  return reinterpret_cast<Vector>(reinterpret_cast<Lanes>(x) & 0x7fffffffffffffff);
}

namespace {

// The largest number in each lane so far, and its first row. Without a number greater than 0 the
// row is the default one, so that zeros and NaNs are passed over.
struct Largest {
  Vector value;
  Lanes row;

  static inline __attribute__((always_inline)) Largest none(std::ptrdiff_t defaultRow) {
    return {Vector{}, splatLanes(defaultRow)};
  }

  // `rows` are greater than all before.
  inline __attribute__((always_inline)) void add(Vector candidates, Lanes rows) {
    const Lanes larger = candidates > value;
    value = larger ? candidates : value;
    row = larger ? rows : row;
  }

  // Of equal numbers the one with the smaller row counts.
  inline __attribute__((always_inline)) void add(const Largest& other) {
    const Lanes better = (other.value > value) | ((other.value == value) & (other.row < row));
    value = better ? other.value : value;
    row = better ? other.row : row;
  }

  // Puts the largest of all lanes, and its first row, into each lane.
  template <int distance = kWidth / 2>
  inline __attribute__((always_inline)) void join() {
    Lanes partner;
    for (int i = 0; i < kWidth; ++i) partner[i] = i ^ distance;
    add({__builtin_shuffle(value, partner), __builtin_shuffle(row, partner)});
    if constexpr (distance > 1) join<distance / 2>();
  }
};

// The largest of the lanes, none of which is a NaN.
template <int distance = kWidth / 2>
inline __attribute__((always_inline)) double largestOf(Vector x) {
  Lanes partner;
  for (int i = 0; i < kWidth; ++i) partner[i] = i ^ distance;
  const Vector others = __builtin_shuffle(x, partner);
  x = others > x ? others : x;
  if constexpr (distance > 1) return largestOf<distance / 2>(x);
  return x[0];
}

}  // namespace

}  // namespace vxKilnBase::kernels::KILN_ISA
