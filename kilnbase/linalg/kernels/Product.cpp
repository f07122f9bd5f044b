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
// From this depth on the elements of C are worth fetching ahead of their use.
constexpr Index kPrefetchDepth = 64;
// Products with fewer columns than this read A in place if its columns are contiguous.
constexpr Index kPackedColumns = 128;

// Tiles of C beside and below each other: the products of panels of A, each some rows of it, and
// strips of B, each some columns.
struct Grid {
  Index k;
  double alpha;
  bool overwrite;  // C, not add to it

  // Register v of column l of a panel is a[l * stride + v * kWidth], but for the last one of each
  // column, which is a[l * stride + lastOffset].
  Index panels;
  const double* a;
  Index stride;
  Index lastOffset;
  Index nextPanel;  // from one panel to the next

  Index strips;
  MatrixView b;

  // The last register of a tile's column starts at lastRow. When the rows are no multiple of the
  // width it overlaps the one before, and both come to the same sums.
  double* c;
  Index ldc;
  Index lastRow;
};

inline __attribute__((always_inline)) Index offsetOf(Index v, Index vectors, Index lastOffset) {
  return v + 1 == vectors ? lastOffset : v * kWidth;
}

// Fetches a tile of C that will be written some time later.
template <Index vectors, Index columns>
inline __attribute__((always_inline)) void prefetch(const double* c, Index ldc) {
#pragma GCC unroll 1
  for (Index j = 0; j < columns; ++j, c += ldc) {
    for (Index v = 0; v < vectors; ++v) __builtin_prefetch(c + v * kWidth, 1);
  }
}

template <Index vectors, Index columns>
inline __attribute__((always_inline)) void addTile(const Grid& grid, const double* a,
                                                   const double* b, double* c) {
  if (grid.k >= kPrefetchDepth) prefetch<vectors, columns>(c, grid.ldc);
  Vector sum[columns][vectors];
  for (Index j = 0; j < columns; ++j) {
    for (Index v = 0; v < vectors; ++v) sum[j][v] = Vector{};
  }
  for (Index l = 0; l < grid.k; ++l, a += grid.stride, b += grid.b.rowStride) {
    Vector column[vectors];
    for (Index v = 0; v < vectors; ++v) column[v] = load(a + offsetOf(v, vectors, grid.lastOffset));
    for (Index j = 0; j < columns; ++j) {
      const Vector factor = splat(b[j * grid.b.columnStride]);
      for (Index v = 0; v < vectors; ++v) sum[j][v] += column[v] * factor;
    }
  }
  const Vector alpha = splat(grid.alpha);
  for (Index j = 0; j < columns; ++j, c += grid.ldc) {
    if (grid.overwrite) {
      for (Index v = 0; v < vectors; ++v) {
        store(c + offsetOf(v, vectors, grid.lastRow), alpha * sum[j][v]);
      }
      continue;
    }
    const Vector last = load(c + grid.lastRow) + alpha * sum[j][vectors - 1];
    for (Index v = 0; v + 1 < vectors; ++v) {
      store(c + v * kWidth, load(c + v * kWidth) + alpha * sum[j][v]);
    }
    store(c + grid.lastRow, last);
  }
}

template <Index vectors, Index columns>
void addGrid(const Grid& wanted) {
  Grid grid = wanted;
  for (Index strip = 0; strip < grid.strips; ++strip) {
    const double* a = grid.a;
    double* c = grid.c;
    for (Index panel = 0; panel < grid.panels; ++panel) {
      addTile<vectors, columns>(grid, a, grid.b.data, c);
      a += grid.nextPanel;
      c += kTileRows;
    }
    grid.b.data += columns * grid.b.columnStride;
    grid.c += columns * grid.ldc;
  }
}

using GridKernel = void (*)(const Grid& grid);

template <Index vectors, Index... j>
GridKernel kernelOf(Index columns, std::integer_sequence<Index, j...>) {
  static constexpr GridKernel kernels[] = {addGrid<vectors, j + 1>...};
  return kernels[columns - 1];
}

GridKernel kernelFor(Index vectors, Index columns) {
  using AllColumns = std::make_integer_sequence<Index, kTileColumns>;
  if (vectors == kTileVectors) return kernelOf<kTileVectors>(columns, AllColumns());
  return vectors == 2 ? kernelOf<2>(columns, AllColumns()) : kernelOf<1>(columns, AllColumns());
}

Index smaller(Index a, Index b) {
  return a < b ? a : b;
}

