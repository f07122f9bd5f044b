// QR factorization of matrices of a few columns.
//
// The matrix is copied row by row, so that a register holds neighbours in a row. The columns never
// move: `order` tells which stands at each place. Step l takes x, rows l to m - 1 of its column,
// and with d = Aᵀ x in these rows
//
//     ρ = ±√(xᵀ x), with the sign of x₀,   v = x / ρ + e₁,
//     row l := 0 − d / ρ,   row l + i := row l + i − xᵢ (d / ρ + row l) / (ρ + x₀).
//
// Element 0 of d / ρ takes no further sum, so that all sums of a step are one pass over the rows.
// x stays where it is until the end, when it is divided by ρ.
#include <kilnbase/linalg/kernels/Householder.h>
#include <kilnbase/linalg/kernels/Largest.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

constexpr Index kMost = tuning::kSmallQrRegisters * kWidth;

// Sums of squares between these bounds lost nothing to underflow or overflow.
constexpr double kLeastSafeSum = 1e-250;
constexpr double kGreatestSafeSum = 1e+300;

// Whether any lane is not 0.
[[gnu::always_inline]] inline bool any(Lanes mask) {
  return sumOf(mask ? splat(1.0) : Vector{}) > 0.0;
}

[[gnu::always_inline]] inline Lanes isSafe(Vector sum) {
  return (sum >= splat(kLeastSafeSum)) & (sum <= splat(kGreatestSafeSum));
}

// Rows of `vectors` registers.
template <Index vectors>
class SmallQr {
 public:
  SmallQr(Index m, Index n, const double* a, Index lda) : m_(m), n_(n) {
    for (Index i = 0; i < m; i += kWidth) {
      for (Index v = 0; v < vectors; ++v) copyBlock(i, v * kWidth, a, lda);
    }
    for (Index v = 0; v < vectors; ++v) {
      place_[v] = lanes() + v * kWidth;
      live_[v] = ~Lanes{};
    }
    for (Index j = 0; j < n; ++j) {
      order_[j] = static_cast<int>(j);
      scale_[j] = 1.0;
    }
  }

  // Returns whether all sums of squares were safe.
  bool run(Index freeBegin, Index freeEnd, double* qraux) {
    if (!sumFree(freeBegin, freeEnd)) return false;
    const Index steps = m_ < n_ ? m_ : n_;
    for (Index l = 0; l < steps; ++l) {
      if (l >= freeBegin && l < freeEnd) choose(l);
      if (!eliminate(l, qraux)) return false;
    }
    return true;
  }

  void copyBack(double* a, Index lda, int* order) const {
    for (Index i = 0; i < m_; i += kWidth) {
      for (Index v = 0; v < vectors; ++v) copyBlockBack(i, v * kWidth, a, lda);
    }
    for (Index j = 0; j < n_; ++j) order[j] = order_[j];
  }

 private:
  static constexpr Index kStride = vectors * kWidth;
  static constexpr Index kChains = vectors < 4 ? 2 : 1;

  double* rowOf(Index i) { return elements_ + i * kStride; }
  const double* rowOf(Index i) const { return elements_ + i * kStride; }

  // Copies rows i.. of columns j.., a block of the width of a register.
  [[gnu::always_inline]] void copyBlock(Index i, Index j, const double* a, Index lda) {
    const double* from = a + j * lda + i;
    if (i + kWidth <= m_ && j + kWidth <= n_) {
      Vector block[kWidth];
      for (Index c = 0; c < kWidth; ++c) block[c] = load(from + c * lda);
      transpose(block);
      for (Index r = 0; r < kWidth; ++r) store(rowOf(i + r) + j, block[r]);
      return;
    }
    for (Index r = 0; r < kWidth && i + r < m_; ++r) {
      for (Index c = 0; c < kWidth; ++c) rowOf(i + r)[j + c] = j + c < n_ ? from[c * lda + r] : 0.0;
    }
  }

  // The same from rows to columns, each of which goes to its place.
  [[gnu::always_inline]] void copyBlockBack(Index i, Index j, double* a, Index lda) const {
    Vector block[kWidth];
    for (Index r = 0; r < kWidth; ++r) block[r] = i + r < m_ ? load(rowOf(i + r) + j) : Vector{};
    transpose(block);
    for (Index c = 0; c < kWidth && j + c < n_; ++c) {
      const auto place = static_cast<Index>(place_[j / kWidth][c]);
      const Vector column = lanesFrom(place + 1 - i, block[c] * splat(scale_[place]), block[c]);
      double* to = a + place * lda + i;
      if (i + kWidth <= m_) {
        store(to, column);
      } else {
        for (Index r = 0; i + r < m_; ++r) to[r] = column[r];
      }
    }
  }

  [[gnu::always_inline]] void squares(Index first, Vector* sums) const {
    for (Index v = 0; v < vectors; ++v) sums[v] = Vector{};
    for (Index i = first; i < m_; ++i) {
      for (Index v = 0; v < vectors; ++v) {
        const Vector row = load(rowOf(i) + v * kWidth);
        sums[v] += row * row;
      }
    }
  }

  bool sumFree(Index freeBegin, Index freeEnd) {
    squares(0, squares_);
    Lanes unsafe{};
    for (Index v = 0; v < vectors; ++v) {
      const Lanes column = lanes() + v * kWidth;
      unsafe |= (column < splatLanes(n_)) & ~isSafe(squares_[v]);
      const Lanes free = (column >= splatLanes(freeBegin)) & (column < splatLanes(freeEnd));
      squares_[v] = free ? squares_[v] : Vector{};
      references_[v] = free ? squares_[v] : splat(-1.0);
    }
    return !any(unsafe);
  }

