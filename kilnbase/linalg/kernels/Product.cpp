// The matrix product in register tiles, after Goto and van de Geijn, "Anatomy of High-Performance
// Matrix Multiplication", ACM Transactions on Mathematical Software 34 (2008), article 12.
//
// C is cut into tiles that fit the registers. The rows of A that a row of tiles needs, a panel, are
// copied to the stack where they stay in the first-level cache; B is read in place, a block of it
// at a time from the second level.
#include <cstdint>
#include <utility>

#include <kilnbase/linalg/kernels/Product.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// A tile is kTileVectors registers high and kTileColumns wide: with the operands it fills the 32
// registers of AVX-512 or the 16 of the other sets.
constexpr Index kTileVectors = kWidth == 2 ? 2 : 3;
constexpr Index kTileColumns = kWidth == 8 ? 8 : 4;
constexpr Index kTileRows = kTileVectors * kWidth;
// A panel and its share of B take a block of this many columns of A and rows of B at a time.
constexpr Index kDepth = 192;
constexpr Index kBlockColumns = 384;
// Products with fewer columns than this read A in place if its columns are contiguous.
constexpr Index kPackedColumns = 64;

// Panels of A in registers' worth: register v of column l of a panel is data[l * stride + v *
// kWidth], but for the last one of each column, which is data[l * stride + lastOffset].
struct Panels {
  const double* data;
  Index stride;
  Index lastOffset;
  Index next;  // from one panel to the next
  Index count;
};

// Where tiles are added, one below the other. Their last register of each column starts at
// lastOffset, which overlaps the one before when the rows are no multiple of the width; the
// `skipped` lanes in front are not changed.
struct Tiles {
  double* data;
  Index ld;
  Index lastOffset;
  Index skipped;
};

inline __attribute__((always_inline)) Index offsetOf(Index v, Index vectors, Index lastOffset) {
  return v + 1 == vectors ? lastOffset : v * kWidth;
}

template <Index vectors, Index columns>
inline __attribute__((always_inline)) void addTile(Index k, Vector alpha, const double* a,
                                                   Index stride, Index lastOffset, MatrixView b,
                                                   double* c, const Tiles& tiles) {
  Vector sum[columns][vectors];
  for (Index j = 0; j < columns; ++j) {
    for (Index v = 0; v < vectors; ++v) sum[j][v] = Vector{};
  }
  const double* row = b.data;
  for (Index l = 0; l < k; ++l, a += stride, row += b.rowStride) {
    Vector column[vectors];
    for (Index v = 0; v < vectors; ++v) column[v] = load(a + offsetOf(v, vectors, lastOffset));
    for (Index j = 0; j < columns; ++j) {
      const Vector factor = splat(row[j * b.columnStride]);
      for (Index v = 0; v < vectors; ++v) sum[j][v] += column[v] * factor;
    }
  }
  for (Index j = 0; j < columns; ++j, c += tiles.ld) {
    for (Index v = 0; v + 1 < vectors; ++v) {
      store(c + v * kWidth, load(c + v * kWidth) + alpha * sum[j][v]);
    }
    const Vector old = load(c + tiles.lastOffset);
    store(c + tiles.lastOffset, lanesFrom(tiles.skipped, old + alpha * sum[j][vectors - 1], old));
  }
}

// Adds the tiles of a strip of C: a panel each, all with the same columns of B.
template <Index vectors, Index columns>
void addStrip(Index k, double alpha, const Panels& panels, MatrixView b, const Tiles& tiles) {
  const Vector factor = splat(alpha);
  const double* a = panels.data;
  double* c = tiles.data;
  for (Index i = 0; i < panels.count; ++i, a += panels.next, c += kTileRows) {
    addTile<vectors, columns>(k, factor, a, panels.stride, panels.lastOffset, b, c, tiles);
  }
}

using StripKernel = void (*)(Index k, double alpha, const Panels& panels, MatrixView b,
                             const Tiles& tiles);

template <Index vectors, Index... j>
StripKernel kernelOf(Index columns, std::integer_sequence<Index, j...>) {
  static constexpr StripKernel kernels[] = {addStrip<vectors, j + 1>...};
  return kernels[columns - 1];
}

StripKernel kernelFor(Index vectors, Index columns) {
  using AllColumns = std::make_integer_sequence<Index, kTileColumns>;
  if (vectors == kTileVectors) return kernelOf<kTileVectors>(columns, AllColumns());
  return vectors == 2 ? kernelOf<2>(columns, AllColumns()) : kernelOf<1>(columns, AllColumns());
}

