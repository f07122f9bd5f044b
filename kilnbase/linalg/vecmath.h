// Functions of whole vectors: sums, searches, running sums and element-wise mathematics.
//
// Vectors that a function returns are new, with stride 1, unless a comment says otherwise. Sums and
// products of int and signed char vectors are ints that wrap around.
//
//     const DoubleVec v(4, 1.0, 1.0);  // 1 2 3 4
//     const double length = std::sqrt(vxKilnBase::dot(v, v));
//     const DoubleVec halves = vxKilnBase::cumsum(v) / 2.0;  // 0.5 1.5 3 5
#pragma once

#include <cstddef>
#include <functional>

#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/IntVec.h>
#include <kilnbase/linalg/SCharVec.h>
#include <kilnbase/linalg/detail/arithmetic.h>
#include <kilnbase/linalg/detail/elementTypes.h>

namespace vxKilnBase {

using detail::SumOf;

namespace detail {

template <class T>
KILNBASE_API SumOf<T> dotOfAnyLength(const Vec<T>& a, const Vec<T>& b);
template <class T>
KILNBASE_API SumOf<T> sumOfAnyLength(const Vec<T>& v);
template <class T>
KILNBASE_API int maxIndexOfAnyLength(const Vec<T>& v);
template <class T>
KILNBASE_API int minIndexOfAnyLength(const Vec<T>& v);

/// The first index of an element that no later one beats; the vector is short and not empty.
template <class T>
int shortBestIndex(const Vec<T>& v, auto beats) {
  int best = 0;
  T bestValue = v.sub(0);
  for (int i = 1; i < static_cast<int>(v.length()); ++i) {
    if (!beats(v.sub(i), bestValue)) continue;
    best = i;
    bestValue = v.sub(i);
  }
  return best;
}

}  // namespace detail

/// Element i is v[0] + ... + v[i].
template <class T>
[[nodiscard]] KILNBASE_API Vec<T> cumsum(const Vec<T>& v);
/// Element 0 is v[0], element i is v[i] - v[i-1].
template <class T>
[[nodiscard]] KILNBASE_API Vec<T> delta(const Vec<T>& v);
/// The sum of products; 0 for empty vectors. Lengths must agree (kVectorLengthsError).
template <class T>
[[nodiscard]] SumOf<T> dot(const Vec<T>& a, const Vec<T>& b) {
  if (!detail::isShort<T>(a.length()) || a.length() != b.length()) {
    return detail::dotOfAnyLength(a, b);
  }
  if (!detail::areNeighbours(a, b)) return static_cast<SumOf<T>>(detail::stridedDot(a, b));
  return static_cast<SumOf<T>>(detail::shortDot(a.length(), a.data(), b.data()));
}
/// The sum of all elements; 0 for an empty vector.
template <class T>
[[nodiscard]] SumOf<T> sum(const Vec<T>& v) {
  if (!detail::isShort<T>(v.length())) return detail::sumOfAnyLength(v);
  if (v.stride() == 1) return static_cast<SumOf<T>>(detail::shortSum(v.length(), v.data()));
  const auto element = [x = v.data(), stride = std::ptrdiff_t{v.stride()}](std::ptrdiff_t i) {
    return static_cast<double>(x[i * stride]);
  };
  return static_cast<SumOf<T>>(
      detail::shortSum(v.length(), detail::Numbers<decltype(element)>{element, 0}));
}
/// The product of all elements; 1 for an empty vector.
template <class T>
[[nodiscard]] KILNBASE_API SumOf<T> prod(const Vec<T>& v);
/// A view of the same elements in reverse order, not a copy: writing through it changes `v`.
template <class T>
[[nodiscard]] KILNBASE_API Vec<T> reverse(const Vec<T>& v);
/// Index of the first of the largest (smallest) elements. A later element counts only when it is
/// strictly larger (smaller) than those before; a NaN never is. An empty vector raises the warning
/// kEmptyVectorError and gives -1.
template <class T>
[[nodiscard]] int maxIndex(const Vec<T>& v) {
  return detail::areNeighbours(v, v) && v.length() > 0
             ? detail::shortBestIndex(v, std::ranges::greater())
             : detail::maxIndexOfAnyLength(v);
}
template <class T>
[[nodiscard]] int minIndex(const Vec<T>& v) {
  return detail::areNeighbours(v, v) && v.length() > 0
             ? detail::shortBestIndex(v, std::ranges::less())
             : detail::minIndexOfAnyLength(v);
}
/// The element at that index; 0 for an empty vector, after the same warning.
template <class T>
[[nodiscard]] KILNBASE_API T maxValue(const Vec<T>& v);
template <class T>
[[nodiscard]] KILNBASE_API T minValue(const Vec<T>& v);
/// Absolute values. Kept as it is: the least integer stays.
template <class T>
[[nodiscard]] KILNBASE_API Vec<T> abs(const Vec<T>& v);

/// The sum divided by the length: 0/0, a NaN, for an empty vector.
[[nodiscard]] KILNBASE_API double mean(const DoubleVec& v);
/// The population variance: the mean of the squared deviations from the mean (divisor n). Fewer
/// than two elements raise kTooFewElementsError.
[[nodiscard]] KILNBASE_API double variance(const DoubleVec& v);

/// The standard function of the same name, of every element. Angles are in radians. The lengths of
/// two vectors must agree (kVectorLengthsError).
[[nodiscard]] KILNBASE_API DoubleVec acos(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec asin(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec atan(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec atan2(const DoubleVec& y, const DoubleVec& x);
[[nodiscard]] KILNBASE_API DoubleVec ceil(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec cos(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec cosh(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec exp(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec floor(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec log(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec log10(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec pow(const DoubleVec& base, const DoubleVec& exponent);
[[nodiscard]] KILNBASE_API DoubleVec sin(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec sinh(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec sqrt(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec tan(const DoubleVec& v);
[[nodiscard]] KILNBASE_API DoubleVec tanh(const DoubleVec& v);

/// Each element truncated toward zero. Numbers that no int holds, and NaN, give the least int.
[[nodiscard]] KILNBASE_API IntVec toInt(const DoubleVec& v);
/// The low 8 bits of each element.
[[nodiscard]] KILNBASE_API SCharVec toChar(const IntVec& v);

}  // namespace vxKilnBase
