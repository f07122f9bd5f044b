#include <algorithm>
#include <cmath>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/SymmetricFactors.h>
#include <kilnbase/linalg/linpack/determinant.h>
#include <kilnbase/linalg/linpack/dspdi.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// Calls use(d) with factors of the determinant that have the signs of the eigenvalues of D. For a
// block (d s; s c) they are t and (d / t) c - t, where t = |s|, which do not overflow on the way.
template <class Use>
void forEachFactor(const SymmetricFactors& f, const Use& use) {
  for (Index k = 0; k < f.n; k += f.orderOfBlock(k)) {
    double d = f.at(k, k);
    if (f.orderOfBlock(k) == 2) {
      const double t = std::fabs(f.at(k, k + 1));
      d = (d / t) * f.at(k + 1, k + 1) - t;
      use(d);
      use(t);
    } else {
      use(d);
    }
  }
}

void computeInertia(const SymmetricFactors& f, int* inert) {
  std::fill_n(inert, 3, 0);
  forEachFactor(f, [inert](double d) {
    if (d > 0.0) ++inert[0];
    if (d < 0.0) ++inert[1];
    if (d == 0.0) ++inert[2];
  });
}

void computeDeterminant(const SymmetricFactors& f, double* det) {
  det[0] = 1.0;
  det[1] = 0.0;
  forEachFactor(f, [det](double d) { multiplyDeterminant(det, d); });
}

// `column` becomes its product with the inverse of the leading matrix of order k, and is kept in
// `work`.
void multiplyByInverse(const PackedUpper<double>& a, Index k, double* column, double* work) {
  const auto& dense = *kernels::active().dense;
  std::copy_n(column, k, work);
  for (Index j = 0; j < k; ++j) {
    column[j] = dense.dot(j + 1, a.column(j), work);
    dense.axpy(j, work[j], a.column(j), column);
  }
}

void invertOne(const PackedUpper<double>& a, Index k, double* work) {
  double* column = a.column(k);
  column[k] = 1.0 / column[k];
  multiplyByInverse(a, k, column, work);
  column[k] += kernels::active().dense->dot(k, work, column);
}

// The block of order 2 in rows k and k + 1.
void invertTwo(const PackedUpper<double>& a, Index k, double* work) {
  const auto dot = kernels::active().dense->dot;
  double* first = a.column(k);
  double* second = a.column(k + 1);
  const double t = std::fabs(second[k]);
  const double d1 = first[k] / t;
  const double d2 = second[k + 1] / t;
  const double off = second[k] / t;
  const double d = t * (d1 * d2 - 1.0);
  first[k] = d2 / d;
  second[k + 1] = d1 / d;
  second[k] = -off / d;
  multiplyByInverse(a, k, second, work);
  second[k + 1] += dot(k, work, second);
  second[k] += dot(k, first, second);
  multiplyByInverse(a, k, first, work);
  first[k] += dot(k, work, first);
}

void exchange(const PackedUpper<double>& a, Index l, Index k) {
  std::swap_ranges(a.column(l), a.column(l) + l, a.column(k));
  for (Index j = l + 1; j < k; ++j) std::swap(a.at(j, k), a.at(l, j));
  std::swap(a.at(l, l), a.at(k, k));
}

void invert(const PackedUpper<double>& a, const SymmetricFactors& f, double* work) {
  for (Index k = 0; k < a.n; k += f.orderOfBlock(k)) {
    const bool two = f.orderOfBlock(k) == 2;
    if (two) {
      invertTwo(a, k, work);
    } else {
      invertOne(a, k, work);
    }
    const Index l = f.exchanged(k);
    if (l == k) continue;
    exchange(a, l, k);
    if (two) std::swap(a.at(l, k + 1), a.at(k, k + 1));
  }
}

}  // namespace

void dspdi(double* ap, int n, const int* kpvt, double* det, int* inert, double* work, int job) {
  const SymmetricFactors f{{ap, n}, kpvt};
  if (job % 1000 / 100 != 0) computeInertia(f, inert);
  if (job % 100 / 10 != 0) computeDeterminant(f, det);
  if (job % 10 != 0) invert({ap, n}, f, work);
}

}  // namespace vxKilnBase::linpack
