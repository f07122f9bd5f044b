#include <cmath>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/dnrm2.h>

namespace vxKilnBase::linpack {

namespace {

constexpr double kSmall = 8.232e-11;
constexpr double kLarge = 1.304e+19;

// A plain sum of squares between these bounds lost nothing to underflow or overflow.
constexpr double kLeastSafeSum = 1e-250;
constexpr double kGreatestSafeSum = 1e+300;

// The sum of squares of elements x, as largest² Σ (x / largest)².
struct ScaledSum {
  double largest;
  double sum;

  void add(double magnitude) {
    if (magnitude <= largest) {
      sum += (magnitude / largest) * (magnitude / largest);
    } else {
      sum = 1.0 + sum * (largest / magnitude) * (largest / magnitude);
      largest = magnitude;
    }
  }
  double norm() const { return largest * std::sqrt(sum); }
};

// Four phases in this order, each of which ends at an element that is too large for the phase:
// zeros, small elements (scaled), middle ones (plain), large ones (scaled).
double normByPhases(std::ptrdiff_t n, const double* x, std::ptrdiff_t increment) {
  const auto magnitude = [=](std::ptrdiff_t i) { return std::fabs(x[i * increment]); };
  std::ptrdiff_t i = 0;
  while (i < n && magnitude(i) == 0.0) ++i;
  if (i == n) return 0.0;

  double sum = 0.0;
  if (!(magnitude(i) > kSmall)) {
    ScaledSum small{magnitude(i), 1.0};
    for (++i; i < n && !(magnitude(i) > kSmall); ++i) small.add(magnitude(i));
    if (i == n) return small.norm();
    sum = small.sum * small.largest * small.largest;
  }

  const double limit = kLarge / static_cast<double>(n);
  for (; i < n && !(magnitude(i) >= limit); ++i) sum += magnitude(i) * magnitude(i);
  if (i == n) return std::sqrt(sum);

  ScaledSum large{magnitude(i), 1.0 + sum / magnitude(i) / magnitude(i)};
  for (++i; i < n; ++i) large.add(magnitude(i));
  return large.norm();
}

}  // namespace

double dnrm2(std::ptrdiff_t n, const double* x, std::ptrdiff_t increment) {
  const double plain = kernels::elements<double>().dot(n, x, increment, x, increment);
  if (plain >= kLeastSafeSum && plain <= kGreatestSafeSum) return std::sqrt(plain);
  return normByPhases(n, x, increment);
}

}  // namespace vxKilnBase::linpack
