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

// kCount neighbouring registers of kLanes doubles each: a piece of a column.
template <Index kLanes, Index kCount>
struct Piece {
  typedef double Register __attribute__((vector_size(kLanes * 8)));
  typedef double Unaligned __attribute__((vector_size(kLanes * 8), aligned(8), may_alias));

  static constexpr Index kRows = kLanes * kCount;

  static inline __attribute__((always_inline)) Piece from(const double* x) {
    Piece piece;
    for (Index i = 0; i < kCount; ++i)
      piece.part[i] = *reinterpret_cast<const Unaligned*>(x + i * kLanes);
    return piece;
  }

  inline __attribute__((always_inline)) void to(double* x) const {
    for (Index i = 0; i < kCount; ++i) *reinterpret_cast<Unaligned*>(x + i * kLanes) = part[i];
  }

  inline __attribute__((always_inline)) Piece times(double factor) const {
    Piece piece;
    for (Index i = 0; i < kCount; ++i) piece.part[i] = part[i] * factor;
    return piece;
  }

  Register part[kCount];
};

template <class P>
inline __attribute__((always_inline)) void rotatePair(P& x, P& y, double a, double b) {
  for (Index i = 0; i < P::kRows / static_cast<Index>(sizeof(x.part[0]) / 8); ++i) {
    const auto left = x.part[i];
    x.part[i] = left + y.part[i] * a;
    y.part[i] = y.part[i] - left * b;
  }
}

// Rotations `from` to `to` of one sweep, for the first rows of X.
template <class P>
void applySweep(double* x, Index ldx, const FusedSweeps& f, Index sweep, Index from, Index to) {
  if (from >= to) return;
  const double* a = f.data + 2 * sweep * f.ld;
  const double* b = a + f.ld;
  P left = P::from(x + from * ldx);
  for (Index r = from; r < to; ++r) {
    P right = P::from(x + (r + 1) * ldx);
    rotatePair(left, right, a[r], b[r]);
    left.to(x + r * ldx);
    left = right;
  }
  left.to(x + to * ldx);
}

template <class P>
void scaleColumns(double* x, Index ldx, const double* scale, Index from, Index to) {
  for (Index j = from; j < to; ++j) P::from(x + j * ldx).times(scale[j]).to(x + j * ldx);
}

// Steps kFusedSweeps - 1 to the last of the wave: step j does rotation j - i of every sweep i while
// the columns concerned stay in registers, and finishes column j - kFusedSweeps + 1.
template <class P>
void applyWave(double* x, Index ldx, const FusedSweeps& f) {
  constexpr Index kDepth = kFusedSweeps;
  P column[kDepth + 1];
  for (Index i = 0; i < kDepth; ++i) column[i] = P::from(x + i * ldx);
  for (Index j = kDepth - 1; j < f.rotations; ++j) {
    column[kDepth] = P::from(x + (j + 1) * ldx);
#pragma GCC unroll 8
    for (Index i = 0; i < kDepth; ++i) {
      const double* a = f.data + 2 * i * f.ld + (j - i);
      rotatePair(column[kDepth - 1 - i], column[kDepth - i], a[0], a[f.ld]);
    }
    const Index done = j - kDepth + 1;
    column[0].times(f.scale[done]).to(x + done * ldx);
#pragma GCC unroll 8
    for (Index i = 0; i < kDepth; ++i) column[i] = column[i + 1];
  }
  for (Index i = 0; i < kDepth; ++i) column[i].to(x + (f.rotations - kDepth + 1 + i) * ldx);
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

// The rows that are left over, in ever narrower pieces.
template <Index kLanes>
void applyToRest(Index m, double* x, Index ldx, const FusedSweeps& f) {
  for (; m >= kLanes; m -= kLanes, x += kLanes) applyToRows<Piece<kLanes, 1>>(x, ldx, f);
  if constexpr (kLanes > 1) applyToRest<kLanes / 2>(m, x, ldx, f);
}

void applySweeps(Index m, double* x, Index ldx, const FusedSweeps& f) {
  using Block = Piece<kWidth, kWidth == 8 ? 4 : 2>;
  for (; m >= Block::kRows; m -= Block::kRows, x += Block::kRows) applyToRows<Block>(x, ldx, f);
  applyToRest<kWidth>(m, x, ldx, f);
}

}  // namespace

extern const RotationKernels rotationKernels = {rotate, applySweeps};

}  // namespace vxKilnBase::kernels::KILN_ISA
