// Matrix times vector: A x goes down the rows in tiles of up to kTileVectors registers, Aᵀ x along
// the columns, eight at a time.
#include <utility>

#include <kilnbase/linalg/kernels/Dense.h>
#include <kilnbase/linalg/kernels/MatrixVector.h>
#include <kilnbase/linalg/kernels/Simd.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

constexpr Index kTileVectors = tuning::kVectorTile;
constexpr Index kTileRows = kTileVectors * kWidth;
constexpr Index kMostDots = 8;

// Register v of a column starts at row v * kWidth, the last one at row `last`. Where the rows of
// the tile are no multiple of kWidth, the last register overlaps the one before; the rows that both
// hold get the same sums.
template <Index vectors>
inline __attribute__((always_inline)) Index rowOf(Index v, Index last) {
  return v + 1 == vectors ? last : v * kWidth;
}

inline __attribute__((always_inline)) void prefetch(const double* rows) {
  for (Index v = 0; v < kTileVectors; ++v) __builtin_prefetch(rows + v * kWidth);
}

// y += alpha A x, or y := alpha A x, for a tile of rows. A low tile has sums for several columns,
// so that no addition waits for the one before.
template <Index vectors, bool fetchNext = false>
void addTile(Index last, Index n, double alpha, const double* a, Index lda, const double* x,
             double* y, bool overwrite) {
  constexpr Index kChains = vectors <= 2 ? 4 : vectors <= 6 ? 2 : 1;
  Vector sums[kChains][vectors];
  for (Index c = 0; c < kChains; ++c) {
    for (Index v = 0; v < vectors; ++v) sums[c][v] = Vector{};
  }
  Index j = 0;
  for (; j + kChains <= n; j += kChains) {
    for (Index c = 0; c < kChains; ++c) {
      const Vector factor = splat(x[j + c]);
      const double* column = a + (j + c) * lda;
      if constexpr (fetchNext) prefetch(column + kTileRows);
      for (Index v = 0; v < vectors; ++v) {
        sums[c][v] += load(column + rowOf<vectors>(v, last)) * factor;
      }
    }
  }
  for (; j < n; ++j) {
    const Vector factor = splat(x[j]);
    for (Index v = 0; v < vectors; ++v) {
      sums[0][v] += load(a + j * lda + rowOf<vectors>(v, last)) * factor;
    }
  }
  const Vector factor = splat(alpha);
  Vector result[vectors];
  for (Index v = 0; v < vectors; ++v) {
    Vector sum = sums[0][v];
    for (Index c = 1; c < kChains; ++c) sum += sums[c][v];
    result[v] = factor * sum;
    if (!overwrite) result[v] += load(y + rowOf<vectors>(v, last));
  }
  for (Index v = 0; v < vectors; ++v) store(y + rowOf<vectors>(v, last), result[v]);
}

// y += alpha A x, or y := alpha A x, where registers do not pay: a row of A begins `rowStride`
// after the one before, its elements are `stride` apart.
void addRows(Index m, Index n, double alpha, const double* a, Index rowStride, Index stride,
             const double* x, double* y, bool overwrite) {
  for (Index i = 0; i < m; ++i, a += rowStride) {
    double sum = 0.0;
    for (Index j = 0; j < n; ++j) sum += a[j * stride] * x[j];
    y[i] = (overwrite ? 0.0 : y[i]) + alpha * sum;
  }
}

using TileKernel = decltype(&addTile<1>);

template <Index... v>
TileKernel kernelFor(Index vectors, std::integer_sequence<Index, v...>) {
  static constexpr TileKernel kTiles[] = {addTile<v + 1>...};
  return kTiles[vectors - 1];
}

TileKernel tileFor(Index vectors, Index n) {
  if (vectors == kTileVectors && n > tuning::kMostUnblockedColumns)
    return addTile<kTileVectors, true>;
  return kernelFor(vectors, std::make_integer_sequence<Index, kTileVectors>());
}

// The rows of the next tile when `left` are left: after it, no rows or at least kWidth are left.
Index tileRows(Index left) {
  if (left <= kTileRows) return left;
  return left < kTileRows + kWidth ? kTileRows - kWidth : kTileRows;
}

