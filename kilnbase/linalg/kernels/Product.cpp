// The matrix product in register tiles, after Goto and van de Geijn, "Anatomy of High-Performance
// Matrix Multiplication", ACM Transactions on Mathematical Software 34 (2008), article 12.
//
// C is cut into tiles that fit into the registers, in rows and columns of tiles. A panel holds the
// rows of A for one row of tiles; it is copied to the stack and stays in the first-level cache. A
// strip holds the columns of B for one column of tiles; it is read in place, from a block of B that
// stays in the second-level cache. A large product copies many panels at a time into the caller's
// scratch, where they stay in the second-level cache, and strips where those would touch many
// pages.
#include <cstdint>
#include <utility>

#include <kilnbase/linalg/kernels/Product.h>
#include <kilnbase/linalg/kernels/Simd.h>
#include <kilnbase/linalg/kernels/Tuning.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

constexpr Index kTileVectors = tuning::kTileVectors<kWidth>;
constexpr Index kTileColumns = tuning::kTileColumns<kWidth>;
constexpr Index kTileRows = kTileVectors * kWidth;
constexpr Index kDepth = tuning::kPanelDepth;

// A grid of tiles of C: C += alpha A B, or C := alpha A B, for some panels of A and strips of B.
struct Grid {
  Index k;  // columns of A and rows of B
  double alpha;
  bool overwrite;  // C := alpha A B

  // Register v of column l of a panel starts at a[l * stride + v * kWidth], the last register of
  // the column at a[l * stride + lastOffset].
  Index panels;
  const double* a;
  Index stride;
  Index lastOffset;
  Index nextPanel;  // from one panel to the next

  Index strips;
  MatrixView b;
  Index nextStrip;  // from one strip to the next

  // The last register of a column of a tile starts at row lastRow. Where the rows of the tile are
  // no multiple of kWidth, this register overlaps the one before; the rows that both hold get the
  // same sums.
  double* c;
  Index ldc;
  Index lastRow;
};

inline __attribute__((always_inline)) Index offsetOf(Index v, Index vectors, Index lastOffset) {
  return v + 1 == vectors ? lastOffset : v * kWidth;
}

// Fetches a tile of C, which is written when its sums are complete.
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
  if (grid.k >= tuning::kLeastPrefetchDepth) prefetch<vectors, columns>(c, grid.ldc);
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
#pragma GCC unroll 8  // or the sums would go through the stack
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
    grid.b.data += grid.nextStrip;
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

// Copies `rows` rows, at most kWidth, and fills the rest of each register with zeros.
void packStrided(Index rows, Index k, const MatrixView& a, double* to, Index toStride) {
  for (Index l = 0; l < k; ++l) {
    for (Index i = 0; i < kWidth; ++i) {
      to[l * toStride + i] = i < rows ? a.data[i * a.rowStride + l * a.columnStride] : 0.0;
    }
  }
}

// Neighbouring panels of one height.
struct Panels {
  Index first;   // row of C
  Index height;  // rows of a panel; at least kWidth, unless C has fewer rows
  Index count;

  Index end() const { return first + height * count; }
  Index vectors() const { return (height + kWidth - 1) / kWidth; }
  // Where the last register of a column of a panel starts.
  Index lastOffset() const { return height < kWidth ? 0 : height - kWidth; }
};

// The next panels when `left` rows are left: at most `wanted` of full height, or a lower one at the
// end. A full panel and a last one of at most kWidth rows are replaced by two lower ones.
Panels panelsFrom(Index first, Index left, Index wanted) {
  if (left <= kTileRows) return {first, left, 1};
  const Index rest = left % kTileRows;
  const Index full = left / kTileRows - (rest > 0 && rest <= kWidth ? 1 : 0);
  if (full == 0) return {first, kTileRows - kWidth, 1};
  return {first, kTileRows, smaller(full, wanted)};
}

// Neighbouring strips of one width.
struct Strips {
  Index first;  // column of C
  Index width;  // columns of a strip
  Index count;

  Index end() const { return first + width * count; }
};

// The next strips when `left` columns are left: at most `wanted` of full width. A full strip and a
// narrower last one are replaced by two of about half their width.
Strips stripsFrom(Index first, Index left, Index wanted) {
  if (left <= kTileColumns) return {first, left, 1};
  if (left < 2 * kTileColumns) return {first, (left + 1) / 2, 1};
  const Index full = left / kTileColumns - (left % kTileColumns > 0 ? 1 : 0);
  return {first, kTileColumns, smaller(full, wanted)};
}

