#include <kilnbase/linalg/kernels/Cholesky.h>
#include <kilnbase/linalg/kernels/Largest.h>
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

// Eliminates the first `done` rows of a strip in `count` columns, at most kWidth.
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

// Where the elements of row m of R come from, r_mj r_mm = a_mj − Σ r_im r_ij: rows 0 to full - 1 in
// whole registers, and a last register with rows `full` to m, whose lanes in `used` count.
struct RowSource {
  const double* column;  // r_im
  Index full;            // a multiple of kWidth
  Lanes used;
  Vector lastFactors;  // −r_im, and 1 for a_mj
};

RowSource sourceOf(Index m, const double* column) {
  const Index full = m / kWidth * kWidth;
  Lanes row;
  for (Index i = 0; i < kWidth; ++i) row[i] = full + i;
  const Lanes used = row <= m;
  const Vector factors = row == m ? splat(1.0) : -load(column + full);
  return {column, full, used, used ? factors : Vector{}};
}

// r_mj r_mm in kWidth columns.
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

// Eliminates row m in kWidth columns but for the first `skipped`.
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

// A small symmetric matrix, stored in full row by row, that is eliminated without moving rows or
// columns: row order[k] stands at place k. An eliminated row is a row of R; the rows subtracted
// from another row are all eliminated ones, at once, when that row's turn comes.
struct SmallMatrix {
  Index size;
  Index stride;  // a multiple of kWidth; elements from `size` on are 0
  double elements[kMostSmall * kMostSmall];
  double diagonal[kMostSmall];    // with all eliminated rows subtracted
  double candidates[kMostSmall];  // `diagonal` where a pivot may come from, otherwise -infinity
  int order[kMostSmall];

  double* row(Index i) { return elements + i * stride; }
};

constexpr double kNever = -__builtin_inf();

// Copies rows i.. of columns j >= i, a block of the width of a register, to both sides of the
// diagonal.
void expandBlock(Index i, Index j, const double* a, Index lda, SmallMatrix& s) {
  Vector columns[kWidth], rows[kWidth];
  for (Index c = 0; c < kWidth; ++c) rows[c] = columns[c] = load(a + (j + c) * lda + i);
  transpose(rows);
  for (Index c = 0; c < kWidth; ++c) {
    if (i == j) {
      store(s.row(j + c) + i, lanesFrom(c + 1, rows[c], columns[c]));
    } else {
      store(s.row(j + c) + i, columns[c]);
      store(s.row(i + c) + j, rows[c]);
    }
  }
}

void expand(Index p, Index freeBegin, Index freeEnd, const double* a, Index lda,
            const double* diagonal, SmallMatrix& s) {
  s.size = p;
  s.stride = (p + kWidth - 1) / kWidth * kWidth;
  for (Index j = 0; j < s.stride; ++j) {
    s.diagonal[j] = j < p ? diagonal[j] : 0.0;
    s.candidates[j] = j >= freeBegin && j < freeEnd ? s.diagonal[j] : kNever;
    s.order[j] = static_cast<int>(j);
  }
  const Index whole = p / kWidth * kWidth;
  for (Index j = 0; j < whole; j += kWidth) {
    for (Index i = 0; i <= j; i += kWidth) expandBlock(i, j, a, lda, s);
  }
  for (Index j = whole; j < p; ++j) {
    for (Index i = 0; i <= j; ++i) s.row(i)[j] = s.row(j)[i] = a[j * lda + i];
  }
  for (Index j = 0; j < p; ++j) {
    for (Index i = p; i < s.stride; ++i) s.row(j)[i] = 0.0;
  }
}

