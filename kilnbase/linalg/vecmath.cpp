#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include <kilnbase/linalg/detail/elements.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/vecmath.h>

namespace vxKilnBase {

using detail::Wrapping;

namespace {

// The first n elements of v as a range.
template <class T>
auto elementsOf(const Vec<T>& v, unsigned n) {
  return detail::elements(v.data(), n, v.stride());
}

// A new vector of `next(x)` for every element x of v, in order.
template <class Result, class T, class Function>
Vec<Result> mapped(const Vec<T>& v, Function next) {
  Vec<Result> result(v.length());
  std::ranges::transform(elementsOf(v, result.length()), result.data(), next);
  return result;
}

// A new vector of f(x, y) for the elements x of a and y of b, after the length check.
template <class Function>
DoubleVec mappedPairs(const DoubleVec& a, const DoubleVec& b, Function f) {
  a.lengthCheck(b.length());
  DoubleVec result(std::min(a.length(), b.length()));
  for (int i = 0; i < static_cast<int>(result.length()); ++i) result.sub(i) = f(a(i), b(i));
  return result;
}

template <class T>
int extremeIndex(const Vec<T>& v, const char* function,
                 kernels::Index (*kernel)(kernels::Index, const T*, kernels::Index)) {
  if (v.length() == 0) {
    v.emptyErr(function);
    return -1;
  }
  return static_cast<int>(kernel(v.length(), v.data(), v.stride()));
}

template <class T>
T elementOrZero(const Vec<T>& v, int index) {
  return index < 0 ? T(0) : v(index);
}

}  // namespace

template <class T>
Vec<T> cumsum(const Vec<T>& v) {
  Wrapping<T> total = 0;
  return mapped<T>(v, [&total](T x) {
    total += static_cast<Wrapping<T>>(x);
    return static_cast<T>(total);
  });
}

template <class T>
Vec<T> delta(const Vec<T>& v) {
  Wrapping<T> previous = 0;
  return mapped<T>(v, [&previous](T x) {
    const Wrapping<T> current = static_cast<Wrapping<T>>(x);
    const Wrapping<T> difference = current - previous;
    previous = current;
    return static_cast<T>(difference);
  });
}

template <class T>
SumOf<T> detail::dotOfAnyLength(const Vec<T>& a, const Vec<T>& b) {
  a.lengthCheck(b.length());
  const unsigned n = std::min(a.length(), b.length());
  return kernels::elements<T>().dot(n, a.data(), a.stride(), b.data(), b.stride());
}

template <class T>
SumOf<T> detail::sumOfAnyLength(const Vec<T>& v) {
  return kernels::elements<T>().sum(v.length(), v.data(), v.stride());
}

template <class T>
SumOf<T> prod(const Vec<T>& v) {
  Wrapping<T> product = 1;
  for (const T& x : elementsOf(v, v.length())) product *= static_cast<Wrapping<T>>(x);
  return static_cast<SumOf<T>>(product);
}

template <class T>
Vec<T> reverse(const Vec<T>& v) {
  const unsigned n = v.length();
  return n == 0 ? v : v.slice(static_cast<int>(n) - 1, n, -1);
}

template <class T>
int detail::maxIndexOfAnyLength(const Vec<T>& v) {
  return extremeIndex(v, "maxIndex", kernels::elements<T>().maxIndex);
}

template <class T>
int detail::minIndexOfAnyLength(const Vec<T>& v) {
  return extremeIndex(v, "minIndex", kernels::elements<T>().minIndex);
}

template <class T>
T maxValue(const Vec<T>& v) {
  return elementOrZero(v, maxIndex(v));
}

template <class T>
T minValue(const Vec<T>& v) {
  return elementOrZero(v, minIndex(v));
}

template <class T>
Vec<T> abs(const Vec<T>& v) {
  return mapped<T>(v, [](T x) {
    if constexpr (std::is_integral_v<T>) {
      return static_cast<T>(x < 0 ? 0U - static_cast<unsigned>(x) : static_cast<unsigned>(x));
    } else {
      return std::fabs(x);
    }
  });
}

#define KILN_INSTANTIATE_VECMATH(T)                                       \
  template Vec<T> cumsum(const Vec<T>&);                                  \
  template Vec<T> delta(const Vec<T>&);                                   \
  template SumOf<T> detail::dotOfAnyLength(const Vec<T>&, const Vec<T>&); \
  template SumOf<T> detail::sumOfAnyLength(const Vec<T>&);                \
  template SumOf<T> prod(const Vec<T>&);                                  \
  template Vec<T> reverse(const Vec<T>&);                                 \
  template int detail::maxIndexOfAnyLength(const Vec<T>&);                \
  template int detail::minIndexOfAnyLength(const Vec<T>&);                \
  template T maxValue(const Vec<T>&);                                     \
  template T minValue(const Vec<T>&);                                     \
  template Vec<T> abs(const Vec<T>&);
KILN_INSTANTIATE_VECMATH(double)
KILN_INSTANTIATE_VECMATH(int)
KILN_INSTANTIATE_VECMATH(signed char)
#undef KILN_INSTANTIATE_VECMATH

double mean(const DoubleVec& v) {
  return sum(v) / static_cast<double>(v.length());
}

double variance(const DoubleVec& v) {
  if (v.length() < 2) {
    detail::raiseTooFewElements(VecNames<double>::vec, v.length(), "Variance needs minimum of", 2);
  }
  const double center = mean(v);
  double squares = 0.0;
  for (double x : elementsOf(v, v.length())) squares += (x - center) * (x - center);
  return squares / static_cast<double>(v.length());
}

DoubleVec acos(const DoubleVec& v) {
  return v.apply(std::acos);
}
DoubleVec asin(const DoubleVec& v) {
  return v.apply(std::asin);
}
DoubleVec atan(const DoubleVec& v) {
  return v.apply(std::atan);
}
DoubleVec ceil(const DoubleVec& v) {
  return v.apply(std::ceil);
}
DoubleVec cos(const DoubleVec& v) {
  return v.apply(std::cos);
}
DoubleVec cosh(const DoubleVec& v) {
  return v.apply(std::cosh);
}
DoubleVec exp(const DoubleVec& v) {
  return v.apply(std::exp);
}
DoubleVec floor(const DoubleVec& v) {
  return v.apply(std::floor);
}
DoubleVec log(const DoubleVec& v) {
  return v.apply(std::log);
}
DoubleVec log10(const DoubleVec& v) {
  return v.apply(std::log10);
}
DoubleVec sin(const DoubleVec& v) {
  return v.apply(std::sin);
}
DoubleVec sinh(const DoubleVec& v) {
  return v.apply(std::sinh);
}
DoubleVec sqrt(const DoubleVec& v) {
  return v.apply(std::sqrt);
}
DoubleVec tan(const DoubleVec& v) {
  return v.apply(std::tan);
}
DoubleVec tanh(const DoubleVec& v) {
  return v.apply(std::tanh);
}

DoubleVec atan2(const DoubleVec& y, const DoubleVec& x) {
  return mappedPairs(y, x, [](double a, double b) { return std::atan2(a, b); });
}

DoubleVec pow(const DoubleVec& base, const DoubleVec& exponent) {
  return mappedPairs(base, exponent, [](double a, double b) { return std::pow(a, b); });
}

IntVec toInt(const DoubleVec& v) {
  return mapped<int>(v, [](double x) {
    return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int>(x)
                                                 : std::numeric_limits<int>::min();
  });
}

SCharVec toChar(const IntVec& v) {
  return mapped<signed char>(v, [](int x) { return static_cast<signed char>(x); });
}

}  // namespace vxKilnBase
