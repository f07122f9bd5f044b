// Arithmetic of vectors, element by element: short ones are worked on in line, longer ones by the
// kernels.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <kilnbase/export.h>

namespace vxKilnBase {

template <class T>
class Vec;

}  // namespace vxKilnBase

namespace vxKilnBase::detail {

/// The kernels do not pay for vectors with fewer elements. On a Xeon with AVX-512 the two ways take
/// the same time at 12 to 20 doubles, depending on the operation. The lines "vector ... 10" of
/// kiln_bench measure short vectors.
inline constexpr unsigned kShortLength = 16;
/// Whether vectors of this length are short: only those of double can be.
template <class T>
constexpr bool isShort(unsigned length) {
  return std::same_as<T, double> && length < kShortLength;
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

/// Whether both operands have the same few elements, one next to the other. A number stands for as
/// many as there are.
template <class T>
bool areNeighbours(const Vec<T>& a, const Vec<T>& b) {
  return isShort<T>(a.length()) && a.stride() == 1 && b.length() == a.length() && b.stride() == 1;
}
template <class T>
bool areNeighbours(const Vec<T>& a, T) {
  return areNeighbours(a, a);
}
template <class T>
bool areNeighbours(T, const Vec<T>& b) {
  return areNeighbours(b, b);
}

/// A number as an operand: used like a vector, or like a pointer to its elements.
template <class T>
struct Number {
  T value;

  T operator[](unsigned) const { return value; }
  T operator()(int) const { return value; }
  void operator+=(unsigned) const {}
};

template <class T>
const T* operandOf(const Vec<T>& v) {
  return v.data();
}
template <class T>
Number<T> operandOf(T x) {
  return {x};
}
template <class T>
unsigned lengthOf(const Vec<T>& a, const auto&) {
  return a.length();
}
template <class T>
unsigned lengthOf(T, const Vec<T>& b) {
  return b.length();
}

template <Operation operation, class T>
T resultOf(T a, T b) {
  if constexpr (operation == Operation::kAdd) return static_cast<T>(a + b);
  if constexpr (operation == Operation::kSubtract) return static_cast<T>(a - b);
  if constexpr (operation == Operation::kMultiply) return static_cast<T>(a * b);
  if constexpr (operation == Operation::kDivide) return static_cast<T>(a / b);
}

/// target[k] = a[k] operation b[k] for all k. All results are there before the first is stored, so
/// that compilers make vector instructions of neighbours.
template <class T, Operation operation, unsigned... k>
void calculateBlock(T* target, auto a, auto b, std::integer_sequence<unsigned, k...>) {
  const T results[] = {resultOf<operation, T>(a[k], b[k])...};
  ((target[k] = results[k]), ...);
}

/// target[i] = a[i] operation b[i] for i < n, where n < 2 * size, in blocks of `size` elements and
/// less.
template <class T, Operation operation, unsigned size = kShortLength / 2>
void calculate(unsigned n, T* target, auto a, auto b) {
  if constexpr (size > 0) {
    if ((n & size) != 0) {
      calculateBlock<T, operation>(target, a, b, std::make_integer_sequence<unsigned, size>());
      target += size;
      a += size;
      b += size;
    }
    calculate<T, operation, size / 2>(n, target, a, b);
  }
}

/// A new vector of a[i] operation b[i] of short operands.
template <class T, Operation operation>
Vec<T> combineShort(const auto& a, const auto& b) {
  const unsigned n = lengthOf<T>(a, b);
  Vec<T> result(n);
  if (result.data() != nullptr) {
    calculate<T, operation>(n, result.data(), operandOf<T>(a), operandOf<T>(b));
  }
  return result;
}

template <class T, Operation operation>
Vec<T> combine(const auto& a, const auto& b) {
  return areNeighbours<T>(a, b) ? combineShort<T, operation>(a, b)
                                : combineByKernel<T>(operation, a, b);
}

/// a[i] = a[i] operation b[i] for vectors of any stride.
template <class T, Operation operation>
void changeStrided(Vec<T>& a, const auto& b) {
  for (int i = 0; i < static_cast<int>(a.length()); ++i) {
    a(i) = resultOf<operation, T>(a(i), b(i));
  }
}
template <class T, Operation operation>
void changeStrided(Vec<T>& a, T b) {
  changeStrided<T, operation>(a, Number<T>{b});
}

template <class T, Operation operation>
void change(Vec<T>& a, const auto& b, bool overlaps) {
  if (!overlaps && areNeighbours<T>(a, b)) {
    calculate<T, operation>(a.length(), a.data(), operandOf<T>(a), operandOf<T>(b));
  } else if (!overlaps && isShort<T>(a.length()) && lengthOf<T>(b, a) == a.length()) {
    changeStrided<T, operation>(a, b);
  } else {
    changeByKernel<T>(operation, a, b, overlaps);
  }
}

/// Numbers at(first), at(first + 1), ..., used like a pointer to the first of them.
template <class At>
struct Numbers {
  At at;
  std::ptrdiff_t first;

  double operator[](std::ptrdiff_t i) const { return at(first + i); }
  void operator+=(std::ptrdiff_t n) { first += n; }
};

/// The sum of the n < kShortLength elements from x on, in blocks of 8 and less.
double shortSum(unsigned n, auto x) {
  double sum = 0.0;
  if ((n & 8) != 0) {
    sum = ((x[0] + x[4]) + (x[2] + x[6])) + ((x[1] + x[5]) + (x[3] + x[7]));
    x += 8;
  }
  if ((n & 4) != 0) {
    sum += (x[0] + x[2]) + (x[1] + x[3]);
    x += 4;
  }
  if ((n & 2) != 0) {
    sum += x[0] + x[1];
    x += 2;
  }
  return (n & 1) != 0 ? sum + x[0] : sum;
}

/// The sum of the products of short vectors. Not inlined: two strides take the registers of dot().
template <class T>
[[gnu::noinline]] double stridedDot(const Vec<T>& a, const Vec<T>& b) {
  const auto product = [x = a.data(), y = b.data(), strideX = std::ptrdiff_t{a.stride()},
                        strideY = std::ptrdiff_t{b.stride()}](std::ptrdiff_t i) {
    return static_cast<double>(x[i * strideX] * y[i * strideY]);
  };
  return shortSum(a.length(), Numbers<decltype(product)>{product, 0});
}

/// The sum of the products of n elements from x and from y on, in four accumulators.
double shortDot(unsigned n, const auto* x, const auto* y) {
  double sums[4] = {};
  std::ptrdiff_t i = 0;
  for (; i + 4 <= std::ptrdiff_t{n}; i += 4) {
    for (int k = 0; k < 4; ++k) sums[k] += x[i + k] * y[i + k];
  }
  if ((n & 2) != 0) {
    sums[0] += x[i] * y[i];
    sums[1] += x[i + 1] * y[i + 1];
    i += 2;
  }
  const double sum = (sums[0] + sums[2]) + (sums[1] + sums[3]);
  return (n & 1) != 0 ? sum + x[i] * y[i] : sum;
}

}  // namespace vxKilnBase::detail
