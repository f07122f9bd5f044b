// Arithmetic of vectors, element by element: short ones are worked on in line, longer ones by the
// kernels.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>

#include <kilnbase/export.h>

namespace vxKilnBase {

template <class T>
class Vec;

}  // namespace vxKilnBase

namespace vxKilnBase::detail {

/// Whether `length` elements are too few for the call of a kernel to pay. On a Xeon with AVX-512
/// the two ways take the same time at 12 to 20 doubles, depending on the operation. The lines
/// "vector ... 10" of kiln_bench measure short vectors.
template <class T>
constexpr bool isShort(unsigned length) {
  return std::same_as<T, double> && length < 16;
}

enum class Operation { kAdd, kSubtract, kMultiply, kDivide };

/// New vectors of a[i] operation b[i], where an operand that is a number stands for every element.
/// Vectors of different lengths raise kVectorLengthsError; the result has the length of `a`, and 0
/// where `b` has no element. A zero divisor of integers raises kDivisionByZeroError and gives 0.
template <class T>
KILNBASE_API Vec<T> combineByKernel(Operation operation, const Vec<T>& a, const Vec<T>& b);
template <class T>
KILNBASE_API Vec<T> combineByKernel(Operation operation, const Vec<T>& a, T b);
template <class T>
KILNBASE_API Vec<T> combineByKernel(Operation operation, T a, const Vec<T>& b);

/// Sets a[i] to a[i] operation b[i], with the same errors. Elements that `b` lacks stay. `overlaps`
/// tells whether elements of `a` may be elements of `b`.
template <class T>
KILNBASE_API void changeByKernel(Operation operation, Vec<T>& a, const Vec<T>& b, bool overlaps);
template <class T>
KILNBASE_API void changeByKernel(Operation operation, Vec<T>& a, T b, bool overlaps = false);

// What an operand is to a loop that the compiler keeps in registers.

template <class T>
struct Elements {
  const T* data;
  int stride;

  T operator[](unsigned i) const { return data[std::ptrdiff_t{i} * stride]; }
};
template <class T>
struct Number {
  T value;

  T operator[](unsigned) const { return value; }
};

template <class T>
Elements<T> operandOf(const Vec<T>& v) {
  return {v.data(), v.stride()};
}
template <class T>
Number<T> operandOf(T x) {
  return {x};
}

/// The length of the result; a length that is not short when two vectors differ.
template <class T>
unsigned commonLength(const Vec<T>& a, const Vec<T>& b) {
  return a.length() == b.length() ? a.length() : UINT32_MAX;
}
template <class T>
unsigned commonLength(const Vec<T>& a, T) {
  return a.length();
}
template <class T>
unsigned commonLength(T, const Vec<T>& b) {
  return b.length();
}

/// target[i * stride] = a[i] operation b[i] for i < n.
template <Operation operation, class T>
void calculate(unsigned n, T* target, int stride, auto a, auto b) {
  for (unsigned i = 0; i < n; ++i) {
    T& result = target[std::ptrdiff_t{i} * stride];
    if constexpr (operation == Operation::kAdd) result = static_cast<T>(a[i] + b[i]);
    if constexpr (operation == Operation::kSubtract) result = static_cast<T>(a[i] - b[i]);
    if constexpr (operation == Operation::kMultiply) result = static_cast<T>(a[i] * b[i]);
    if constexpr (operation == Operation::kDivide) result = static_cast<T>(a[i] / b[i]);
  }
}

template <class T, Operation operation>
Vec<T> combine(const auto& a, const auto& b) {
  const unsigned n = commonLength<T>(a, b);
  if (!isShort<T>(n)) return combineByKernel<T>(operation, a, b);
  Vec<T> result(n);
  calculate<operation>(result.length(), result.data(), 1, operandOf<T>(a), operandOf<T>(b));
  return result;
}

template <class T, Operation operation>
void change(Vec<T>& a, const auto& b, bool overlaps) {
  const unsigned n = commonLength<T>(a, b);
  if (!isShort<T>(n) || overlaps) {
    changeByKernel<T>(operation, a, b, overlaps);
  } else {
    calculate<operation>(n, a.data(), a.stride(), operandOf<T>(a), operandOf<T>(b));
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
