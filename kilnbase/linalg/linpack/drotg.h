// The plane rotation that annihilates the second of two numbers.
#pragma once

#include <cmath>

namespace vxKilnBase::linpack {

/// A plane rotation with cosine `length` a and sine `length` b.
///
/// The factors stand apart because `length`, a square root, is known last: whoever multiplies by it
/// at the end waits for nothing else.
struct Rotation {
  double a;
  double b;
  double length;
  double r;  ///< What the pair that it was made for becomes.

  double cosine() const { return length * a; }
  double sine() const { return length * b; }
  /// The elements that x and y become.
  double first(double x, double y) const { return length * (a * x + b * y); }
  double second(double x, double y) const { return length * (a * y - b * x); }
};

/// The same as rotationOf for numbers of any size, slower.
Rotation scaledRotationOf(double f, double g);

/// The rotation with first(f, g) = r and second(f, g) = 0; r has the sign of the larger of the two
/// numbers. Two zeros give cosine 1 and sine 0.
///
/// Source: C. L. Lawson, R. J. Hanson, D. R. Kincaid, F. T. Krogh, "Basic Linear Algebra
/// Subprograms for Fortran Usage", ACM Transactions on Mathematical Software 5 (1979), 308-323.
inline Rotation rotationOf(double f, double g) {
  // Between these, a sum of two squares has lost nothing to underflow or overflow.
  constexpr double kLeastSafeSquare = 0x1p-900;
  constexpr double kGreatestSafeSquare = 0x1p1000;
  const double square = f * f + g * g;
  if (!(square > kLeastSafeSquare && square < kGreatestSafeSquare)) [[unlikely]]
    return scaledRotationOf(f, g);
  const double length = std::sqrt(square);
  const double larger = std::fabs(f) > std::fabs(g) ? f : g;
  const double inverse = std::copysign(1.0 / square, larger);
  return {f * inverse, g * inverse, length, std::copysign(length, larger)};
}

/// The BLAS form of it: leaves r in `a`.
inline void drotg(double& a, double b, double& c, double& s) {
  const Rotation rotation = rotationOf(a, b);
  a = rotation.r;
  c = rotation.cosine();
  s = rotation.sine();
}

/// Applies the rotation to the pair (a, b): a becomes c a + s b and b becomes c b - s a.
inline void rotate(double c, double s, double& a, double& b) {
  const double old = a;
  a = c * old + s * b;
  b = c * b - s * old;
}

}  // namespace vxKilnBase::linpack
