// All that a group of columns needs is inlined into the loop over the groups. A call would pass the
// group through memory, which costs more than a small group's arithmetic.
#include <kilnbase/linalg/kernels/Householder.h>
#include <kilnbase/linalg/kernels/Largest.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

bool factorSmallQr(Index m, Index n, Index freeBegin, Index freeEnd, double* a, Index lda,
                   double* qraux, int* order);

namespace {

// Covers elements 0 to n - 1 with registers that end at element n - 1. `step(i, first)` handles
// elements i to i + kWidth - 1 but for the lanes below `first`, which hold elements in front of
// element 0. Where fewer than these are there (`before`), `singly(count)` handles elements 0 to
// count - 1.
template <class Step, class Singly>
[[gnu::always_inline]] inline void forRegisters(Index n, Index before, Step step, Singly singly) {
  const Index head = n % kWidth;
  if (head > 0 && head + before >= kWidth) {
    step(head - kWidth, kWidth - head);
  } else if (head > 0) {
    singly(head);
  }
  for (Index i = head; i < n; i += kWidth) step(i, 0);
}

// Neighbouring columns of C, at most kWidth, that are handled together.
struct ColumnGroup {
  Index rows;
  Index above;
  double* c;
  Index ldc;

  [[gnu::always_inline]] double* at(Index row, Index j) const { return c + j * ldc + row; }
};

// `projectGroup` for the first `rows` rows.
template <int columns>
[[gnu::always_inline]] inline void projectSingly(const ColumnGroup& group, Index rows,
                                                 const PendingReflections& pending, const double* v,
                                                 double* projections) {
  for (int j = 0; j < columns; ++j) {
    for (Index row = 0; row < rows; ++row) {
      double& c = *group.at(row, j);
      for (Index i = 0; i < pending.count; ++i) {
        c += pending.vectors[i * pending.ld + row] * pending.factors[i * pending.factorStride + j];
      }
      projections[j] += v[row] * c;
    }
  }
}

// projections[j] += the sum of the lanes of sums[j].
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

// C += V F, then projections += Cᵀ v. Where pending.count is a constant 0, C is not written.
template <int columns>
[[gnu::always_inline]] inline void projectGroup(const ColumnGroup& group,
                                                const PendingReflections& pending, const double* v,
                                                double* projections) {
  Vector sums[kWidth];
  for (int j = 0; j < columns; ++j) sums[j] = Vector{};
  const auto step = [&](Index row, Index first) __attribute__((always_inline)) {
    Vector old[columns], value[columns];
    for (int j = 0; j < columns; ++j) value[j] = old[j] = load(group.at(row, j));
    for (Index i = 0; i < pending.count; ++i) {
      const Vector u = load(pending.vectors + i * pending.ld + row);
      const double* factors = pending.factors + i * pending.factorStride;
      for (int j = 0; j < columns; ++j) value[j] += u * splat(factors[j]);
    }
    const Vector weight = lanesFrom(first, load(v + row), Vector{});
    for (int j = 0; j < columns; ++j) {
      if (pending.count > 0) store(group.at(row, j), lanesFrom(first, value[j], old[j]));
      sums[j] += weight * lanesFrom(first, value[j], Vector{});
    }
  };
  forRegisters(
      group.rows, group.above, step, [&](Index rows) __attribute__((always_inline)) {
        projectSingly<columns>(group, rows, pending, v, projections);
      });
  addSums<columns>(sums, projections);
}

// C += v fᵀ.
template <int columns>
[[gnu::always_inline]] inline void addToGroup(const ColumnGroup& group, const double* v,
                                              const double* f) {
  Vector factors[columns];
  for (int j = 0; j < columns; ++j) factors[j] = splat(f[j]);
  const auto step = [&](Index row, Index first) __attribute__((always_inline)) {
    const Vector weight = load(v + row);
    for (int j = 0; j < columns; ++j) {
      const Vector old = load(group.at(row, j));
      store(group.at(row, j), lanesFrom(first, old + weight * factors[j], old));
    }
  };
  forRegisters(
      group.rows, group.above, step, [&](Index rows) __attribute__((always_inline)) {
        for (int j = 0; j < columns; ++j) {
          for (Index row = 0; row < rows; ++row) *group.at(row, j) += v[row] * f[j];
        }
      });
}

// Calls `handle` for column j with `count`, which is at most `most`, as a constant.
template <int most, class Handle>
[[gnu::always_inline]] inline void withConstant(Index count, Index j, Handle handle) {
  if constexpr (most > 0) {
    if (count == most) return handle.template operator()<most>(j);
    withConstant<most - 1>(count, j, handle);
  }
}

// Calls `handle` for the first column j of each group of kWidth columns, and of the group of the
// rest. The number of columns in the group is a constant.
template <class Handle>
[[gnu::always_inline]] inline void forGroups(Index n, Handle handle) {
  Index j = 0;
  for (; j + kWidth <= n; j += kWidth) handle.template operator()<kWidth>(j);
  withConstant<kWidth - 1>(n - j, j, handle);
}

void updateAndProject(Index m, Index n, Index above, const PendingReflections& pending,
                      const double* v, double* c, Index ldc, double* projections) {
  forGroups(
      n, [&]<int columns>(Index j) __attribute__((always_inline)) {
        const ColumnGroup group = {m, above, c + j * ldc, ldc};
        if (pending.count > 0) {
          PendingReflections ofGroup = pending;
          ofGroup.factors += j;
          projectGroup<columns>(group, ofGroup, v, projections + j);
        } else {
          projectGroup<columns>(group, {}, v, projections + j);
        }
      });
}

void reflect(Index m, Index n, Index above, const double* v, double* c, Index ldc) {
  const double scale = -1.0 / v[0];
  forGroups(
      n, [&]<int columns>(Index j) __attribute__((always_inline)) {
        const ColumnGroup group = {m, above, c + j * ldc, ldc};
        double f[kWidth] = {};
        projectGroup<columns>(group, {}, v, f);
        for (int i = 0; i < columns; ++i) f[i] *= scale;
        addToGroup<columns>(group, v, f);
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
  double best = largestOf(largest);
  for (; i < n; ++i) best = x[i] > best ? x[i] : best;
  if (!(best > 0.0)) return 0;
  Index index = 0;
  while (x[index] != best) ++index;
  return index;
}

}  // namespace

extern const HouseholderKernels householderKernels = {updateAndProject, reflect, downdateNorms,
                                                      indexOfLargest, factorSmallQr};

}  // namespace vxKilnBase::kernels::KILN_ISA