// Copies the panel whose rows start where `a` does.
void packPanel(const Panels& panels, Index k, const MatrixView& a, double* to) {
  const Index vectors = panels.vectors();
  const Index stride = vectors * kWidth;
  for (Index v = 0; v < vectors; ++v) {
    const MatrixView from = viewFrom(a, offsetOf(v, vectors, panels.lastOffset()), 0);
    double* part = to + v * kWidth;
    if (panels.height >= kWidth && a.columnStride == 1) {
      packRows(k, from.data, a.rowStride, part, stride);
    } else {
      packStrided(smaller(panels.height, kWidth), k, from, part, stride);
    }
  }
}

// Copies panels of at least kWidth rows, all of them column by column: a column of all panels lies
// on one page, or on two.
template <Index vectors>
void packColumns(const Panels& panels, Index k, const double* a, Index stride, double* to) {
  const Index lastOffset = panels.lastOffset();
  const Index nextPanel = vectors * kWidth * k;
  for (Index l = 0; l < k; ++l, a += stride, to += vectors * kWidth) {
    const double* from = a;
    double* part = to;
    for (Index i = 0; i < panels.count; ++i, from += panels.height, part += nextPanel) {
      for (Index v = 0; v < vectors; ++v) {
        store(part + v * kWidth, load(from + offsetOf(v, vectors, lastOffset)));
      }
    }
  }
}

// Copies the panels, one behind the other.
void pack(const Panels& panels, Index k, const MatrixView& a, double* to) {
  if (panels.height >= kWidth && a.rowStride == 1) {
    const auto packAll = panels.vectors() == kTileVectors ? packColumns<kTileVectors>
                         : panels.vectors() == 2          ? packColumns<2>
                                                          : packColumns<1>;
    return packAll(panels, k, a.data + panels.first, a.columnStride, to);
  }
  for (Index i = 0; i < panels.count; ++i) {
    packPanel(panels, k, viewFrom(a, panels.first + i * panels.height, 0), to);
    to += panels.vectors() * kWidth * k;
  }
}

// C += alpha A B or C := alpha A B.
struct Product {
  Index m;
  Index n;
  Index k;
  double alpha;
  const MatrixView& a;
  const MatrixView& b;
  double* c;
  Index ldc;
  bool upper;      // only the upper triangle of C is wanted
  bool overwrite;  // C := alpha A B
};

// The number of panels all of whose rows are wanted in the columns from j on.
Index wholePanels(const Product& p, const Panels& panels, Index j) {
  if (panels.height < kWidth) return 0;
  return p.upper ? smaller((j + 1 - panels.first) / panels.height, panels.count) : panels.count;
}

// The number of panels that have a wanted row in the columns up to j.
Index wantedPanels(const Product& p, const Panels& panels, Index j) {
  return p.upper ? smaller((j - panels.first) / panels.height + 1, panels.count) : panels.count;
}

// Adds the wanted elements of one tile.
void addPartOfTile(const Product& p, const Panels& panels, const Strips& strips, Index panel,
                   const Grid& grid, GridKernel kernel) {
  double sum[kTileRows * kTileColumns] = {};
  Grid tile = grid;
  tile.panels = 1;
  tile.a += panel * grid.nextPanel;
  tile.c = sum;
  tile.ldc = kTileRows;
  kernel(tile);
  const Index firstRow = panel * panels.height;
  const Index diagonal = strips.first - panels.first - firstRow + 1;
  for (Index j = 0; j < strips.width; ++j) {
    const Index wanted = p.upper ? smaller(panels.height, diagonal + j) : panels.height;
    double* c = grid.c + j * grid.ldc + firstRow;
    for (Index i = 0; i < wanted; ++i) {
      c[i] = (grid.overwrite ? 0.0 : c[i]) + sum[j * kTileRows + i];
    }
  }
}

// Adds the wanted elements of one strip.
void addPartOfStrip(const Product& p, const Panels& panels, const Strips& strips, Grid& grid,
                    GridKernel kernel) {
  grid.panels = wholePanels(p, panels, strips.first);
  kernel(grid);
  const Index wanted = wantedPanels(p, panels, strips.end() - 1);
  for (Index i = grid.panels; i < wanted; ++i) addPartOfTile(p, panels, strips, i, grid, kernel);
  grid.panels = panels.count;
}

