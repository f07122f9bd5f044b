// Panels of a packed symmetric matrix.
//
// Within a panel a column is brought up to date when it is wanted, by the columns eliminated before
// it. Nothing is kept beside the packed matrix: the candidate for a pivot is moved next to the last
// column and brought up to date there, and if another pivot is taken, the update is subtracted
// again and the candidate moved back. The other columns get what the whole panel adds to them as
// one product, in tiles that fit the registers.
#include <kilnbase/linalg/kernels/Largest.h>
#include <kilnbase/linalg/kernels/Simd.h>
#include <kilnbase/linalg/kernels/SymmetricPivot.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// The columns that a panel has eliminated: those from `begin` to before `end`. They hold D and,
// above the blocks of D, the multipliers M. A column c of the others lacks -M D mᵀ, where m is row
// c of M.
struct Eliminated {
  double* ap;
  const int* kpvt;
  Index begin;
  Index end;

  // factors := sign D mᵀ for a row m of M.
  void factorsFor(Index row, double sign, double* factors) const {
    const double* column = packedColumn(ap, begin);
    for (Index q = begin; q < end;) {
      if (kpvt[q] > 0) {
        *factors++ = sign * column[q] * column[row];
        column += ++q;
        continue;
      }
      const double* next = column + q + 1;
      const double x = sign * column[row], y = sign * next[row];
      *factors++ = column[q] * x + next[q] * y;
      *factors++ = next[q] * x + next[q + 1] * y;
      column = next + q + 2;
      q += 2;
    }
  }

  void exchangeRows(Index k, Index l) const {
    double* column = packedColumn(ap, begin);
    for (Index q = begin; q < end; column += ++q) swap(column[k], column[l]);
  }
};

// Adds the eliminated columns times the factors to rows of y. All registers but the last one lie
// side by side from row i on; the last one starts at row `last` and may overlap the one before.
template <Index vectors>
inline __attribute__((always_inline)) void updatePart(const Eliminated& e, const double* factors,
                                                      double* y, Index i, Index last,
                                                      Largest& largest) {
  const auto row = [i, last](Index v) { return v + 1 == vectors ? last : i + v * kWidth; };
  Vector sum[vectors];
  for (Index v = 0; v < vectors; ++v) sum[v] = load(y + row(v));
  const double* column = packedColumn(e.ap, e.begin);
  for (Index q = e.begin; q < e.end; column += ++q) {
    const Vector factor = splat(*factors++);
    for (Index v = 0; v < vectors; ++v) sum[v] += factor * load(column + row(v));
  }
  for (Index v = 0; v < vectors; ++v) {
    store(y + row(v), sum[v]);
    largest.add(absolute(sum[v]), lanes() + row(v));
  }
}

// Brings column k, of at least kWidth rows, up to date with sign -1, and back to what it was with
// sign 1. Returns its largest element: the tests of pivots come out the same with and without the
// one on the diagonal.
Found updateColumn(const Eliminated& e, Index k, double sign) {
  double factors[SymmetricKernels::kPanelColumns + 1];
  e.factorsFor(k, sign, factors);
  double* y = packedColumn(e.ap, k);
  Largest largest = Largest::none(0);
  const Index last = k + 1 - kWidth;
  Index i = 0;
  for (; i + 5 * kWidth <= last; i += 4 * kWidth) {
    updatePart<4>(e, factors, y, i, i + 3 * kWidth, largest);
  }
  switch ((last - i + kWidth - 1) / kWidth) {
    case 5:
      updatePart<6>(e, factors, y, i, last, largest);
      break;
    case 4:
      updatePart<5>(e, factors, y, i, last, largest);
      break;
    case 3:
      updatePart<4>(e, factors, y, i, last, largest);
      break;
    case 2:
      updatePart<3>(e, factors, y, i, last, largest);
      break;
    case 1:
      updatePart<2>(e, factors, y, i, last, largest);
      break;
    default:
      updatePart<1>(e, factors, y, i, last, largest);
  }
  largest.join();
  return {static_cast<Index>(largest.row[0]), largest.value[0]};
}

