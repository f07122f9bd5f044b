// Seeded test matrices, and the norms that residual ratios are made of.
//
// The same arguments give the same numbers on every system. Norms do not overflow or underflow
// where their result does not.
#pragma once

#include <cstdint>
#include <initializer_list>

#include <kilnbase/linalg/DoubleGenMat.h>

namespace kilntest {

// Elements uniform in (-1, 1).
DoubleGenMat randomMatrix(unsigned m, unsigned n, std::uint64_t seed);
DoubleVec randomVector(unsigned n, std::uint64_t seed);

// An m by n matrix with random singular vectors and singular values that fall geometrically from 1
// to 1 / condition. With m or n equal to 1 the only one is 1.
DoubleGenMat matrixWithCondition(unsigned m, unsigned n, double condition, std::uint64_t seed);

// A copy of `a` with these columns set to 0; columns that it does not have are passed over.
DoubleGenMat withZeroColumns(const DoubleGenMat& a, std::initializer_list<unsigned> columns);

DoubleGenMat identity(unsigned n);

// The largest column sum of absolute values.
double norm1(const DoubleGenMat& a);
double frobenius(const DoubleGenMat& a);
// The Euclidean norm.
double norm2(const DoubleVec& v);
double maxAbs(const DoubleGenMat& a);

}  // namespace kilntest