// Some rows of B, and a copy of full strips, which hold the columns from `first` to before `end`.
struct Columns {
  MatrixView b;
  Index first;
  Index end;
  const double* packed;
};

// Lets the grid read the strips in place or from their copy.
void setStrips(const Strips& strips, const Columns& columns, Grid& grid) {
  grid.strips = strips.count;
  if (strips.end() > columns.end) {
    grid.b = viewFrom(columns.b, 0, strips.first);
    grid.nextStrip = strips.width * grid.b.columnStride;
  } else {
    grid.b = {columns.packed + (strips.first - columns.first) * grid.k, kTileColumns, 1};
    grid.nextStrip = kTileColumns * grid.k;
  }
}

// Adds the rows of the panels, which the grid describes, in the columns from `begin` to before
// `end`.
void addPanels(const Product& p, const Panels& panels, Grid& grid, const Columns& columns,
               Index begin, Index end) {
  const bool whole = !p.upper && panels.height >= kWidth;
  for (Index j = begin; j < end;) {
    const Strips strips = stripsFrom(j, end - j, whole ? end : 1);
    setStrips(strips, columns, grid);
    grid.c = p.c + j * p.ldc + panels.first;
    const GridKernel kernel = kernelFor(panels.vectors(), strips.width);
    if (whole) {
      kernel(grid);
    } else {
      addPartOfStrip(p, panels, strips, grid, kernel);
    }
    j = strips.end();
  }
}

// Lets the grid read the panels in place, or from the copy that it makes in `packed`.
void setPanels(const Panels& panels, const MatrixView& a, double* packed, Grid& grid) {
  grid.panels = panels.count;
  grid.lastRow = panels.lastOffset();
  if (packed == nullptr) {
    grid.a = a.data + panels.first;
    grid.stride = a.columnStride;
    grid.lastOffset = grid.lastRow;
    grid.nextPanel = panels.height;
  } else {
    pack(panels, grid.k, a, packed);
    grid.a = packed;
    grid.stride = panels.vectors() * kWidth;
    grid.lastOffset = grid.stride - kWidth;
    grid.nextPanel = grid.stride * grid.k;
  }
}

// The size of a part when `total` is cut into as few equal parts of at most `limit` as possible.
Index evenPart(Index total, Index limit) {
  if (total <= limit) return total;
  const Index parts = (total + limit - 1) / limit;
  return (total + parts - 1) / parts;
}

// Memory for copies of panels and strips, and how much is multiplied at a time.
struct Scratch {
  double* panels;
  double* strips;  // null where strips are read in place
  Index size;      // of `panels`, in doubles
  Index depth;
  Index columns;
};

// Copies the full strips of k rows of B, unless `packed` is null.
Columns columnsOf(const MatrixView& b, Index k, Index begin, Index end, double* packed) {
  const Strips full = stripsFrom(begin, end - begin, end);
  if (packed == nullptr || full.width < kTileColumns) return {b, begin, begin, nullptr};
  pack({full.first, full.width, full.count}, k, {b.data, b.columnStride, b.rowStride}, packed);
  return {b, begin, full.end(), packed};
}

// Adds the product of k columns of A, from column l on, and as many rows of B, in the columns of C
// from `begin` to before `end`.
void addColumns(const Product& p, Index l, Index k, Index begin, Index end,
                const Scratch& scratch) {
  const bool inPlace =
      p.a.rowStride == 1 && p.m >= kWidth && end - begin < tuning::kLeastPackedColumns;
  double* packed = inPlace ? nullptr : scratch.panels;
  const Index m = p.upper ? end : p.m;
  const Index most =
      inPlace ? m : evenPart((m + kTileRows - 1) / kTileRows, scratch.size / (k * kTileRows));
  Grid grid = {};
  grid.k = k;
  grid.alpha = p.alpha;
  grid.overwrite = p.overwrite && l == 0;
  grid.ldc = p.ldc;
  const MatrixView a = viewFrom(p.a, 0, l);
  const Columns columns = columnsOf(viewFrom(p.b, l, 0), k, begin, end, scratch.strips);
  for (Index i = 0; i < m;) {
    const Panels panels = panelsFrom(i, m - i, most);
    setPanels(panels, a, packed, grid);
    addPanels(p, panels, grid, columns, p.upper && i > begin ? i : begin, end);
    i = panels.end();
  }
}