// sums = row l minus the products of rows 0 to k - 1 of R, from column `first` on. Two sums at a
// time hide the latency of the additions.
template <Index vectors>
inline __attribute__((always_inline)) void subtractRows(SmallMatrix& s, Index k, Index l,
                                                        Index first, Vector* sums) {
  Vector others[vectors] = {};
  for (Index v = 0; v < vectors; ++v) sums[v] = load(s.row(l) + first + v * kWidth);
  const auto subtract = [&s, l, first](Index q, Vector* from) {
    const double* above = s.row(s.order[q]);
    const Vector factor = splat(above[l]);
    for (Index v = 0; v < vectors; ++v) from[v] -= factor * load(above + first + v * kWidth);
  };
  Index q = 0;
  for (; q + 2 <= k; q += 2) {
    subtract(q, sums);
    subtract(q + 1, others);
  }
  if (q < k) subtract(q, sums);
  for (Index v = 0; v < vectors; ++v) sums[v] += others[v];
}

// Calls step.run<vectors>(first) for the parts of a row, each as wide as possible.
template <class Step>
inline __attribute__((always_inline)) void forParts(Index stride, const Step& step) {
  Index first = 0;
  for (; first + 4 * kWidth <= stride; first += 4 * kWidth) step.template run<4>(first);
  for (; first + 2 * kWidth <= stride; first += 2 * kWidth) step.template run<2>(first);
  if (first < stride) step.template run<1>(first);
}

// Subtracts rows 0 to k - 1 of R from row l.
struct UpdateRow {
  SmallMatrix& s;
  Index k;
  Index l;

  template <Index vectors>
  void run(Index first) const {
    Vector sums[vectors];
    subtractRows<vectors>(s, k, l, first, sums);
    for (Index v = 0; v < vectors; ++v) store(s.row(l) + first + v * kWidth, sums[v]);
  }
};

// Makes row l row k of R, where r_kk is `pivot`.
struct EliminateRow {
  SmallMatrix& s;
  Index k;
  Index l;
  double pivot;

  template <Index vectors>
  void run(Index first) const {
    Vector sums[vectors];
    subtractRows<vectors>(s, k, l, first, sums);
    for (Index v = 0; v < vectors; ++v) {
      const Index at = first + v * kWidth;
      const Vector elements = sums[v] / splat(pivot);
      store(s.row(l) + at, elements);
      store(s.diagonal + at, load(s.diagonal + at) - elements * elements);
      const Vector left = load(s.candidates + at) - elements * elements;
      store(s.candidates + at, lanesFrom(l - at, lanesFrom(l - at + 1, left, splat(kNever)), left));
    }
  }
};

double largestCandidate(const SmallMatrix& s) {
  Vector largest = splat(kNever);
  for (Index i = 0; i < s.stride; i += kWidth) {
    const Vector candidates = load(s.candidates + i);
    largest = candidates > largest ? candidates : largest;
  }
  return largestOf(largest);
}

// The place of the pivot for place k: of the first largest candidate, or k outside the free places.
// A NaN at place k stays there, which ends the elimination.
Index smallPivot(const SmallMatrix& s, Index k, Index freeBegin, Index freeEnd) {
  if (k < freeBegin || k >= freeEnd || s.diagonal[s.order[k]] != s.diagonal[s.order[k]]) return k;
  const double largest = largestCandidate(s);
  Index place = k;
  while (s.candidates[s.order[place]] != largest) ++place;
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
  expand(p, freeBegin, freeEnd, a, lda, diagonal, s);
  Index done = 0;
  for (; done < p; ++done) {
    const Index place = smallPivot(s, done, freeBegin, freeEnd);
    const int l = s.order[place];
    if (!(s.diagonal[l] > 0.0)) break;
    s.order[place] = s.order[done];
    s.order[done] = l;
    exchanges[done] = static_cast<int>(place);
    const double pivot = __builtin_sqrt(s.diagonal[l]);
    forParts(s.stride, EliminateRow{s, done, l, pivot});
    s.row(l)[l] = pivot;
  }
  for (Index i = done; i < p; ++i) forParts(s.stride, UpdateRow{s, done, s.order[i]});
  copyBack(s, a, lda, diagonal);
  return done;
}

}  // namespace

extern const CholeskyKernels choleskyKernels = {eliminateStrip, eliminateRow, eliminateSmall};

}  // namespace vxKilnBase::kernels::KILN_ISA