class Panel {
 public:
  Panel(Index n, double* ap, int* kpvt) : done_{ap, kpvt, n, n}, ap_(ap), kpvt_(kpvt) {}

  Index run(Index left, Index* info) {
    while (done_.begin > left) {
      const Index k = done_.begin - 1;
      const Pivot pivot = choose(k);
      const auto row = static_cast<int>(pivot.row + 1);
      double* column = packedColumn(ap_, k);
      if (pivot.order == 2) {
        kpvt_[k] = kpvt_[k - 1] = -row;
        scaleTwo(k, column - k, column);
      } else {
        kpvt_[k] = row;
        if (column[k] == 0.0) *info = k + 1;
        if (column[k] != 0.0) scaleOne(k, column);
      }
      done_.begin -= pivot.order;
    }
    return done_.begin;
  }

 private:
  // Exchanges rows and columns l <= k - 1, and those of column k, which is up to date.
  void exchangeBelow(Index l, Index k) {
    if (l == k - 1) return;
    exchange(ap_, l, k - 1);
    done_.exchangeRows(l, k - 1);
    double* column = packedColumn(ap_, k);
    swap(column[l], column[k - 1]);
  }

  // Brings the columns of the pivot to their place, up to date.
  Pivot choose(Index k) {
    const double* column = packedColumn(ap_, k);
    const Found found = updateColumn(done_, k, -1.0);
    const double diagonal = __builtin_fabs(column[k]);
    if (diagonal >= kAlpha * found.value || found.value == 0.0) return {1, k};
    exchangeBelow(found.row, k);
    const double inRow = updateColumn(done_, k - 1, -1.0).value;
    const Pivot pivot = choosePivot(k, found, diagonal, __builtin_fabs(column[-1]),
                                    inRow > found.value ? inRow : found.value);
    if (pivot.order == 2) return pivot;
    if (pivot.row != k) exchangeLast(k);
    updateColumn(done_, k - 1, 1.0);
    exchangeBelow(found.row, k);
    return pivot;
  }

  // Exchanges rows and columns k - 1 and k.
  void exchangeLast(Index k) {
    exchange(ap_, k - 1, k);
    done_.exchangeRows(k - 1, k);
  }

  static void scaleOne(Index k, double* column) {
    const Division division(-column[k]);
    for (Index i = 0; i < k; ++i) column[i] = division.of(column[i]);
  }

  static void scaleTwo(Index k, double* first, double* second) {
    const Block block(first[k - 1], second[k - 1], second[k]);
    for (Index i = 0; i + 1 < k; ++i) block.toMultipliers(first[i], second[i]);
  }

  Eliminated done_;
  double* const ap_;
  int* const kpvt_;
};

Index factorPanel(Index n, Index columns, double* ap, int* kpvt, Index* info) {
  return Panel(n, ap, kpvt).run(n - columns, info);
}

constexpr Index kTileVectors = tuning::kTileVectors<kWidth>;
constexpr Index kTileColumns = tuning::kTileColumns<kWidth>;
constexpr Index kTileRows = kTileVectors * kWidth;
constexpr Index kMostDepth = SymmetricKernels::kPanelColumns + 1;

// `count` columns of the leading matrix from column `first` on, to which M B is added: `depth` is
// the number of columns of M, and B is -D Mᵀ in these columns.
struct Strip {
  Index first;
  Index count;
  Index depth;
  const double* columns[kMostDepth];    // of M
  double m[kMostDepth * kTileColumns];  // rows of M from `first` on
  double b[kMostDepth * kTileColumns];
  double* c[kTileColumns];
};

