// The plane rotation that annihilates the second of two numbers.
#pragma once

namespace vxKilnBase::linpack {

/// Computes the rotation with c a + s b = r and c b - s a = 0, and leaves r, which has the sign of
/// the larger of the two numbers, in `a`. Two zeros give c = 1 and s = 0.
///
/// Source: C. L. Lawson, R. J. Hanson, D. R. Kincaid, F. T. Krogh, "Basic Linear Algebra
/// Subprograms for Fortran Usage", ACM Transactions on Mathematical Software 5 (1979), 308-323.
void drotg(double& a, double b, double& c, double& s);

/// Applies the rotation to the pair (a, b): a becomes c a + s b and b becomes c b - s a.
inline void rotate(double c, double s, double& a, double& b) {
  const double old = a;
  a = c * old + s * b;
  b = c * b - s * old;
}

}  // namespace vxKilnBase::linpack