MatrixView viewFrom(const MatrixView& a, Index i, Index j) {
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
void packStrided(Index rows, Index k, const MatrixView& a, double* to, Index toStride) {
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
  // Where the last register of a panel starts.
  Index lastOffset() const { return height < kWidth ? 0 : height - kWidth; }
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

// Columns of C that strips of one width cover.
struct Columns {
  Index first;
  Index width;  // of a strip
  Index strips;

  Index end() const { return first + width * strips; }
};

// The next columns when `left` are left: full strips, as many as wanted; at the end two of half the
// width in place of a full and a narrow one.
Columns columnsFrom(Index first, Index left, Index wantedStrips) {
  if (left <= kTileColumns) return {first, left, 1};
  if (left < 2 * kTileColumns) return {first, (left + 1) / 2, 1};
  const Index full = left / kTileColumns - (left % kTileColumns > 0 ? 1 : 0);
  return {first, kTileColumns, smaller(full, wantedStrips)};
}

// Copies a panel of `rows` from A.
void packPanel(const Rows& rows, Index k, const MatrixView& a, double* to) {
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

void pack(const Rows& rows, Index k, const MatrixView& a, double* to) {
  for (Index i = 0; i < rows.panels; ++i) {
    packPanel(rows, k, viewFrom(a, rows.first + i * rows.height, 0), to);
    to += rows.vectors() * kWidth * k;
  }
}

// The operands of C += alpha A B or C := alpha A B, all of it or its upper triangle.
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
  bool overwrite;
};

// How many of the panels have all their rows in the wanted part of C in the columns from j on, and
// how many have any in the columns up to j.
Index wholePanels(const Product& p, const Rows& rows, Index j) {
  if (rows.height < kWidth) return 0;
  return p.upper ? smaller((j + 1 - rows.first) / rows.height, rows.panels) : rows.panels;
}

Index wantedPanels(const Product& p, const Rows& rows, Index j) {
  return p.upper ? smaller((j - rows.first) / rows.height + 1, rows.panels) : rows.panels;
}

// Adds a tile of which only some elements are wanted.
void addPartOfTile(const Product& p, const Rows& rows, const Columns& columns, Index panel,
                   const Grid& grid, GridKernel kernel) {
  double sum[kTileRows * kTileColumns] = {};
  Grid tile = grid;
  tile.panels = 1;
  tile.a += panel * grid.nextPanel;
  tile.c = sum;
  tile.ldc = kTileRows;
  kernel(tile);
  const Index firstRow = panel * rows.height;
  const Index diagonal = columns.first - rows.first - firstRow + 1;
  for (Index j = 0; j < columns.width; ++j) {
    const Index wanted = p.upper ? smaller(rows.height, diagonal + j) : rows.height;
    double* c = grid.c + j * grid.ldc + firstRow;
    for (Index i = 0; i < wanted; ++i) {
      c[i] = (grid.overwrite ? 0.0 : c[i]) + sum[j * kTileRows + i];
    }
  }
}

// Adds a strip that may leave the wanted part of C.
void addPartOfStrip(const Product& p, const Rows& rows, const Columns& columns, Grid& grid,
                    GridKernel kernel) {
  grid.panels = wholePanels(p, rows, columns.first);
  kernel(grid);
  const Index wanted = wantedPanels(p, rows, columns.end() - 1);
  for (Index i = grid.panels; i < wanted; ++i) addPartOfTile(p, rows, columns, i, grid, kernel);
  grid.panels = rows.panels;
}

// These rows of C in the columns from `begin` to `end`; the grid tells the panels of A.
void addRows(const Product& p, const Rows& rows, Grid& grid, const MatrixView& b, Index begin,
             Index end) {
  const bool whole = !p.upper && rows.height >= kWidth;
  for (Index j = begin; j < end;) {
    const Columns columns = columnsFrom(j, end - j, whole ? end : 1);
    grid.strips = columns.strips;
    grid.b = viewFrom(b, 0, j);
    grid.c = p.c + j * p.ldc + rows.first;
    const GridKernel kernel = kernelFor(rows.vectors(), columns.width);
    if (whole) {
      kernel(grid);
    } else {
      addPartOfStrip(p, rows, columns, grid, kernel);
    }
    j = columns.end();
  }
}

// Lets the grid read A where it is, or a copy.
void setPanels(const Rows& rows, const MatrixView& a, double* packed, Grid& grid) {
  grid.panels = rows.panels;
  grid.lastRow = rows.lastOffset();
  if (packed == nullptr) {
    grid.a = a.data + rows.first;
    grid.stride = a.columnStride;
    grid.lastOffset = grid.lastRow;
    grid.nextPanel = rows.height;
  } else {
    pack(rows, grid.k, a, packed);
    grid.a = packed;
    grid.stride = rows.vectors() * kWidth;
    grid.lastOffset = grid.stride - kWidth;
    grid.nextPanel = grid.stride * grid.k;
  }
}

// The columns from `begin` to `end` of C, k columns of A from column `l` on.
void addColumns(const Product& p, Index l, Index k, Index begin, Index end, double* scratch) {
  const bool inPlace = p.a.rowStride == 1 && p.m >= kWidth && end - begin < kPackedColumns;
  double* packed = inPlace ? nullptr : scratch;
  const Index m = p.upper ? end : p.m;
  Grid grid = {};
  grid.k = k;
  grid.alpha = p.alpha;
  grid.overwrite = p.overwrite && l == 0;
  grid.ldc = p.ldc;
  const MatrixView a = viewFrom(p.a, 0, l);
  const MatrixView b = viewFrom(p.b, l, 0);
  for (Index i = 0; i < m;) {
    const Rows rows = rowsFrom(i, m - i, inPlace ? m : kDepth / k);
    setPanels(rows, a, packed, grid);
    addRows(p, rows, grid, b, p.upper && i > begin ? i : begin, end);
    i = rows.end();
  }
}

// The size of the fewest equal parts of at most `limit`.
Index evenPart(Index total, Index limit) {
  if (total <= limit) return total;
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
  multiply({m, n, k, alpha, a, b, c, ldc, false, false});
}

void product(Index m, Index n, Index k, MatrixView a, MatrixView b, double* c, Index ldc) {
  if (k > 0) return multiply({m, n, k, 1.0, a, b, c, ldc, false, true});
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < m; ++i) c[j * ldc + i] = 0.0;
  }
}

void syrkUpper(Index n, Index k, double alpha, MatrixView a, MatrixView b, double* c, Index ldc) {
  multiply({n, n, k, alpha, a, b, c, ldc, true, false});
}

}  // namespace vxKilnBase::kernels::KILN_ISA
