// Arithmetic of vectors, element by element: short ones are worked on where they stand, longer ones
// by the kernels.
#pragma once

#include <concepts>
#include <cstddef>

#include <kilnbase/export.h>
#include <kilnbase/linalg/RWBlock.h>

namespace vxKilnBase {

template <class T>
class Vec;

}  // namespace vxKilnBase

namespace vxKilnBase::detail {

/// Whether `length` elements are too few for the call of a kernel to pay. Two 512-bit registers
/// hold 16 doubles. Measured on a Xeon with AVX-512 by the lines "vector ... 10" of kiln_bench.
template <class T>
constexpr bool isShort(unsigned length) {
  return std::same_as<T, double> && length < 16;
}

enum class Operation { kAdd, kSubtract, kMultiply, kDivide };

/// The elements of a vector, or one number that counts `length` times: stride 0 and no block.
template <class T>
struct Operand {
  const T* data;
  const RWBlock* block;
  unsigned length;
  int stride;

  T operator[](unsigned i) const { return data[std::ptrdiff_t{i} * stride]; }
};

/// A new vector of a[i] operation b[i]. Operands of different lengths raise kVectorLengthsError;
/// the result has the length of `a`, and 0 where `b` has no element. A zero divisor of integers
/// raises kDivisionByZeroError and gives 0.
template <class T>
KILNBASE_API Vec<T> combineByKernel(Operation operation, Operand<T> a, Operand<T> b);

/// Sets the elements of `a`, which `target` points to, to a[i] operation b[i], with the same
/// errors. Elements that `b` lacks stay. Operands may overlap.
template <class T>
KILNBASE_API void changeByKernel(Operation operation, T* target, Operand<T> a, Operand<T> b);

/// target[i * stride] = a[i] operation b[i] for i < n.
template <Operation operation, class T>
void calculate(unsigned n, T* target, int stride, const Operand<T>& a, const Operand<T>& b) {
  for (unsigned i = 0; i < n; ++i) {
    T& result = target[std::ptrdiff_t{i} * stride];
    if constexpr (operation == Operation::kAdd) result = static_cast<T>(a[i] + b[i]);
    if constexpr (operation == Operation::kSubtract) result = static_cast<T>(a[i] - b[i]);
    if constexpr (operation == Operation::kMultiply) result = static_cast<T>(a[i] * b[i]);
    if constexpr (operation == Operation::kDivide) result = static_cast<T>(a[i] / b[i]);
  }
}

template <Operation operation, class T>
Vec<T> combine(const Operand<T>& a, const Operand<T>& b) {
  if (!isShort<T>(a.length) || a.length != b.length) return combineByKernel(operation, a, b);
  Vec<T> result(a.length);
  calculate<operation>(result.length(), result.data(), 1, a, b);
  return result;
}

template <Operation operation, class T>
void change(T* target, const Operand<T>& a, const Operand<T>& b) {
  if (!isShort<T>(a.length) || a.length != b.length || a.block == b.block) {
    changeByKernel(operation, target, a, b);
  } else {
    calculate<operation>(a.length, target, a.stride, a, b);
  }
}

/// term(0) + ... + term(n - 1), in two accumulators.
template <class Term>
double shortSum(unsigned n, Term term) {
  double even = 0.0;
  double odd = 0.0;
  std::ptrdiff_t i = 0;
  for (; i + 2 <= std::ptrdiff_t{n}; i += 2) {
    even += term(i);
    odd += term(i + 1);
  }
  return i < std::ptrdiff_t{n} ? even + odd + term(i) : even + odd;
}

}  // namespace vxKilnBase::detail
