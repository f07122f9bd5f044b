// Random values of fixed seeds, and the distances of values.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>

#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/Tscale.h>
#include <kilnbase/geometry/TunitQuaternion.h>

namespace kilntest {

constexpr double kPi = 3.14159265358979323846;
// The rounding errors of up to a few dozen operations on numbers around 1.
constexpr double kRounding = 200 * std::numeric_limits<double>::epsilon();

class RandomValues {
 public:
  explicit RandomValues(std::uint64_t seed) : engine_(seed) {}

  // Numbers lie in (-1, 1).
  double number() { return std::ldexp(static_cast<double>(engine_() >> 11U) + 0.5, -52) - 1.0; }
  T4dDblVector vector() { return {number(), number(), number()}; }
  T4dDblPoint point() { return T4dDblPoint::origin + vector(); }
  TunitQuaternion rotation() { return TunitQuaternion().setToPivotAxis(kPi * number(), vector()); }
  // Components lie in (0.5, 2) or (-2, -0.5).
  Tscale scale() { return {factor(), factor(), factor()}; }
  T4dDblMatrix matrix() {
    T4dDblMatrix m;
    for (std::size_t i = 0; i < 16; ++i) m[i / 4][i % 4] = number();
    return m;
  }

 private:
  double factor() { return std::copysign(std::exp2(number()), number()); }

  std::mt19937_64 engine_;
};

inline double distance(const T4dDblVector& a, const T4dDblVector& b) {
  return (a - b).length();
}

inline double distance(const T4dDblMatrix& a, const T4dDblMatrix& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < 16; ++i) sum += std::pow(a[i / 4][i % 4] - b[i / 4][i % 4], 2);
  return std::sqrt(sum);
}

}  // namespace kilntest
