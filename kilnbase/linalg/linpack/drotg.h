// The plane rotation that turns the second of two numbers into 0.
#pragma once

#include <cmath>

namespace vxKilnBase::linpack {

/// A plane rotation with the cosine length * a and the sine length * b.
///
/// `length` is a square root, which the processor finishes last. As a factor of its own it delays
/// only the last multiplication.
struct Rotation {
  double a;
  double b;
  double length;
  double r;  ///< first(f, g) for the numbers f and g that the rotation is made from

  double cosine() const { return length * a; }
  double sine() const { return length * b; }
  /// The rotation turns the pair (x, y) into (first(x, y), second(x, y)).
  double first(double x, double y) const { return length * (a * x + b * y); }
  double second(double x, double y) const { return length * (a * y - b * x); }
};

/// rotationOf for numbers of any magnitude; slower.
Rotation scaledRotationOf(double f, double g);

/// The rotation with first(f, g) = r and second(f, g) = 0; r has the sign of the larger of the two
/// numbers. Two zeros give cosine 1 and sine 0.
///
/// Source: C. L. Lawson, R. J. Hanson, D. R. Kincaid, F. T. Krogh, "Basic Linear Algebra
/// Subprograms for Fortran Usage", ACM Transactions on Mathematical Software 5 (1979), 308-323.
inline Rotation rotationOf(double f, double g) {
  // A sum of two squares between these bounds lost nothing to underflow or overflow.
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

/// The rotation of a and b in the form of the BLAS: c is the cosine, s the sine, and a becomes r.
inline void drotg(double& a, double b, double& c, double& s) {
  const Rotation rotation = rotationOf(a, b);
  a = rotation.r;
  c = rotation.cosine();
  s = rotation.sine();
}

/// Applies a rotation to the pair (a, b): a becomes c a + s b, and b becomes c b - s a.
inline void rotate(double c, double s, double& a, double& b) {
  const double old = a;
  a = c * old + s * b;
  b = c * b - s * old;
}

}  // namespace vxKilnBase::linpack
