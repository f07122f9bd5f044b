#include <algorithm>
#include <cmath>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/BlockReflector.h>
#include <kilnbase/linalg/linpack/dnrm2.h>
#include <kilnbase/linalg/linpack/reflector.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

// A norm outside these bounds, or its reciprocal, may lack digits: the vector is scaled first.
constexpr double kLeastPreciseNorm = 0x1p-900;
constexpr double kGreatestPreciseNorm = 0x1p1000;
constexpr double kMagnification = 0x1p500;

constexpr Index kBlock = BlockReflector::kMostColumns;  // reflections that are applied together

// From this many reflections on, blocks are worth their overhead.
constexpr Index kBlockedFrom = 64;

double reciprocalOrZero(double x) {
  return x == 0.0 ? 0.0 : 1.0 / x;
}

// Applies the reflections whose vectors, v₀ in its place, stand in the panel.
void applyReflections(const Columns& panel, const Columns& columns) {
  double first[BlockReflector::kMostColumns];
  for (Index j = 0; j < panel.count; ++j) first[j] = *panel.at(j, j);
  BlockReflector(panel, first).apply(columns);
}

// The same as formOrthogonal, one reflection at a time, for columns from `reflectors` on that hold
// the product's effect already.
void formColumns(Index n, Index columns, Index reflectors, double* q, Index ldq) {
  for (Index l = reflectors - 1; l >= 0; --l) {
    double* v = q + l + l * ldq;
    const double factor = reciprocalOrZero(v[0]);
    kernels::active().bidiagonal->reflect(n - l, columns - l - 1, v, factor, v + ldq, ldq);
    for (Index i = 0; i < n - l; ++i) v[i] = -v[i];
    v[0] += 1.0;
    std::fill(q + l * ldq, v, 0.0);
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
  const Index block = reflectors < kBlockedFrom ? reflectors : kBlock;
  for (Index end = reflectors; end > 0;) {
    const Index begin = (end - 1) / block * block;
    double* corner = q + begin + begin * ldq;
    const Index count = end - begin;
    if (end < columns && block == kBlock)
      applyReflections({corner, ldq, n - begin, count},
                       {corner + count * ldq, ldq, n - begin, columns - end});
    formColumns(n - begin, block == kBlock ? count : columns - begin, count, corner, ldq);
    for (Index j = begin; j < end; ++j) std::fill_n(q + j * ldq, begin, 0.0);
    end = begin;
  }
}

}  // namespace vxKilnBase::linpack
