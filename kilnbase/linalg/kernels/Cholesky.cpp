#include <kilnbase/linalg/kernels/Cholesky.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

constexpr Index kStripRows = CholeskyKernels::kStripRows;

// The upper triangle of the diagonal block of a strip: element (i, j) is r[j][i].
using Block = double[kStripRows][kStripRows];

inline __attribute__((always_inline)) void copyBlock(Index size, const double* a, Index lda,
                                                     Block& r) {
#pragma GCC unroll 8
  for (Index j = 0; j < size; ++j) {
#pragma GCC unroll 8
    for (Index i = 0; i <= j; ++i) r[j][i] = a[j * lda + i];
  }
}

inline __attribute__((always_inline)) void copyBack(Index size, const Block& r, double* a,
                                                    Index lda) {
#pragma GCC unroll 8
  for (Index j = 0; j < size; ++j) {
#pragma GCC unroll 8
    for (Index i = 0; i <= j; ++i) a[j * lda + i] = r[j][i];
  }
}

inline __attribute__((always_inline)) Index eliminateBlock(Index size, Block& r) {
#pragma GCC unroll 8
  for (Index k = 0; k < size; ++k) {
    if (!(r[k][k] > 0.0)) return k;
    const double pivot = __builtin_sqrt(r[k][k]);
    r[k][k] = pivot;
#pragma GCC unroll 8
    for (Index j = k + 1; j < size; ++j) {
      r[j][k] /= pivot;
#pragma GCC unroll 8
      for (Index i = k + 1; i <= j; ++i) r[j][i] -= r[i][k] * r[j][k];
    }
  }
  return size;
}

inline __attribute__((always_inline)) Index eliminateDiagonal(Index size, double* a, Index lda,
                                                              Block& r) {
  copyBlock(size, a, lda, r);
  const Index done = eliminateBlock(size, r);
  copyBack(size, r, a, lda);
  return done;
}

// Eliminates the first `done` rows of a strip in kWidth columns, of which `count` are stored.
void eliminateColumns(Index done, Index count, const Block& r, double* a, Index lda) {
  Vector rows[kStripRows];
  for (Index part = 0; part < kStripRows; part += kWidth) {
    for (Index j = 0; j < kWidth; ++j)
      rows[part + j] = j < count ? load(a + j * lda + part) : Vector{};
    transpose(rows + part);
  }
#pragma GCC unroll 8
  for (Index k = 0; k < kStripRows; ++k) {
    if (k == done) break;
    rows[k] /= splat(r[k][k]);
#pragma GCC unroll 8
    for (Index i = k + 1; i < kStripRows; ++i) rows[i] -= splat(r[i][k]) * rows[k];
  }
  for (Index part = 0; part < kStripRows; part += kWidth) {
    transpose(rows + part);
    for (Index j = 0; j < kWidth; ++j) {
      if (j < count) store(a + j * lda + part, rows[part + j]);
    }
  }
}

Index eliminateStrip(Index rows, Index n, double* a, Index lda) {
  Block r;
  if (rows < kStripRows) return eliminateDiagonal(rows, a, lda, r);
  const Index done = eliminateDiagonal(kStripRows, a, lda, r);
  Index j = kStripRows;
  for (; j + kWidth <= n; j += kWidth) eliminateColumns(done, kWidth, r, a + j * lda, lda);
  if (j < n) eliminateColumns(done, n - j, r, a + j * lda, lda);
  return done;
}

// What row m of the factor is made of: the rows above it, in full registers, and a last register
// that holds the rest of them and row m itself. Of the last one the lanes in `used` count.
struct RowSource {
  const double* column;  // of the elements above on the diagonal
  Index full;            // rows in full registers
  Index lastStart;       // first row of the last register
  Lanes used;
  Vector lastFactors;
};

RowSource sourceOf(Index m, Index height, const double* column) {
  const Index full = m / kWidth * kWidth;
  const Index lastStart = full + kWidth <= height ? full : height - kWidth;
  Lanes row;
  for (Index i = 0; i < kWidth; ++i) row[i] = lastStart + i;
  const Lanes used = (row >= full) & (row <= m);
  const Vector factors = row == m ? splat(1.0) : -load(column + lastStart);
  return {column, full, lastStart, used, used ? factors : Vector{}};
}

// The elements of row m in kWidth columns, not yet divided by the pivot.
inline __attribute__((always_inline)) Vector rowElements(const RowSource& source, const double* a,
                                                         Index lda) {
  Vector sums[kWidth];
#pragma GCC unroll 8
  for (Index j = 0; j < kWidth; ++j) {
    const Vector last = load(a + j * lda + source.lastStart);
    sums[j] = (source.used ? last : Vector{}) * source.lastFactors;
  }
  for (Index i = 0; i < source.full; i += kWidth) {
    const Vector factors = load(source.column + i);
#pragma GCC unroll 8
    for (Index j = 0; j < kWidth; ++j) sums[j] -= load(a + j * lda + i) * factors;
  }
  return sumsOf(sums);
}

// Row m in kWidth columns, of which the first `skipped` are left alone.
inline __attribute__((always_inline)) void eliminateRowPart(const RowSource& source, Index m,
                                                            Index skipped, Vector pivot, double* a,
                                                            Index lda, double* diagonal) {
  const Vector row = rowElements(source, a, lda) / pivot;
  const Vector old = load(diagonal);
  store(diagonal, lanesFrom(skipped, old - row * row, old));
#pragma GCC unroll 8
  for (Index j = 0; j < kWidth; ++j) {
    if (j >= skipped) a[j * lda + m] = row[j];
  }
}

void eliminateRowPlain(Index m, Index n, double pivot, const double* column, double* a, Index lda,
                       double* diagonal) {
  for (Index j = 0; j < n; ++j, a += lda) {
    double element = a[m];
    for (Index i = 0; i < m; ++i) element -= column[i] * a[i];
    a[m] = element / pivot;
    diagonal[j] -= a[m] * a[m];
  }
}

void eliminateRow(Index m, Index n, Index height, Index left, double pivot, double* a, Index lda,
                  double* diagonal) {
  const Index rest = n % kWidth;
  if (height < kWidth || left + 1 + n < kWidth) {
    eliminateRowPlain(m, n, pivot, a, a + lda, lda, diagonal);
    return;
  }
  const RowSource source = sourceOf(m, height, a);
  a += lda;
  const Vector divisor = splat(pivot);
  if (rest != 0) {
    const Index start = n - kWidth;
    eliminateRowPart(source, m, kWidth - rest, divisor, a + start * lda, lda, diagonal + start);
  }
  for (Index j = 0; j + kWidth <= n; j += kWidth) {
    eliminateRowPart(source, m, 0, divisor, a + j * lda, lda, diagonal + j);
  }
}

}  // namespace

extern const CholeskyKernels choleskyKernels = {eliminateStrip, eliminateRow};

}  // namespace vxKilnBase::kernels::KILN_ISA
