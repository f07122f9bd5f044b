// What the QR iterations for singular values and for eigenvalues have in common.
#pragma once

#include <cmath>

#include <kilnbase/linalg/kernels/Dense.h>

namespace vxKilnBase::linpack {

/// QR steps for each value, on average. Steps that one value does not need are left for the others:
/// in a matrix of many magnitudes the first value may take more, and its steps help all values.
constexpr kernels::Index kStepsPerValue = 30;

/// After kStepsPerValue steps for one value, rounding alone may keep the value from converging, as
/// it does among equal values. From then on this share of an element is compared with its
/// neighbours.
constexpr double kLateWeight = 0.125;

/// Numbers far below this one are negligible beside any neighbour. They are about to underflow, and
/// rotations would only move their rounding errors.
constexpr double kLeastNeighbour = 0x1p-900;

inline bool isNegligible(double x, double neighbours, double weight) {
  const double scale = neighbours + kLeastNeighbour;
  return scale + weight * std::fabs(x) == scale;
}

/// The power of two by which a matrix is divided before the iteration, and the values multiplied
/// afterwards. It is 0 unless the largest element, a finite number, is so small or so large that
/// sums of products of three elements overflow or lose digits.
inline int scalingExponent(double largest) {
  constexpr double kSmallElement = 0x1p-300;
  constexpr double kLargeElement = 0x1p300;
  const bool inRange = largest >= kSmallElement && largest <= kLargeElement;
  return largest == 0.0 || inRange ? 0 : std::ilogb(largest);
}

}  // namespace vxKilnBase::linpack
