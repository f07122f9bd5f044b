#include <algorithm>
#include <cmath>
#include <utility>

#include <kilnbase/linalg/linpack/SymmetricFactors.h>
#include <kilnbase/linalg/linpack/dspco.h>
#include <kilnbase/linalg/linpack/dspfa.h>
#include <kilnbase/linalg/linpack/estimate.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// The 1-norm; `sums` is a work vector.
double norm1(const SymmetricFactors& a, double* sums) {
  for (Index j = 0; j < a.n; ++j) {
    const double* column = a.column(j);
    sums[j] = sumOfAbsolutes(j + 1, column);
    for (Index i = 0; i < j; ++i) sums[i] += std::fabs(column[i]);
  }
  return a.n == 0 ? 0.0 : *std::max_element(sums, sums + a.n);
}

void solveBlock(const SymmetricFactors& f, Index k, ScaledVector& v) {
  if (f.orderOfBlock(k) == 1) {
    v.divide(k, f.at(k, k));
  } else {
    f.divideByBlock(k - 1, v.z);
  }
}

void eliminate(const SymmetricFactors& f, Index k, ScaledVector& v) {
  const auto axpy = kernels::active().dense->axpy;
  const Index rest = k + 1 - f.orderOfBlock(k);
  for (Index j = k; j >= rest; --j) axpy(rest, v.z[j], f.column(j), v.z);
}

// Solves U D w = e with the signs of e chosen so that w grows.
void growSolution(const SymmetricFactors& f, ScaledVector& w) {
  const auto axpy = kernels::active().dense->axpy;
  std::fill_n(w.z, w.n, 0.0);
  w.size = 1.0;
  for (Index k = f.n - 1; k >= 0;) {
    const Index rest = k + 1 - f.orderOfBlock(k);
    std::swap(w.z[rest], w.z[f.exchanged(k)]);
    for (Index j = k; j >= rest; --j) {
      if (w.z[j] != 0.0) w.size = std::copysign(w.size, w.z[j]);
      w.z[j] += w.size;
      axpy(rest, w.z[j], f.column(j), w.z);
    }
    solveBlock(f, k, w);
    k = rest - 1;
  }
  w.normalize();
}

void solveUpper(const SymmetricFactors& f, ScaledVector& v) {
  for (Index k = f.n - 1; k >= 0; k -= f.orderOfBlock(k)) {
    const Index first = k + 1 - f.orderOfBlock(k);
    std::swap(v.z[first], v.z[f.exchanged(k)]);
    eliminate(f, k, v);
    solveBlock(f, k, v);
  }
  v.normalize();
}

void solveUpperTransposed(const SymmetricFactors& f, ScaledVector& v) {
  const auto dot = kernels::active().dense->dot;
  for (Index k = 0; k < f.n;) {
    const Index end = k + f.orderOfBlock(k);
    for (Index j = k; j < end; ++j) v.z[j] += dot(k, f.column(j), v.z);
    std::swap(v.z[k], v.z[f.exchanged(k)]);
    k = end;
  }
  v.normalize();
}

}  // namespace

double dspco(double* ap, int n, int* kpvt, double* z) {
  const SymmetricFactors f{{ap, n}, kpvt};
  const double norm = norm1(f, z);
  dspfa(ap, n, kpvt);
  ScaledVector vector{n, z, 1.0};
  growSolution(f, vector);
  solveUpperTransposed(f, vector);
  vector.size = 1.0;
  solveUpper(f, vector);
  solveUpperTransposed(f, vector);
  return reciprocalCondition(vector.size, norm);
}

}  // namespace vxKilnBase::linpack
