#include "tests/support/Matrices.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <kilnbase/linalg/vecmath.h>

namespace kilntest {

DoubleGenMat randomMatrix(unsigned m, unsigned n, std::uint64_t seed) {
  return DoubleGenMat(randomVector(m * n, seed), m, n);
}

// Each number is the middle of one of 2^53 equal intervals.
DoubleVec randomVector(unsigned n, std::uint64_t seed) {
  std::mt19937_64 source(seed);
  DoubleVec v(n);
  for (unsigned i = 0; i < n; ++i) {
    v(i) = std::ldexp(static_cast<double>(source() >> 11U) + 0.5, -52) - 1.0;
  }
  return v;
}

// Random reflections of growing length are applied from both sides to a diagonal matrix. Source:
// G. W. Stewart, The efficient generation of random orthogonal matrices with an application to
// condition estimators, SIAM J. Numer. Anal. 17 (1980), 403-409.
DoubleGenMat matrixWithCondition(unsigned m, unsigned n, double condition, std::uint64_t seed) {
  const unsigned values = std::min(m, n);
  DoubleGenMat a(m, n, 0.0);
  const auto reflect = [](const DoubleVec& v, DoubleVec x) {
    x -= v * (2.0 * dot(v, x) / dot(v, v));
  };
  for (unsigned i = values; i-- > 0;) {
    a(i, i) = values > 1 ? std::pow(condition, -static_cast<double>(i) / (values - 1)) : 1.0;
    const DoubleVec left = randomVector(m - i, 2 * (500 * seed + i));
    const DoubleVec right = randomVector(n - i, 2 * (500 * seed + i) + 1);
    for (unsigned j = i; j < n; ++j) reflect(left, a.col(j).slice(i, m - i));
    for (unsigned k = i; k < m; ++k) reflect(right, a.row(k).slice(i, n - i));
  }
  return a;
}

DoubleGenMat identity(unsigned n) {
  DoubleGenMat a(n, n, 0.0);
  a.diagonal() = 1.0;
  return a;
}

std::vector<TestMatrix> testMatrices() {
  std::vector<TestMatrix> result;
  const unsigned sizes[] = {0, 1, 2, 3, 5, 10, 50, 65, 130};
  for (unsigned shape = 0; shape < 81; ++shape) {
    const unsigned m = sizes[shape / 9], n = sizes[shape % 9];
    const auto add = [&](const std::string& kind, const DoubleGenMat& a, double condition = 0.0) {
      result.push_back(
          {kind + ", " + std::to_string(m) + " by " + std::to_string(n), a, condition});
    };
    const DoubleGenMat random = randomMatrix(m, n, 1000 * m + n);
    add("random", random.copy());
    add("large", random * 1e290);
    add("small", random * 1e-290);
    add("zero", DoubleGenMat(m, n, 0.0));
    add("ones", DoubleGenMat(m, n, 1.0));
    add("rank 1", product(randomMatrix(m, 1, 3), randomMatrix(1, n, 4)));
    add("graded", random * product(DoubleGenMat(exp(DoubleVec(m, 0.0, -2.0)), m, 1),
                                   DoubleGenMat(exp(DoubleVec(n, 0.0, -2.0)), 1, n)));
    for (const double condition : {1.0, 2.0, std::sqrt(0.1 / kEpsilon), 0.1 / kEpsilon}) {
      add("condition " + std::to_string(condition), matrixWithCondition(m, n, condition, 5),
          condition);
    }
    for (const unsigned j : {0U, 2U, 7U, 8U, 49U, n - 1}) {
      if (j < n) random.col(j) = 0.0;
    }
    add("zero columns", random);
    for (const double special : {0.0, 1e-170}) {
      DoubleGenMat a(m, n, 0.0);
      a.diagonal() = DoubleVec(a.diagonal().length(), -1.0, -1.0);
      for (unsigned i = 1; i < std::min(m, n); i += 3) a(i, i) = special;
      if (n > 1) a.diagonal(1) = 0.5;
      add(special == 0.0 ? "zeros on the diagonal" : "tiny among large", a);
    }
  }
  return result;
}

double norm1(const DoubleGenMat& a) {
  double largest = 0.0;
  for (unsigned j = 0; j < a.cols(); ++j) largest = std::max(sum(abs(a.col(j))), largest);
  return largest;
}

double norm2(const DoubleVec& v) {
  double norm = 0.0;
  for (const double x : list(v)) norm = std::hypot(norm, x);
  return norm;
}

double ratio(double error, double size, unsigned n) {
  return error == 0.0 ? 0.0 : error / size / (n * kEpsilon);
}

double orthogonalityRatio(const DoubleGenMat& q) {
  return ratio(norm1(transposeProduct(q, q) - identity(q.cols())), 1.0, q.rows());
}

}  // namespace kilntest
