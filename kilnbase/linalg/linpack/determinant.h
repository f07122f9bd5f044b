// Determinants as a mantissa and a power of ten.
#pragma once

#include <cmath>

namespace vxKilnBase::linpack {

/// det[0] * 10^det[1] becomes that times `factor`, with 1 <= |det[0]| < 10 unless det[0] is 0,
/// infinite or a NaN.
inline void multiplyDeterminant(double* det, double factor) {
  if (std::fabs(factor) > 1e300) {  // 10 times this one could overflow
    factor /= 1e10;
    det[1] += 10.0;
  }
  det[0] *= factor;
  if (det[0] == 0.0 || !std::isfinite(det[0])) return;
  for (; std::fabs(det[0]) < 1.0; det[1] -= 1.0) det[0] *= 10.0;
  for (; std::fabs(det[0]) >= 10.0; det[1] += 1.0) det[0] /= 10.0;
}

}  // namespace vxKilnBase::linpack
