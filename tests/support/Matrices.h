// Seeded test matrices, lists of elements, and the norms that residual ratios are made of.
//
// The same arguments give the same numbers on every system, up to rounding. Squares in norms
// neither overflow nor underflow.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include <kilnbase/linalg/DoubleGenMat.h>

namespace kilntest {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon() / 2;  // the unit roundoff
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <class T>
vxKilnBase::Vec<T> vectorOf(std::initializer_list<T> values) {
  return values;
}

// 0, 1, 2, ...
template <class T>
vxKilnBase::Vec<T> counting(unsigned n) {
  vxKilnBase::Vec<T> v(n);
  for (int i = 0; i < static_cast<int>(n); ++i) v(i) = static_cast<T>(i);
  return v;
}

// The elements in order. A matrix is taken column by column.
template <class T>
std::vector<T> list(const vxKilnBase::Vec<T>& v) {
  return {v.begin(), v.end()};
}

// Elements uniform in (-1, 1).
DoubleGenMat randomMatrix(unsigned m, unsigned n, std::uint64_t seed);
DoubleVec randomVector(unsigned n, std::uint64_t seed);

// An m by n matrix with random singular vectors and singular values that fall geometrically from 1
// to 1 / condition. The only singular value of one row or column is 1.
DoubleGenMat matrixWithCondition(unsigned m, unsigned n, double condition, std::uint64_t seed);

DoubleGenMat identity(unsigned n);

struct TestMatrix {
  std::string name;  // kind and shape
  DoubleGenMat a;
  double condition = 0.0;  // of matrices that matrixWithCondition made
};

// Every kind of matrix that factorizations find hard, from 0 to 130 rows and columns, in the shapes
// at which a factorization may take another path.
std::vector<TestMatrix> testMatrices();

// The largest column sum of absolute values.
double norm1(const DoubleGenMat& a);
// The Euclidean norm of a vector; the Frobenius norm of a matrix.
double norm2(const DoubleVec& v);

// An error in units of the rounding errors of n operations on numbers of this size.
double ratio(double error, double size, unsigned n);
// |I - QᵀQ| / (rows ε).
double orthogonalityRatio(const DoubleGenMat& q);

}  // namespace kilntest
