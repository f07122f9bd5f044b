#include "tests/support/Matrices.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace kilntest {

namespace {

class UniformSource {
 public:
  explicit UniformSource(std::uint64_t seed) : engine_(seed) {}

  // The next number in (-1, 1): the middle of one of 2^53 equal intervals.
  double next() { return std::ldexp(static_cast<double>(engine_() >> 11U) + 0.5, -52) - 1.0; }

 private:
  std::mt19937_64 engine_;
};

void fill(double* to, unsigned n, UniformSource& source) {
  for (unsigned i = 0; i < n; ++i) to[i] = source.next();
}

// Reflects `count` vectors of n elements, element i of vector j being x[i * step + j * distance],
// in the plane orthogonal to v.
void reflect(const DoubleVec& v, double* x, unsigned n, unsigned step, unsigned count,
             unsigned distance) {
  double square = 0.0;
  for (unsigned i = 0; i < n; ++i) square += v.data()[i] * v.data()[i];
  for (unsigned j = 0; j < count; ++j) {
    double* vector = x + std::size_t{j} * distance;
    double product = 0.0;
    for (unsigned i = 0; i < n; ++i) product += v.data()[i] * vector[std::size_t{i} * step];
    const double factor = 2.0 * product / square;
    for (unsigned i = 0; i < n; ++i) vector[std::size_t{i} * step] -= factor * v.data()[i];
  }
}

double maxAbs(const double* x, std::size_t n) {
  double largest = 0.0;
  for (std::size_t i = 0; i < n; ++i) largest = std::max(largest, std::abs(x[i]));
  return largest;
}

double norm2(const double* x, std::size_t n) {
  const double largest = maxAbs(x, n);
  if (!(largest > 0.0)) return 0.0;
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) sum += (x[i] / largest) * (x[i] / largest);
  return largest * std::sqrt(sum);
}

std::size_t elements(const DoubleGenMat& a) {
  return std::size_t{a.rows()} * a.cols();
}

}  // namespace

DoubleGenMat randomMatrix(unsigned m, unsigned n, std::uint64_t seed) {
  UniformSource source(seed);
  DoubleGenMat a(m, n);
  fill(a.data(), m * n, source);
  return a;
}

DoubleVec randomVector(unsigned n, std::uint64_t seed) {
  UniformSource source(seed);
  DoubleVec v(n);
  fill(v.data(), n, source);
  return v;
}

// Random reflections of growing length are applied from both sides to a diagonal matrix. Source:
// G. W. Stewart, The efficient generation of random orthogonal matrices with an application to
// condition estimators, SIAM J. Numer. Anal. 17 (1980), 403-409.
DoubleGenMat matrixWithCondition(unsigned m, unsigned n, double condition, std::uint64_t seed) {
  UniformSource source(seed);
  const unsigned values = std::min(m, n);
  DoubleGenMat a(m, n, 0.0);
  for (unsigned i = values; i-- > 0;) {
    double* corner = a.data() + (std::size_t{i} * m + i);
    *corner = values > 1 ? std::pow(condition, -static_cast<double>(i) / (values - 1)) : 1.0;
    DoubleVec left(m - i);
    DoubleVec right(n - i);
    fill(left.data(), m - i, source);
    fill(right.data(), n - i, source);
    reflect(left, corner, m - i, 1, n - i, m);
    reflect(right, corner, n - i, m, m - i, 1);
  }
  return a;
}

DoubleGenMat withZeroColumns(const DoubleGenMat& a, std::initializer_list<unsigned> columns) {
  DoubleGenMat result = a.copy();
  for (const unsigned j : columns) {
    if (j < a.cols()) std::fill_n(result.data() + std::size_t{j} * a.rows(), a.rows(), 0.0);
  }
  return result;
}

DoubleGenMat identity(unsigned n) {
  DoubleGenMat a(n, n, 0.0);
  for (unsigned i = 0; i < n; ++i) a.data()[std::size_t{i} * n + i] = 1.0;
  return a;
}

double norm1(const DoubleGenMat& a) {
  double largest = 0.0;
  for (unsigned j = 0; j < a.cols(); ++j) {
    double sum = 0.0;
    for (unsigned i = 0; i < a.rows(); ++i) {
      sum += std::abs(a.data()[std::size_t{j} * a.rows() + i]);
    }
    largest = std::max(largest, sum);
  }
  return largest;
}

double frobenius(const DoubleGenMat& a) {
  return norm2(a.data(), elements(a));
}

double norm2(const DoubleVec& v) {
  const DoubleVec contiguous = v.copy();
  return norm2(contiguous.data(), contiguous.length());
}

double maxAbs(const DoubleGenMat& a) {
  return maxAbs(a.data(), elements(a));
}

}  // namespace kilntest
