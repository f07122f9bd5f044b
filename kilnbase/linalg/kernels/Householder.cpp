#include <kilnbase/linalg/kernels/Householder.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// A number of pending reflections that is known only when they are added.
constexpr Index kAny = -1;

// A group of neighbouring columns that updateAndProject handles together.
struct ColumnGroup {
  PendingReflections pending;  // its factors are those of the group
  const double* v;
  double* c;
  Index ldc;
};

// One register of rows. With `partly` true the lanes before `first` are not among the rows.
template <Index count, int columns, bool partly>
[[gnu::always_inline]] inline void projectRows(const ColumnGroup& group, Index row, Index first,
                                               const Vector* fixedFactors, Vector* sums) {
  const PendingReflections& pending = group.pending;
  Vector old[columns], value[columns];
  for (int j = 0; j < columns; ++j) value[j] = old[j] = load(group.c + j * group.ldc + row);
  for (Index i = 0; i < (count == kAny ? pending.count : count); ++i) {
    const Vector u = load(pending.vectors + i * pending.ld + row);
    const double* factors = pending.factors + i * pending.factorStride;
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

// The first `rows` rows one by one, where a register would reach out of the matrix.
void projectSingleRows(const ColumnGroup& group, Index rows, int columns, double* projections) {
  const PendingReflections& pending = group.pending;
  for (int j = 0; j < columns; ++j) {
    for (Index row = 0; row < rows; ++row) {
      double& c = group.c[j * group.ldc + row];
      for (Index i = 0; i < pending.count; ++i) {
        c += pending.vectors[i * pending.ld + row] * pending.factors[i * pending.factorStride + j];
      }
      projections[j] += group.v[row] * c;
    }
  }
}

template <Index count, int columns>
void projectGroup(Index m, Index above, const ColumnGroup& columnGroup, double* projections) {
  const ColumnGroup group = columnGroup;  // out of reach of the stores to the columns
  Vector sums[kWidth], fixedFactors[columns];
  for (int j = 0; j < kWidth; ++j) sums[j] = Vector{};
  for (int j = 0; j < columns; ++j) {
    fixedFactors[j] = count == 1 ? splat(group.pending.factors[j]) : Vector{};
  }
  const Index head = m % kWidth;
  if (head > 0 && head + above >= kWidth) {
    projectRows<count, columns, true>(group, head - kWidth, kWidth - head, fixedFactors, sums);
  } else if (head > 0) {
    projectSingleRows(columnGroup, head, columns, projections);
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

// A last group of fewer columns than a register has doubles.
template <Index count, int columns = kWidth - 1>
void projectRest(Index m, Index n, Index above, const ColumnGroup& group, double* projections) {
  if (n == columns) {
    projectGroup<count, columns>(m, above, group, projections);
  } else if constexpr (columns > 1) {
    projectRest<count, columns - 1>(m, n, above, group, projections);
  }
}

template <Index count>
void projectColumns(Index m, Index n, Index above, ColumnGroup group, double* projections) {
  for (; n >= kWidth; n -= kWidth) {
    projectGroup<count, kWidth>(m, above, group, projections);
    group.pending.factors += kWidth;
    group.c += kWidth * group.ldc;
    projections += kWidth;
  }
  projectRest<count>(m, n, above, group, projections);
}

void updateAndProject(Index m, Index n, Index above, const PendingReflections& pending,
                      const double* v, double* c, Index ldc, double* projections) {
  const ColumnGroup columns = {pending, v, c, ldc};
  switch (pending.count) {
    case 0:
      return projectColumns<0>(m, n, above, columns, projections);
    case 1:
      return projectColumns<1>(m, n, above, columns, projections);
    default:
      return projectColumns<kAny>(m, n, above, columns, projections);
  }
}

[[gnu::always_inline]] inline Vector squareRoot(Vector value) {
  for (int i = 0; i < kWidth; ++i) value[i] = __builtin_sqrt(value[i]);
  return value;
}

// The arithmetic of downdateNorms for a register of norms.
[[gnu::always_inline]] inline Vector downdated(Vector removed, Vector norm, Vector reference) {
  const Vector one = splat(1.0);
  const Vector ratio = removed / norm;
  const Vector left = one - ratio * ratio;
  const Vector kept = left > Vector{} ? left : Vector{};
  const Vector shrink = norm / reference;
  const Vector result =
      one + splat(0.05) * kept * shrink * shrink == one ? splat(-1.0) : norm * squareRoot(kept);
  return norm == Vector{} ? norm : result;
}

[[gnu::always_inline]] inline bool anyNegative(Vector value) {
  return sumOf(value < Vector{} ? splat(1.0) : Vector{}) > 0.0;
}

bool downdateNorms(Index n, Index before, const double* removed, double* norms,
                   const double* references) {
  Vector least{};
  const auto downdateFrom = [&](Index j, Index first) {
    const Vector old = load(norms + j);
    const Vector norm =
        downdated(load(removed + j), lanesFrom(first, old, Vector{}), load(references + j));
    store(norms + j, lanesFrom(first, norm, old));
    least = norm < least ? norm : least;
  };
  const Index head = n % kWidth;
  if (head > 0 && head + before >= kWidth) {
    downdateFrom(head - kWidth, kWidth - head);
  } else {
    for (Index j = 0; j < head; ++j) {
      const Vector norm = downdated(splat(removed[j]), splat(norms[j]), splat(references[j]));
      norms[j] = norm[0];
      least = norm < least ? norm : least;
    }
  }
  for (Index j = head; j < n; j += kWidth) downdateFrom(j, 0);
  return anyNegative(least);
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
