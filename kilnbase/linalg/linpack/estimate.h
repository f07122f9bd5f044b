// Steps of the estimates of conditions.
//
// The solution of a nearly singular system may overflow. The estimates therefore scale a vector
// down whenever an element grows, and a number, `size`, with the vector: the vector over `size` is
// the solution.
#pragma once

#include <cmath>
#include <cstddef>

#include <kilnbase/linalg/kernels/Kernels.h>

namespace vxKilnBase::linpack {

/// Σ |x[i]|.
inline double sumOfAbsolutes(std::ptrdiff_t n, const double* x) {
  double sum = 0.0;
  for (std::ptrdiff_t i = 0; i < n; ++i) sum += std::fabs(x[i]);
  return sum;
}

/// The estimate size / norm as a reciprocal condition, at most 1. It is 0 for a zero matrix and
/// where elements that are infinite or NaN left no number.
inline double reciprocalCondition(double size, double norm) {
  const double estimate = size / norm;
  if (norm == 0.0 || !(estimate > 0.0)) return 0.0;
  return estimate < 1.0 ? estimate : 1.0;
}

/// A vector of n elements and the number that is scaled with it.
struct ScaledVector {
  std::ptrdiff_t n;
  double* z;
  double size;

  void scale(double factor) {
    kernels::active().dense->scale(n, factor, z);
    size *= factor;
  }
  /// Makes the 1-norm of the vector 1.
  void normalize() { scale(1.0 / sumOfAbsolutes(n, z)); }
  /// Makes |z[k]| at most `limit`.
  void limit(std::ptrdiff_t k, double limit) {
    if (std::fabs(z[k]) > limit) scale(limit / std::fabs(z[k]));
  }
  /// Divides z[k] by a pivot; 0 / 0 is 1.
  void divide(std::ptrdiff_t k, double pivot) {
    limit(k, std::fabs(pivot));
    z[k] = pivot == 0.0 ? 1.0 : z[k] / pivot;
  }
};

}  // namespace vxKilnBase::linpack