// y += alpha Aᵀ x, or y := alpha Aᵀ x, for this number of columns and at least kWidth rows.
template <Index columns>
void addDots(Index m, double alpha, const double* a, Index lda, const double* x, double* y,
             bool overwrite) {
  constexpr Index kSums = (columns + kWidth - 1) / kWidth * kWidth;
  Vector sums[kSums] = {};
  Index i = 0;
  for (; i + kWidth <= m; i += kWidth) {
    const Vector part = load(x + i);
    for (Index j = 0; j < columns; ++j) sums[j] += load(a + j * lda + i) * part;
  }
  if (i < m) {
    const Index last = m - kWidth;
    const Vector part = load(x + last);
    for (Index j = 0; j < columns; ++j) {
      sums[j] += lanesFrom(i - last, load(a + j * lda + last) * part, Vector{});
    }
  }
  for (Index j = 0; j < columns; j += kWidth) {
    const Vector dots = splat(alpha) * sumsOf(sums + j);
    if (j + kWidth <= columns) {
      store(y + j, overwrite ? dots : load(y + j) + dots);
    } else {
      for (Index l = j; l < columns; ++l) y[l] = (overwrite ? 0.0 : y[l]) + dots[l - j];
    }
  }
}

// y += alpha A x, or y := alpha A x.
void multiply(Index m, Index n, double alpha, const double* a, Index lda, const double* x,
              double* y, bool overwrite) {
  if (m < kWidth) return addRows(m, n, alpha, a, 1, lda, x, y, overwrite);
  const Index block = n > tuning::kMostUnblockedColumns ? tuning::kColumnBlock : n;
  for (Index j = 0; j < n; j += block) {
    const Index columns = n - j < block ? n - j : block;
    for (Index i = 0, rows = 0; i < m; i += rows) {
      rows = tileRows(m - i);
      const TileKernel add = tileFor((rows + kWidth - 1) / kWidth, n);
      add(rows - kWidth, columns, alpha, a + j * lda + i, lda, x + j, y + i, overwrite && j == 0);
    }
  }
}

using DotsKernel = decltype(&addDots<1>);

template <Index... j>
DotsKernel dotsFor(Index columns, std::integer_sequence<Index, j...>) {
  static constexpr DotsKernel kDots[] = {addDots<j + 1>...};
  return kDots[columns - 1];
}

// y += alpha Aᵀ x, or y := alpha Aᵀ x.
void multiplyTransposed(Index m, Index n, double alpha, const double* a, Index lda, const double* x,
                        double* y, bool overwrite) {
  if (m < kWidth) return addRows(n, m, alpha, a, lda, 1, x, y, overwrite);
  for (; n > kMostDots; n -= kMostDots, a += kMostDots * lda, y += kMostDots) {
    addDots<kMostDots>(m, alpha, a, lda, x, y, overwrite);
  }
  if (n <= 0) return;
  const auto add = dotsFor(n, std::make_integer_sequence<Index, kMostDots>());
  add(m, alpha, a, lda, x, y, overwrite);
}

}  // namespace

void gemv(Index m, Index n, double alpha, const double* a, Index lda, const double* x, double* y) {
  multiply(m, n, alpha, a, lda, x, y, false);
}

void gemvTransposed(Index m, Index n, double alpha, const double* a, Index lda, const double* x,
                    double* y) {
  multiplyTransposed(m, n, alpha, a, lda, x, y, false);
}

void productVector(Index m, Index n, const double* a, Index lda, const double* x, double* y) {
  if (kWidth <= m && m <= kTileRows && n <= tuning::kMostUnblockedColumns) {
    return tileFor((m + kWidth - 1) / kWidth, n)(m - kWidth, n, 1.0, a, lda, x, y, true);
  }
  multiply(m, n, 1.0, a, lda, x, y, true);
  for (Index i = 0; n == 0 && i < m; ++i) y[i] = 0.0;
}

void productVectorTransposed(Index m, Index n, const double* a, Index lda, const double* x,
                             double* y) {
  multiplyTransposed(m, n, 1.0, a, lda, x, y, true);
}

}  // namespace vxKilnBase::kernels::KILN_ISA