// Fills `m` and `b`, with zeros beyond the columns that there are.
void loadRows(const Eliminated& e, Strip& s) {
  for (Index l = 0; l < s.depth; ++l) {
    for (Index c = 0; c < kTileColumns; ++c) {
      s.m[l * kTileColumns + c] = c < s.count ? s.columns[l][s.first + c] : 0.0;
    }
  }
  for (Index l = 0; l < s.depth;) {
    const Index q = e.begin + l;
    const double* m = s.m + l * kTileColumns;
    double* b = s.b + l * kTileColumns;
    if (e.kpvt[q] > 0) {
      const double d = s.columns[l][q];
      for (Index c = 0; c < kTileColumns; ++c) b[c] = -d * m[c];
      ++l;
      continue;
    }
    const double d = s.columns[l][q], off = s.columns[l + 1][q], dNext = s.columns[l + 1][q + 1];
    for (Index c = 0; c < kTileColumns; ++c) {
      b[c] = -d * m[c] - off * m[c + kTileColumns];
      b[c + kTileColumns] = -off * m[c] - dNext * m[c + kTileColumns];
    }
    l += 2;
  }
}

// Adds to rows above the diagonal.
template <Index vectors>
inline __attribute__((always_inline)) void addTile(const Strip& s, Index i) {
  Vector sum[kTileColumns][vectors];
  for (Index j = 0; j < kTileColumns; ++j) {
    for (Index v = 0; v < vectors; ++v) sum[j][v] = Vector{};
  }
  const double* b = s.b;
  for (Index l = 0; l < s.depth; ++l, b += kTileColumns) {
    Vector column[vectors];
    for (Index v = 0; v < vectors; ++v) column[v] = load(s.columns[l] + i + v * kWidth);
    for (Index j = 0; j < kTileColumns; ++j) {
      for (Index v = 0; v < vectors; ++v) sum[j][v] += column[v] * splat(b[j]);
    }
  }
  for (Index j = 0; j < kTileColumns; ++j) {
    if (j == s.count) break;
    double* c = s.c[j] + i;
    for (Index v = 0; v < vectors; ++v) store(c + v * kWidth, load(c + v * kWidth) + sum[j][v]);
  }
}

// Adds to the rows of the diagonal.
void addTriangle(const Strip& s) {
  for (Index j = 0; j < s.count; ++j) {
    Vector sum[kTileColumns / kWidth] = {};
    for (Index l = 0; l < s.depth; ++l) {
      const Vector factor = splat(s.b[l * kTileColumns + j]);
      for (Index v = 0; v < kTileColumns / kWidth; ++v) {
        sum[v] += factor * load(s.m + l * kTileColumns + v * kWidth);
      }
    }
    for (Index i = 0; i <= j; ++i) s.c[j][s.first + i] += sum[i / kWidth][i % kWidth];
  }
}

void updateLeading(Index n, Index end, double* ap, const int* kpvt) {
  const Eliminated e{ap, kpvt, n, end};
  Strip s;
  s.depth = end - n;
  for (Index l = 0; l < s.depth; ++l) s.columns[l] = packedColumn(ap, n + l);
  for (s.first = 0; s.first < n; s.first += kTileColumns) {
    s.count = n - s.first < kTileColumns ? n - s.first : kTileColumns;
    for (Index j = 0; j < s.count; ++j) s.c[j] = packedColumn(ap, s.first + j);
    loadRows(e, s);
    Index i = 0;
    for (; i + kTileRows <= s.first; i += kTileRows) addTile<kTileVectors>(s, i);
    if (kTileVectors > 2 && i + 2 * kWidth <= s.first) {
      addTile<2>(s, i);
      i += 2 * kWidth;
    }
    if (i < s.first) addTile<1>(s, i);
    addTriangle(s);
  }
}

}  // namespace

extern const SymmetricKernels symmetricKernels = {factorSmallSymmetric, factorPanel, updateLeading};

}  // namespace vxKilnBase::kernels::KILN_ISA
