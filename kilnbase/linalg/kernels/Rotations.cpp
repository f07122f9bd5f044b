#include <utility>

#include <kilnbase/linalg/kernels/Rotations.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

void rotate(Index n, double* x, double* y, double c, double s) {
  const Vector cosine = splat(c), sine = splat(s);
  Index i = 0;
  for (; i + kWidth <= n; i += kWidth) {
    const Vector left = load(x + i), right = load(y + i);
    store(x + i, cosine * left + sine * right);
    store(y + i, cosine * right - sine * left);
  }
  for (; i < n; ++i) {
    const double left = x[i];
    x[i] = c * left + s * y[i];
    y[i] = c * y[i] - s * left;
  }
}

// Calls f(i) for i = 0 to kCount - 1, with each i a constant. Arrays that are indexed by constants
// only stay in registers.
template <Index kCount, class Function>
inline __attribute__((always_inline)) void unrolled(Function f) {
  [&]<Index... i>(std::integer_sequence<Index, i...>) __attribute__((always_inline)) {
    (f(std::integral_constant<Index, i>{}), ...);
  }
  (std::make_integer_sequence<Index, kCount>{});
}

// A piece of a column: kCount neighbouring registers of kLanes doubles each.
template <Index kLanes, Index kCount>
struct Piece {
  typedef double Register __attribute__((vector_size(kLanes * 8)));
  typedef double Unaligned __attribute__((vector_size(kLanes * 8), aligned(8), may_alias));

  static constexpr Index kRegisters = kCount;
  static constexpr Index kRows = kLanes * kCount;

  inline __attribute__((always_inline)) void from(const double* x) {
    unrolled<kCount>([&](auto i) __attribute__((always_inline)) {
      part[i] = *reinterpret_cast<const Unaligned*>(x + i * kLanes);
    });
  }

  inline __attribute__((always_inline)) void from(const Piece& other) {
    unrolled<kCount>([&](auto i) __attribute__((always_inline)) { part[i] = other.part[i]; });
  }

  inline __attribute__((always_inline)) void to(double* x) const {
    unrolled<kCount>([&](auto i) __attribute__((always_inline)) {
      *reinterpret_cast<Unaligned*>(x + i * kLanes) = part[i];
    });
  }

  inline __attribute__((always_inline)) void toScaled(double* x, double factor) const {
    unrolled<kCount>([&](auto i) __attribute__((always_inline)) {
      *reinterpret_cast<Unaligned*>(x + i * kLanes) = part[i] * factor;
    });
  }

  Register part[kCount];
};

// x and y become x + a y and y - b x.
template <class P>
inline __attribute__((always_inline)) void rotatePair(P& x, P& y, double a, double b) {
  unrolled<P::kRegisters>([&](auto i) __attribute__((always_inline)) {
    const auto left = x.part[i];
    x.part[i] = left + y.part[i] * a;
    y.part[i] = y.part[i] - left * b;
  });
}

// Rotations `from` to `to` - 1 of one sweep, for as many rows as P has.
template <class P>
void applySweep(double* x, Index ldx, const FusedSweeps& f, Index sweep, Index from, Index to) {
  if (from >= to) return;
  const double* a = f.data + 2 * sweep * f.ld;
  const double* b = a + f.ld;
  P left, right;
  left.from(x + from * ldx);
  for (Index r = from; r < to; ++r) {
    right.from(x + (r + 1) * ldx);
    rotatePair(left, right, a[r], b[r]);
    left.to(x + r * ldx);
    left.from(right);
  }
  left.to(x + to * ldx);
}

template <class P>
void scaleColumns(double* x, Index ldx, const double* scale, Index from, Index to) {
  P column;
  for (Index j = from; j < to; ++j) {
    column.from(x + j * ldx);
    column.toScaled(x + j * ldx, scale[j]);
  }
}

// The wave through all sweeps: step j, from kFusedSweeps - 1 on, does rotation j - i of each sweep
// i. The columns that the step needs stay in registers, and column j - kFusedSweeps + 1 is final.
template <class P>
void applyWave(double* x, Index ldx, const FusedSweeps& f) {
  constexpr Index kDepth = kFusedSweeps;
  const double* a = f.data;
  const Index ld = f.ld;
  const double* scale = f.scale;
  P column[kDepth + 1];
  unrolled<kDepth>([&](auto i) __attribute__((always_inline)) { column[i].from(x + i * ldx); });
  double* next = x + kDepth * ldx;
  for (Index j = kDepth - 1; j < f.rotations; ++j) {
    column[kDepth].from(next);
    unrolled<kDepth>([&](auto i) __attribute__((always_inline)) {
      rotatePair(column[kDepth - 1 - i], column[kDepth - i], a[2 * i * ld + j - i],
                 a[(2 * i + 1) * ld + j - i]);
    });
    column[0].toScaled(next - kDepth * ldx, scale[j - kDepth + 1]);
    unrolled<kDepth>([&](auto i) __attribute__((always_inline)) { column[i].from(column[i + 1]); });
    next += ldx;
  }
  unrolled<kDepth>([&](auto i)
                       __attribute__((always_inline)) { column[i].to(next + (i - kDepth) * ldx); });
}

template <class P>
void applyToRows(double* x, Index ldx, const FusedSweeps& f) {
  if (f.sweeps < kFusedSweeps || f.rotations < kFusedSweeps) {
    for (Index i = 0; i < f.sweeps; ++i) applySweep<P>(x, ldx, f, i, 0, f.rotations);
    scaleColumns<P>(x, ldx, f.scale, 0, f.rotations + 1);
    return;
  }
  for (Index i = 0; i < kFusedSweeps - 1; ++i) applySweep<P>(x, ldx, f, i, 0, kFusedSweeps - 1 - i);
  applyWave<P>(x, ldx, f);
  for (Index i = 1; i < kFusedSweeps; ++i)
    applySweep<P>(x, ldx, f, i, f.rotations - i, f.rotations);
  scaleColumns<P>(x, ldx, f.scale, f.rotations - kFusedSweeps + 1, f.rotations + 1);
}

// The last rows, in ever narrower pieces.
template <Index kLanes>
void applyToRest(Index m, double* x, Index ldx, const FusedSweeps& f) {
  for (; m >= kLanes; m -= kLanes, x += kLanes) applyToRows<Piece<kLanes, 1>>(x, ldx, f);
  if constexpr (kLanes > 1) applyToRest<kLanes / 2>(m, x, ldx, f);
}

void applySweeps(Index m, double* x, Index ldx, const FusedSweeps& f) {
  using Block = Piece<kWidth, tuning::kRotatedVectors<kWidth>>;
  for (; m >= Block::kRows; m -= Block::kRows, x += Block::kRows) applyToRows<Block>(x, ldx, f);
  applyToRest<kWidth>(m, x, ldx, f);
}

}  // namespace

extern const RotationKernels rotationKernels = {rotate, applySweeps};

}  // namespace vxKilnBase::kernels::KILN_ISA
