#include <algorithm>
#include <cmath>
#include <utility>

#include <kilnbase/linalg/linpack/dgeco.h>
#include <kilnbase/linalg/linpack/dgefa.h>
#include <kilnbase/linalg/linpack/estimate.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

struct Factors {
  const double* a;
  Index lda;
  Index n;
  const int* ipvt;

  double at(Index i, Index j) const { return a[j * lda + i]; }
  const double* below(Index k) const { return a + k * lda + k + 1; }
  Index exchanged(Index k) const { return ipvt[k] - 1; }
};

// Solves Uᵀ w = e with the signs of e chosen so that w grows.
void growSolution(const Factors& f, ScaledVector& w) {
  double* z = w.z;
  std::fill_n(z, w.n, 0.0);
  w.size = 1.0;
  for (Index k = 0; k < f.n; ++k) {
    const double pivot = f.at(k, k);
    if (z[k] != 0.0) w.size = std::copysign(w.size, -z[k]);
    const double distance = std::fabs(w.size - z[k]);
    if (distance > std::fabs(pivot)) w.scale(std::fabs(pivot) / distance);
    double plus = w.size - z[k];
    double minus = -w.size - z[k];
    double sumPlus = std::fabs(plus);
    double sumMinus = std::fabs(minus);
    plus = pivot == 0.0 ? 1.0 : plus / pivot;
    minus = pivot == 0.0 ? 1.0 : minus / pivot;
    for (Index j = k + 1; j < f.n; ++j) {
      sumMinus += std::fabs(z[j] + minus * f.at(k, j));
      z[j] += plus * f.at(k, j);
      sumPlus += std::fabs(z[j]);
    }
    z[k] = plus;
    if (k + 1 == f.n || !(sumPlus < sumMinus)) continue;
    z[k] = minus;
    for (Index j = k + 1; j < f.n; ++j) z[j] += (minus - plus) * f.at(k, j);
  }
  w.normalize();
}

void solveLowerTransposed(const Factors& f, ScaledVector& y) {
  const auto dot = kernels::active().dense->dot;
  for (Index k = f.n; k-- > 0;) {
    y.z[k] += dot(f.n - k - 1, f.below(k), y.z + k + 1);
    y.limit(k, 1.0);
    std::swap(y.z[k], y.z[f.exchanged(k)]);
  }
  y.normalize();
}

void solveLower(const Factors& f, ScaledVector& v) {
  const auto axpy = kernels::active().dense->axpy;
  for (Index k = 0; k < f.n; ++k) {
    std::swap(v.z[k], v.z[f.exchanged(k)]);
    axpy(f.n - k - 1, v.z[k], f.below(k), v.z + k + 1);
    v.limit(k, 1.0);
  }
  v.normalize();
}

void solveUpper(const Factors& f, ScaledVector& v) {
  const auto axpy = kernels::active().dense->axpy;
  for (Index k = f.n; k-- > 0;) {
    v.divide(k, f.at(k, k));
    axpy(k, -v.z[k], f.a + k * f.lda, v.z);
  }
  v.normalize();
}

}  // namespace

double dgeco(double* a, int lda, int n, int* ipvt, double* z) {
  const Factors f{a, lda, n, ipvt};
  double norm = 0.0;
  for (Index j = 0; j < n; ++j) norm = std::max(norm, sumOfAbsolutes(n, a + j * f.lda));
  dgefa(a, lda, n, ipvt);
  ScaledVector vector{n, z, 1.0};
  growSolution(f, vector);
  solveLowerTransposed(f, vector);
  vector.size = 1.0;
  solveLower(f, vector);
  solveUpper(f, vector);
  return reciprocalCondition(vector.size, norm);
}

}  // namespace vxKilnBase::linpack