void multiply(const Product& p, const Scratch& scratch) {
  if (p.m <= 0 || p.n <= 0 || p.k <= 0) return;
  const Index depth = evenPart(p.k, scratch.depth);
  const Index strips = (evenPart(p.n, scratch.columns) + kTileColumns - 1) / kTileColumns;
  const Index width = strips * kTileColumns;
  for (Index j = 0; j < p.n; j += width) {
    for (Index l = 0; l < p.k; l += depth) {
      addColumns(p, l, smaller(depth, p.k - l), j, smaller(j + width, p.n), scratch);
    }
  }
}

// The first multiple of a register's size from here on. (The stack may be aligned to 16 bytes
// only.)
double* aligned(double* scratch) {
  return scratch + kWidth - reinterpret_cast<std::uintptr_t>(scratch) / 8 % kWidth;
}

// With a panel on the stack.
void multiply(const Product& p) {
  double scratch[kTileRows * kDepth + kWidth];
  multiply(p, {aligned(scratch), nullptr, kTileRows * kDepth, kDepth, tuning::kBlockColumns});
}

// With many panels in the scratch, and strips where those are far from contiguous.
void multiplyLarge(const Product& p, double* scratch) {
  constexpr Index kSize = tuning::kBlockPanels<kWidth> * kTileRows * tuning::kBlockDepth;
  double* panels = aligned(scratch);
  if (p.b.columnStride == 1) {
    multiply(p, {panels, panels + kSize, kSize, tuning::kBlockDepth, tuning::kCopiedColumns});
  } else {
    multiply(p, {panels, nullptr, kSize, tuning::kBlockDepth, p.n});
  }
}

// C := A B for one tile, which reads A in place.
template <Index vectors, Index columns>
void setTile(Index k, const double* a, Index lda, Index lastRow, const double* b, Index rowStride,
             Index columnStride, double* c, Index ldc) {
  const MatrixView view = {b, rowStride, columnStride};
  addTile<vectors, columns>({k, 1.0, true, 1, a, lda, lastRow, 0, 1, view, 0, c, ldc, lastRow}, a,
                            b, c);
}

using TileKernel = decltype(&setTile<1, 1>);

template <Index vectors, Index... j>
TileKernel tileOf(Index columns, std::integer_sequence<Index, j...>) {
  static constexpr TileKernel kernels[] = {setTile<vectors, j + 1>...};
  return kernels[columns - 1];
}

// C := A B for one row of low tiles. Everything is handed on in registers or one by one: a small
// product would wait for structures that are copied as a whole.
void multiplyLow(Index m, Index n, Index k, const MatrixView& a, const MatrixView& b, double* c,
                 Index ldc) {
  using AllColumns = std::make_integer_sequence<Index, kTileColumns>;
  for (Index j = 0, columns = 0; j < n; j += columns) {
    columns = smaller(n - j, kTileColumns);
    const TileKernel kernel =
        m > kWidth ? tileOf<2>(columns, AllColumns()) : tileOf<1>(columns, AllColumns());
    kernel(k, a.data, a.columnStride, m - kWidth, b.data + j * b.columnStride, b.rowStride,
           b.columnStride, c + j * ldc, ldc);
  }
}

}  // namespace

void gemm(Index m, Index n, Index k, double alpha, const MatrixView& a, const MatrixView& b,
          double* c, Index ldc) {
  multiply({m, n, k, alpha, a, b, c, ldc, false, false});
}

void product(Index m, Index n, Index k, const MatrixView& a, const MatrixView& b, double* c,
             Index ldc, double* scratch) {
  const bool low = kWidth <= m && m <= 2 * kWidth;
  if (low && n < tuning::kLeastPackedColumns && k <= kDepth && a.rowStride == 1) {
    return multiplyLow(m, n, k, a, b, c, ldc);
  }
  const Product p = {m, n, k, 1.0, a, b, c, ldc, false, true};
  if (k > 0) return scratch == nullptr ? multiply(p) : multiplyLarge(p, scratch);
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < m; ++i) c[j * ldc + i] = 0.0;
  }
}

void syrkUpper(Index n, Index k, double alpha, const MatrixView& a, const MatrixView& b, double* c,
               Index ldc) {
  multiply({n, n, k, alpha, a, b, c, ldc, true, false});
}

}  // namespace vxKilnBase::kernels::KILN_ISA
