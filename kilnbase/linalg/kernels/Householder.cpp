#include <kilnbase/linalg/kernels/Householder.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// Adds vector `row` of v times c to `sums`, lanes before `first` left out, after adding to c, in
// place, `count` pending reflections (kAny: as many as there are).
constexpr Index kAny = -1;

// A group of neighbouring columns that updateAndProject handles together.
struct ColumnGroup {
  const PendingReflections& pending;
  const double* factors;  // of the first column of the group
  const double* v;
  double* c;
  Index ldc;
};

// One register of rows of a group. With `partly` true the lanes before `first` are no rows of it.
template <Index count, int columns, bool partly>
[[gnu::always_inline]] inline void projectRows(const ColumnGroup& group, Index row, Index first,
                                               const Vector* fixedFactors, Vector* sums) {
  const PendingReflections& pending = group.pending;
  Vector old[columns], value[columns];
  for (int j = 0; j < columns; ++j) value[j] = old[j] = load(group.c + j * group.ldc + row);
  for (Index i = 0; i < (count == kAny ? pending.count : count); ++i) {
    const Vector u = load(pending.vectors + i * pending.ld + row);
    const double* factors = group.factors + i * pending.factorStride;
    for (int j = 0; j < columns; ++j) {
      value[j] += u * (count == 1 ? fixedFactors[j] : splat(factors[j]));
    }
  }
  Vector v = load(group.v + row);
  if (partly) v = lanesFrom(first, v, Vector{});
  for (int j = 0; j < columns; ++j) {
    if (count != 0) {
      store(group.c + j * group.ldc + row, partly ? lanesFrom(first, value[j], old[j]) : value[j]);
    }
    sums[j] += v * (partly ? lanesFrom(first, value[j], Vector{}) : value[j]);
  }
}

// The same for a single row, where a register would reach out of the matrix.
template <int columns>
void projectRow(const ColumnGroup& group, Index row, double* projections) {
  const PendingReflections& pending = group.pending;
  for (int j = 0; j < columns; ++j) {
    double& c = group.c[j * group.ldc + row];
    for (Index i = 0; i < pending.count; ++i) {
      c += pending.vectors[i * pending.ld + row] * group.factors[i * pending.factorStride + j];
    }
    projections[j] += group.v[row] * c;
  }
}

template <Index count, int columns>
void projectGroup(Index m, Index above, const ColumnGroup& group, double* projections) {
  Vector sums[kWidth] = {};
  Vector fixedFactors[columns] = {};
  for (int j = 0; count == 1 && j < columns; ++j) fixedFactors[j] = splat(group.factors[j]);
  const Index head = m % kWidth;
  if (head > 0 && head + above >= kWidth) {
    projectRows<count, columns, true>(group, head - kWidth, kWidth - head, fixedFactors, sums);
  } else {
    for (Index row = 0; row < head; ++row) projectRow<columns>(group, row, projections);
  }
  for (Index row = head; row < m; row += kWidth) {
    projectRows<count, columns, false>(group, row, 0, fixedFactors, sums);
  }
  const Vector total = sumsOf(sums);
  if constexpr (columns == kWidth) {
    store(projections, load(projections) + total);
  } else {
    for (int j = 0; j < columns; ++j) projections[j] += total[j];
  }
}

// Handles the first columns in groups as large as a register, the rest in groups of half the size
// and so on.
template <Index count, int columns = kWidth>
void projectColumns(Index m, Index n, Index above, ColumnGroup group, double* projections) {
  for (; n >= columns; n -= columns) {
    projectGroup<count, columns>(m, above, group, projections);
    group.factors += columns;
    group.c += columns * group.ldc;
    projections += columns;
  }
  if constexpr (columns > 1) projectColumns<count, columns / 2>(m, n, above, group, projections);
}

void updateAndProject(Index m, Index n, Index above, const PendingReflections& pending,
                      const double* v, double* c, Index ldc, double* projections) {
  const ColumnGroup columns = {pending, pending.factors, v, c, ldc};
  switch (pending.count) {
    case 0:
      return projectColumns<0>(m, n, above, columns, projections);
    case 1:
      return projectColumns<1>(m, n, above, columns, projections);
    default:
      return projectColumns<kAny>(m, n, above, columns, projections);
  }
}

// Written for the compiler to vectorize: no branch, no call.
Index downdateNorms(Index n, const double* __restrict removed, double* __restrict norms,
                    const double* __restrict references) {
  Index lost = 0;
  for (Index j = 0; j < n; ++j) {
    const double norm = norms[j];
    const double ratio = removed[j] / norm;
    const double left = 1.0 - ratio * ratio;
    const double kept = left > 0.0 ? left : 0.0;
    const double shrink = norm / references[j];
    const bool isLost = 1.0 + 0.05 * kept * shrink * shrink == 1.0;
    const double downdated = isLost ? -1.0 : norm * __builtin_sqrt(kept);
    norms[j] = norm == 0.0 ? 0.0 : downdated;
    lost += norms[j] < 0.0 ? 1 : 0;
  }
  return lost;
}

Index indexOfLargest(Index n, const double* x) {
  Vector largest{};
  Index i = 0;
  for (; i + kWidth <= n; i += kWidth) {
    const Vector value = load(x + i);
    largest = value > largest ? value : largest;
  }
  double best = 0.0;
  for (Index lane = 0; lane < kWidth; ++lane) best = largest[lane] > best ? largest[lane] : best;
  for (; i < n; ++i) best = x[i] > best ? x[i] : best;
  if (!(best > 0.0)) return 0;
  Index index = 0;
  while (x[index] != best) ++index;
  return index;
}

}  // namespace

extern const HouseholderKernels householderKernels = {updateAndProject, downdateNorms,
                                                      indexOfLargest};

}  // namespace vxKilnBase::kernels::KILN_ISA