  void choose(Index l) {
    Largest found[vectors];
    for (Index v = 0; v < vectors; ++v) found[v] = {squares_[v], place_[v]};
    for (Index distance = 1; distance < vectors; distance *= 2) {
      for (Index v = 0; v + distance < vectors; v += 2 * distance)
        found[v].add(found[v + distance]);
    }
    found[0].join();
    if (!(found[0].value[0] > 0.0)) return;
    const auto place = static_cast<Index>(found[0].row[0]);
    const int pivot = order_[place];
    const int moved = order_[l];
    order_[place] = moved;
    order_[l] = pivot;
    for (Index v = 0; v < vectors; ++v) {
      const Lanes index = lanes() + v * kWidth;
      place_[v] = index == splatLanes(moved) ? splatLanes(place) : place_[v];
      place_[v] = index == splatLanes(pivot) ? splatLanes(l) : place_[v];
    }
  }

  // Sets d for x, rows l to m - 1 of column c. Returns xᵀ x.
  [[gnu::always_inline]] double project(Index l, Index c, Vector (&d)[vectors]) const {
    const double* x = elements_ + c;
    Vector sums[kChains][vectors] = {};
    for (Index i = l; i < m_; ++i) {
      for (Index v = 0; v < vectors; ++v) {
        sums[i % kChains][v] += splat(x[i * kStride]) * load(rowOf(i) + v * kWidth);
      }
    }
    double products[kStride];
    for (Index v = 0; v < vectors; ++v) {
      d[v] = sums[0][v];
      for (Index chain = 1; chain < kChains; ++chain) d[v] += sums[chain][v];
      store(products + v * kWidth, d[v]);
    }
    return products[c];
  }

  // Takes step l. Returns whether xᵀ x is safe.
  bool eliminate(Index l, double* qraux) {
    const Index c = order_[l];
    const double* x = elements_ + c;
    Vector d[vectors];
    const double square = project(l, c, d);
    if (!(square >= kLeastSafeSum && square <= kGreatestSafeSum)) return false;
    qraux[l] = 0.0;
    if (l + 1 == m_) return true;

    const double first = x[l * kStride];
    double rho = __builtin_sqrt(square);
    if (first < 0.0) rho = -rho;
    const double inverse = 1.0 / rho;
    const double factor = -1.0 / (rho + first);
    scale_[l] = inverse;
    qraux[l] = 1.0 + first * inverse;
    Vector g[vectors];
    for (Index v = 0; v < vectors; ++v) {
      const Vector old = load(rowOf(l) + v * kWidth);
      const Vector removed = d[v] * splat(inverse);
      store(rowOf(l) + v * kWidth, live_[v] ? Vector{} - removed : old);
      const Lanes isPivot = lanes() + v * kWidth == splatLanes(c);
      live_[v] &= ~isPivot;
      g[v] = live_[v] ? (removed + old) * splat(factor) : Vector{};
      const Vector left = squares_[v] - removed * removed;
      squares_[v] = (left > Vector{}) & ~isPivot ? left : Vector{};
      references_[v] = isPivot ? splat(-1.0) : references_[v];
    }
    for (Index i = l + 1; i < m_; ++i) {
      const Vector xi = splat(x[i * kStride]);
      for (Index v = 0; v < vectors; ++v) {
        double* row = rowOf(i) + v * kWidth;
        store(row, load(row) + xi * g[v]);
      }
    }
    recompute(l + 1);
    return true;
  }

  // Computes the squares afresh, from row `first` on, where rounding left too few digits. The
  // comparison is 1 + 0.05 square / reference = 1, without a division.
  //
  // Source: LINPACK Users' Guide, chapter 9.
  void recompute(Index first) {
    Lanes lost[vectors], anyLost{};
    for (Index v = 0; v < vectors; ++v) {
      lost[v] = splat(0.05) * squares_[v] <= splat(0x1p-53) * references_[v];
      anyLost |= lost[v];
    }
    if (!any(anyLost)) return;
    Vector sums[vectors];
    squares(first, sums);
    for (Index v = 0; v < vectors; ++v) {
      squares_[v] = lost[v] ? sums[v] : squares_[v];
      references_[v] = lost[v] ? sums[v] : references_[v];
    }
  }

  Vector squares_[vectors];     // of the norms of the free columns below R; others have 0
  Vector references_[vectors];  // each square when last computed from the elements; others have −1
  Lanes place_[vectors];        // of each column
  Lanes live_[vectors];         // the columns that are not yet reflected
  const Index m_;
  const Index n_;
  double scale_[kStride];  // 1 / ρ of each step
  double elements_[kMost * kStride];
  int order_[kStride];  // the column at each place
};

// Takes the code for the least number of registers that hold a row.
template <Index vectors>
bool factorRows(Index m, Index n, Index freeBegin, Index freeEnd, double* a, Index lda,
                double* qraux, int* order) {
  if constexpr (vectors > 1) {
    if (n <= (vectors - 1) * kWidth)
      return factorRows<vectors - 1>(m, n, freeBegin, freeEnd, a, lda, qraux, order);
  }
  SmallQr<vectors> qr(m, n, a, lda);
  if (!qr.run(freeBegin, freeEnd, qraux)) return false;
  qr.copyBack(a, lda, order);
  return true;
}

}  // namespace

bool factorSmallQr(Index m, Index n, Index freeBegin, Index freeEnd, double* a, Index lda,
                   double* qraux, int* order) {
  if (m > kMost || n > kMost) return false;
  return factorRows<tuning::kSmallQrRegisters>(m, n, freeBegin, freeEnd, a, lda, qraux, order);
}

}  // namespace vxKilnBase::kernels::KILN_ISA
