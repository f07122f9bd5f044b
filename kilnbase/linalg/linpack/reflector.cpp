#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/BlockReflector.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/reflector.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;
namespace tuning = kernels::tuning;

// Outside these bounds the norm or its reciprocal may lack digits, and x is scaled first.
constexpr double kLeastPreciseNorm = 0x1p-900;
constexpr double kGreatestPreciseNorm = 0x1p1000;
constexpr double kMagnification = 0x1p500;

// columns := H₀ H₁ ... columns, with the vectors in the lower trapezoid of the panel.
void applyPanel(const Submatrix& panel, const Submatrix& columns) {
  double first[BlockReflector::kMostColumns];
  for (Index j = 0; j < panel.columns; ++j) first[j] = *panel.at(j, j);
  BlockReflector(panel, first).apply(columns);
}

// formOrthogonal, one reflection at a time. The columns behind the vectors are given: each is what
// the reflections turn into the column of the result.
void formColumns(const Submatrix& q, Index reflectors) {
  for (Index l = reflectors - 1; l >= 0; --l) {
    double* v = q.at(l, l);
    const Index m = q.rows - l;
    if (*v != 0.0) {
      kernels::active().householder->reflect(m, q.columns - l - 1, l, v, v + q.ld, q.ld);
    }
    // Column l becomes H e₁ = e₁ - v.
    for (Index i = 0; i < m; ++i) v[i] = -v[i];
    v[0] += 1.0;
    std::fill(q.at(0, l), v, 0.0);
  }
}

}  // namespace

double makeReflector(std::ptrdiff_t n, double* x) {
  const auto scale = kernels::active().dense->scale;
  double norm = dnrm2(n, x, 1);
  if (norm == 0.0) return 0.0;
  double magnification = 1.0;
  if (norm < kLeastPreciseNorm) magnification = kMagnification;
  if (norm > kGreatestPreciseNorm) magnification = 1.0 / kMagnification;
  if (magnification != 1.0) {
    scale(n, magnification, x);
    norm = dnrm2(n, x, 1);
  }
  if (x[0] < 0.0) norm = -norm;
  scale(n, 1.0 / norm, x);
  x[0] += 1.0;
  return -norm / magnification;
}

void formOrthogonal(std::ptrdiff_t n, std::ptrdiff_t columns, std::ptrdiff_t reflectors, double* q,
                    std::ptrdiff_t ldq) {
  for (Index j = reflectors; j < columns; ++j) {
    std::fill_n(q + j * ldq, n, 0.0);
    q[j + j * ldq] = 1.0;
  }
  const bool blocked = reflectors >= tuning::kLeastBlockedProduct;
  const Index block = blocked ? tuning::kReflectorColumns : reflectors;
  const Submatrix whole = {q, ldq, n, columns};
  for (Index end = reflectors; end > 0;) {
    const Index begin = (end - 1) / block * block;
    const Index count = end - begin;
    if (blocked && end < columns) {
      applyPanel(whole.from(begin, begin, count), whole.from(begin, end, columns - end));
    }
    formColumns(whole.from(begin, begin, blocked ? count : columns - begin), count);
    for (Index j = begin; j < end; ++j) std::fill_n(whole.at(0, j), begin, 0.0);
    end = begin;
  }
}

}  // namespace vxKilnBase::linpack