Index smaller(Index a, Index b) {
  return a < b ? a : b;
}

// The columns of the next tile when `left` are left: full tiles, and two halves in place of a full
// and a very narrow one.
Index tileColumns(Index left) {
  if (left <= kTileColumns) return left;
  return left < 2 * kTileColumns ? (left + 1) / 2 : kTileColumns;
}

MatrixView viewFrom(MatrixView a, Index i, Index j) {
  return {a.data + i * a.rowStride + j * a.columnStride, a.rowStride, a.columnStride};
}

void packContiguous(Index k, const double* a, Index stride, double* to, Index toStride) {
  for (Index l = 0; l < k; ++l) store(to + l * toStride, load(a + l * stride));
}

void packRows(Index k, const double* a, Index rowStride, double* to, Index toStride) {
  Index l = 0;
  for (; l + kWidth <= k; l += kWidth) {
    Vector v[kWidth];
    for (Index i = 0; i < kWidth; ++i) v[i] = load(a + i * rowStride + l);
    transpose(v);
    for (Index i = 0; i < kWidth; ++i) store(to + (l + i) * toStride, v[i]);
  }
  for (; l < k; ++l) {
    for (Index i = 0; i < kWidth; ++i) to[l * toStride + i] = a[i * rowStride + l];
  }
}

// Copies `rows` rows, at most a register's worth, and fills the register with zeros.
void packStrided(Index rows, Index k, MatrixView a, double* to, Index toStride) {
  for (Index l = 0; l < k; ++l) {
    for (Index i = 0; i < kWidth; ++i) {
      to[l * toStride + i] = i < rows ? a.data[i * a.rowStride + l * a.columnStride] : 0.0;
    }
  }
}

// Rows of C that panels of one height cover.
struct Rows {
  Index first;
  Index height;  // of a panel; at least kWidth, unless C has fewer rows
  Index panels;

  Index end() const { return first + height * panels; }
  Index vectors() const { return (height + kWidth - 1) / kWidth; }
  // Where the last register of a panel starts, and how many of its lanes the one before holds.
  Index lastOffset() const { return height < kWidth ? 0 : height - kWidth; }
  Index overlap() const { return height < kWidth ? 0 : vectors() * kWidth - height; }
};

// The next rows when `left` are left: full panels, as many as wanted, or a lower one at the end.
// Instead of a full panel and a rest that fills one register or less, two lower ones.
Rows rowsFrom(Index first, Index left, Index wantedPanels) {
  if (left <= kTileRows) return {first, left, 1};
  const Index rest = left % kTileRows;
  const Index full = left / kTileRows - (rest > 0 && rest <= kWidth ? 1 : 0);
  if (full == 0) return {first, kTileRows - kWidth, 1};
  return {first, kTileRows, smaller(full, wantedPanels)};
}

// Copies a panel of `rows` from A.
void packPanel(const Rows& rows, Index k, MatrixView a, double* to) {
  const Index vectors = rows.vectors();
  const Index stride = vectors * kWidth;
  for (Index v = 0; v < vectors; ++v) {
    const MatrixView from = viewFrom(a, offsetOf(v, vectors, rows.lastOffset()), 0);
    double* part = to + v * kWidth;
    if (rows.height >= kWidth && a.rowStride == 1) {
      packContiguous(k, from.data, a.columnStride, part, stride);
    } else if (rows.height >= kWidth && a.columnStride == 1) {
      packRows(k, from.data, a.rowStride, part, stride);
    } else {
      packStrided(smaller(rows.height, kWidth), k, from, part, stride);
    }
  }
}

Panels pack(const Rows& rows, Index k, MatrixView a, double* to) {
  const Index stride = rows.vectors() * kWidth;
  for (Index i = 0; i < rows.panels; ++i) {
    packPanel(rows, k, viewFrom(a, rows.first + i * rows.height, 0), to + i * stride * k);
  }
  return {to, stride, stride - kWidth, stride * k, rows.panels};
}

// The operands of C += alpha A B, all of it or its upper triangle.
struct Product {
  Index m;
  Index n;
  Index k;
  double alpha;
  MatrixView a;
  MatrixView b;
  double* c;
  Index ldc;
  bool upper;
};

