#include <kilnbase/linalg/kernels/Householder.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// Takes n elements a register at a time: `step(i, first)` is for those from i on, of which the
// lanes before `first` are not among them; such lanes need `before` elements in front. Where there
// are none, `rest(count)` is for the first few.
template <class Step, class Rest>
[[gnu::always_inline]] inline void forRegisters(Index n, Index before, Step step, Rest rest) {
  const Index head = n % kWidth;
  if (head > 0 && head + before >= kWidth) {
    step(head - kWidth, kWidth - head);
  } else if (head > 0) {
    rest(head);
  }
  for (Index i = head; i < n; i += kWidth) step(i, 0);
}

// Neighbouring columns that are handled together.
struct ColumnGroup {
  Index rows;
  Index above;
  double* c;
  Index ldc;
};

// Whether something is pending, known when the loop is compiled.
enum class Pending { kNone, kSome };

// The first `rows` rows one by one, where a register would reach out of the matrix.
void projectSingleRows(const ColumnGroup& group, Index rows, int columns,
                       const PendingReflections& pending, const double* v, double* projections) {
  for (int j = 0; j < columns; ++j) {
    for (Index row = 0; row < rows; ++row) {
      double& c = group.c[j * group.ldc + row];
      for (Index i = 0; i < pending.count; ++i) {
        c += pending.vectors[i * pending.ld + row] * pending.factors[i * pending.factorStride + j];
      }
      projections[j] += v[row] * c;
    }
  }
}

// Adds `sums`, one register for each column, to the projections.
template <int columns>
[[gnu::always_inline]] inline void addSums(Vector* sums, double* projections) {
  for (int j = columns; j < kWidth; ++j) sums[j] = Vector{};
  const Vector total = sumsOf(sums);
  if constexpr (columns == kWidth) {
    store(projections, load(projections) + total);
  } else {
    for (int j = 0; j < columns; ++j) projections[j] += total[j];
  }
}

template <Pending kind, int columns>
void projectGroup(ColumnGroup group, PendingReflections pending, const double* v,
                  double* projections) {
  Vector sums[kWidth];
  for (int j = 0; j < columns; ++j) sums[j] = Vector{};
  const auto step = [&](Index row, Index first) __attribute__((always_inline)) {
    Vector old[columns], value[columns];
    for (int j = 0; j < columns; ++j) value[j] = old[j] = load(group.c + j * group.ldc + row);
    for (Index i = 0; kind == Pending::kSome && i < pending.count; ++i) {
      const Vector u = load(pending.vectors + i * pending.ld + row);
      const double* factors = pending.factors + i * pending.factorStride;
      for (int j = 0; j < columns; ++j) value[j] += u * splat(factors[j]);
    }
    const Vector weight = lanesFrom(first, load(v + row), Vector{});
    for (int j = 0; j < columns; ++j) {
      if (kind == Pending::kSome) {
        store(group.c + j * group.ldc + row, lanesFrom(first, value[j], old[j]));
      }
      sums[j] += weight * lanesFrom(first, value[j], Vector{});
    }
  };
  forRegisters(group.rows, group.above, step, [&](Index count) {
    projectSingleRows(group, count, columns, pending, v, projections);
  });
  addSums<columns>(sums, projections);
}

// Adds factors[j] times v to each column.
template <int columns>
void addToGroup(ColumnGroup group, const double* v, const double* factors) {
  Vector factor[columns];
  for (int j = 0; j < columns; ++j) factor[j] = splat(factors[j]);
  const auto step = [&](Index row, Index first) __attribute__((always_inline)) {
    const Vector weight = load(v + row);
    for (int j = 0; j < columns; ++j) {
      double* c = group.c + j * group.ldc + row;
      const Vector old = load(c);
      store(c, lanesFrom(first, old + weight * factor[j], old));
    }
  };
  forRegisters(group.rows, group.above, step, [&](Index count) {
    for (int j = 0; j < columns; ++j) {
      for (Index row = 0; row < count; ++row) group.c[j * group.ldc + row] += v[row] * factors[j];
    }
  });
}

template <int columns>
void reflectGroup(ColumnGroup group, const double* v) {
  double factors[kWidth] = {};
  projectGroup<Pending::kNone, columns>(group, {}, v, factors);
  const double scale = -1.0 / v[0];
  for (int j = 0; j < columns; ++j) factors[j] *= scale;
  addToGroup<columns>(group, v, factors);
}

// Calls `handle` with `count`, at most `most`, as a constant.
template <int most, class Handle>
[[gnu::always_inline]] inline void withConstant(Index count, Index j, Handle handle) {
  if constexpr (most > 0) {
    if (count == most) return handle.template operator()<most>(j);
    withConstant<most - 1>(count, j, handle);
  }
}

// Calls `handle` for the n columns of the matrix in groups of kWidth and, at last, of those that
// are left, with the number of columns as a constant.
template <class Handle>
[[gnu::always_inline]] inline void forGroups(Index n, Handle handle) {
  Index j = 0;
  for (; j + kWidth <= n; j += kWidth) handle.template operator()<kWidth>(j);
  withConstant<kWidth - 1>(n - j, j, handle);
}

void updateAndProject(Index m, Index n, Index above, const PendingReflections& pending,
                      const double* v, double* c, Index ldc, double* projections) {
  forGroups(n, [&]<int columns>(Index j) {
    const ColumnGroup group = {m, above, c + j * ldc, ldc};
    PendingReflections groupPending = pending;
    groupPending.factors += j;
    if (pending.count == 0) {
      projectGroup<Pending::kNone, columns>(group, groupPending, v, projections + j);
    } else {
      projectGroup<Pending::kSome, columns>(group, groupPending, v, projections + j);
    }
  });
}

void reflect(Index m, Index n, Index above, const double* v, double* c, Index ldc) {
  forGroups(n, [&]<int columns>(Index j) {
    reflectGroup<columns>({m, above, c + j * ldc, ldc}, v);
  });
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

bool downdateNorms(Index n, Index before, const double* removed, double* norms,
                   const double* references) {
  Vector least{};
  const auto step = [&](Index j, Index first) __attribute__((always_inline)) {
    const Vector old = load(norms + j);
    const Vector norm =
        downdated(load(removed + j), lanesFrom(first, old, Vector{}), load(references + j));
    store(norms + j, lanesFrom(first, norm, old));
    least = norm < least ? norm : least;
  };
  forRegisters(n, before, step, [&](Index count) {
    for (Index j = 0; j < count; ++j) {
      const Vector norm = downdated(splat(removed[j]), splat(norms[j]), splat(references[j]));
      norms[j] = norm[0];
      least = norm < least ? norm : least;
    }
  });
  return sumOf(least < Vector{} ? splat(1.0) : Vector{}) > 0.0;
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

extern const HouseholderKernels householderKernels = {updateAndProject, reflect, downdateNorms,
                                                      indexOfLargest};

}  // namespace vxKilnBase::kernels::KILN_ISA
