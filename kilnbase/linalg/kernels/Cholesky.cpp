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
  Lanes used;
  Vector lastFactors;
};

RowSource sourceOf(Index m, const double* column) {
  const Index full = m / kWidth * kWidth;
  Lanes row;
  for (Index i = 0; i < kWidth; ++i) row[i] = full + i;
  const Lanes used = row <= m;
  const Vector factors = row == m ? splat(1.0) : -load(column + full);
  return {column, full, used, used ? factors : Vector{}};
}

// The elements of row m in kWidth columns, not yet divided by the pivot.
inline __attribute__((always_inline)) Vector rowElements(const RowSource& source, const double* a,
                                                         Index lda) {
  Vector sums[kWidth];
#pragma GCC unroll 8
  for (Index j = 0; j < kWidth; ++j) {
    const Vector last = load(a + j * lda + source.full);
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

void eliminateRow(Index m, Index n, double pivot, double* a, Index lda, double* diagonal) {
  const RowSource source = sourceOf(m, a);
  const Vector divisor = splat(pivot);
  const Index rest = n % kWidth;
  a += lda;
  if (rest != 0) {
    const Index start = n - kWidth;
    eliminateRowPart(source, m, kWidth - rest, divisor, a + start * lda, lda, diagonal + start);
  }
  for (Index j = 0; j + kWidth <= n; j += kWidth) {
    eliminateRowPart(source, m, 0, divisor, a + j * lda, lda, diagonal + j);
  }
}

constexpr Index kMostSmall = CholeskyKernels::kMostSmall;

// A small symmetric matrix with all its elements, row by row, that is eliminated without moving
// rows or columns: `order` says which row stands at each place. Eliminated rows hold the factor.
struct SmallMatrix {
  Index size;
  Index stride;  // a multiple of the register's width; the elements past `size` are 0
  double elements[kMostSmall * kMostSmall];
  double diagonal[kMostSmall];  // of what is not eliminated yet
  int order[kMostSmall];

  double* row(Index i) { return elements + i * stride; }
};

void expand(Index p, const double* a, Index lda, const double* diagonal, SmallMatrix& s) {
  s.size = p;
  s.stride = (p + kWidth - 1) / kWidth * kWidth;
  for (Index j = 0; j < p; ++j) {
    for (Index i = 0; i <= j; ++i) s.row(i)[j] = s.row(j)[i] = a[j * lda + i];
    s.diagonal[j] = diagonal[j];
    s.order[j] = static_cast<int>(j);
  }
  for (Index j = p; j < s.stride; ++j) {
    for (Index i = 0; i < p; ++i) s.row(i)[j] = 0.0;
    s.diagonal[j] = 0.0;
  }
}

// Subtracts from `vectors` registers' worth of row l, at `first`, what the rows at the first k
// places contribute.
template <Index vectors>
void subtractRows(SmallMatrix& s, Index k, Index l, Index first) {
  Vector sums[vectors];
  double* to = s.row(l) + first;
  for (Index v = 0; v < vectors; ++v) sums[v] = load(to + v * kWidth);
  for (Index q = 0; q < k; ++q) {
    const double* above = s.row(s.order[q]);
    const Vector factor = splat(above[l]);
    for (Index v = 0; v < vectors; ++v) sums[v] -= factor * load(above + first + v * kWidth);
  }
  for (Index v = 0; v < vectors; ++v) store(to + v * kWidth, sums[v]);
}

void subtractRows(SmallMatrix& s, Index k, Index l) {
  Index first = 0;
  for (; first + 4 * kWidth <= s.stride; first += 4 * kWidth) subtractRows<4>(s, k, l, first);
  for (; first + 2 * kWidth <= s.stride; first += 2 * kWidth) subtractRows<2>(s, k, l, first);
  if (first < s.stride) subtractRows<1>(s, k, l, first);
}

// Eliminates the row at place k, whose element on the diagonal becomes `pivot`.
void eliminateSmallRow(SmallMatrix& s, Index k, double pivot) {
  const Index l = s.order[k];
  subtractRows(s, k, l);
  double* row = s.row(l);
  for (Index i = 0; i < s.stride; i += kWidth) {
    const Vector elements = load(row + i) / splat(pivot);
    store(row + i, elements);
    store(s.diagonal + i, load(s.diagonal + i) - elements * elements);
  }
  row[l] = pivot;
}

Index smallPivot(const SmallMatrix& s, Index k, Index freeBegin, Index freeEnd) {
  Index place = k;
  if (k < freeBegin) return place;
  double largest = s.diagonal[s.order[k]];
  for (Index i = k + 1; i < freeEnd; ++i) {
    // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.ArraySubscript): expand fills the order
    const double element = s.diagonal[s.order[i]];
    if (element > largest) {
      largest = element;
      place = i;
    }
  }
  return place;
}

void copyBack(SmallMatrix& s, double* a, Index lda, double* diagonal) {
  for (Index j = 0; j < s.size; ++j) {
    const Index column = s.order[j];
    for (Index i = 0; i <= j; ++i) a[j * lda + i] = s.row(s.order[i])[column];
    diagonal[j] = s.diagonal[column];
  }
}

Index eliminateSmall(Index p, Index freeBegin, Index freeEnd, double* a, Index lda,
                     double* diagonal, int* exchanges) {
  SmallMatrix s;
  expand(p, a, lda, diagonal, s);
  Index done = 0;
  for (; done < p; ++done) {
    const Index place = smallPivot(s, done, freeBegin, freeEnd);
    const int pivotRow = s.order[place];
    if (!(s.diagonal[pivotRow] > 0.0)) break;
    s.order[place] = s.order[done];
    s.order[done] = pivotRow;
    exchanges[done] = static_cast<int>(place);
    eliminateSmallRow(s, done, __builtin_sqrt(s.diagonal[pivotRow]));
  }
  for (Index i = done; i < p; ++i) subtractRows(s, done, s.order[i]);
  copyBack(s, a, lda, diagonal);
  return done;
}

}  // namespace

extern const CholeskyKernels choleskyKernels = {eliminateStrip, eliminateRow, eliminateSmall};

}  // namespace vxKilnBase::kernels::KILN_ISA