// One block of the product: these rows of C, columns from `begin` to `end`, the k columns of A in
// the panels times the k rows of B.
struct Block {
  Rows rows;
  Panels panels;
  Index k;
  MatrixView b;
};

// Adds a tile of which only some elements are wanted: of its column j the first `height` + j at
// most.
void addPartOfTile(const Product& p, const Block& block, StripKernel kernel, MatrixView b,
                   Index panel, double* c, Index columns, Index height) {
  const Rows& rows = block.rows;
  double sum[kTileRows * kTileColumns] = {};
  Panels one = block.panels;
  one.data += panel * one.next;
  one.count = 1;
  kernel(block.k, p.alpha, one, b, {sum, kTileRows, rows.lastOffset(), rows.overlap()});
  for (Index j = 0; j < columns; ++j) {
    const Index wanted = smaller(rows.height, height + j);
    for (Index i = 0; i < wanted; ++i) c[j * p.ldc + i] += sum[j * kTileRows + i];
  }
}

// How many of the panels lie in the wanted part of C, from column j on, with all their rows.
Index wholePanels(const Product& p, const Rows& rows, Index j) {
  if (rows.height < kWidth) return 0;
  return p.upper ? smaller((j + 1 - rows.first) / rows.height, rows.panels) : rows.panels;
}

void addBlock(const Product& p, const Block& block, Index begin, Index end) {
  const Rows& rows = block.rows;
  for (Index j = begin; j < end;) {
    const Index columns = tileColumns(end - j);
    const StripKernel kernel = kernelFor(rows.vectors(), columns);
    const MatrixView b = viewFrom(block.b, 0, j);
    double* c = p.c + j * p.ldc + rows.first;
    Panels whole = block.panels;
    whole.count = wholePanels(p, rows, j);
    kernel(block.k, p.alpha, whole, b, {c, p.ldc, rows.lastOffset(), rows.overlap()});
    for (Index i = whole.count; i < rows.panels; ++i) {
      const Index height = p.upper ? j + 1 - rows.first - i * rows.height : rows.height;
      addPartOfTile(p, block, kernel, b, i, c + i * rows.height, columns, height);
    }
    j += columns;
  }
}

// The columns from `begin` to `end` of C, k columns of A from column `l` on.
void addColumns(const Product& p, Index l, Index k, Index begin, Index end, double* packed) {
  const bool inPlace = p.a.rowStride == 1 && p.m >= kWidth && end - begin < kPackedColumns;
  const MatrixView a = viewFrom(p.a, 0, l);
  const Index wantedPanels = inPlace ? p.m : kDepth / k;
  const Index m = p.upper ? end : p.m;
  for (Index i = 0; i < m;) {
    const Rows rows = rowsFrom(i, m - i, wantedPanels);
    const Panels panels =
        inPlace ? Panels{a.data + i, a.columnStride, rows.lastOffset(), rows.height, rows.panels}
                : pack(rows, k, a, packed);
    const Index firstColumn = p.upper && i > begin ? i : begin;
    addBlock(p, {rows, panels, k, viewFrom(p.b, l, 0)}, firstColumn, end);
    i = rows.end();
  }
}

// The smallest number of equal parts of at most `limit`, as the size of one.
Index evenPart(Index total, Index limit) {
  const Index parts = (total + limit - 1) / limit;
  return (total + parts - 1) / parts;
}

void multiply(const Product& p) {
  if (p.m <= 0 || p.n <= 0 || p.k <= 0) return;
  double scratch[kTileRows * kDepth + kWidth];
  // The stack may be aligned to 16 bytes only.
  double* packed = scratch + kWidth - reinterpret_cast<std::uintptr_t>(scratch) / 8 % kWidth;
  const Index depth = evenPart(p.k, kDepth);
  const Index width = evenPart(p.n, kBlockColumns);
  for (Index j = 0; j < p.n; j += width) {
    for (Index l = 0; l < p.k; l += depth) {
      addColumns(p, l, smaller(depth, p.k - l), j, smaller(j + width, p.n), packed);
    }
  }
}

}  // namespace

void gemm(Index m, Index n, Index k, double alpha, MatrixView a, MatrixView b, double* c,
          Index ldc) {
  multiply({m, n, k, alpha, a, b, c, ldc, false});
}

void syrkUpper(Index n, Index k, double alpha, MatrixView a, MatrixView b, double* c, Index ldc) {
  multiply({n, n, k, alpha, a, b, c, ldc, true});
}

}  // namespace vxKilnBase::kernels::KILN_ISA
