// Symmetric indefinite matrices of which all elements fit into the first-level cache.
//
// The matrix is expanded to a square, whose rows and columns never move: `order` tells which stands
// at each place. So a step costs no exchanges, and all rows are whole registers. The row of the
// next pivot is brought up to date and searched before the others, so that the search runs beside
// them.
#include <kilnbase/linalg/kernels/Largest.h>
#include <kilnbase/linalg/kernels/Simd.h>
#include <kilnbase/linalg/kernels/SymmetricPivot.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

constexpr Index kMostSmall = SymmetricKernels::kMostSmall;

// Rows and columns of `vectors` registers.
template <Index vectors>
class SmallElimination {
 public:
  SmallElimination(Index n, double* ap, int* kpvt) : n_(n), ap_(ap), kpvt_(kpvt) {
    for (Index v = 0; v < vectors; ++v) place_[v] = lanes() + v * kWidth;
    for (Index j = 0; j < n; ++j) order_[j] = static_cast<int>(j);
    const Index whole = n / kWidth * kWidth;
    for (Index j = 0; j < whole; j += kWidth) {
      for (Index i = 0; i <= j; i += kWidth) expandBlock(i, j);
    }
    for (Index j = whole; j < n; ++j) {
      const double* column = packedColumn(ap, j);
      for (Index i = 0; i <= j; ++i) rowOf(j)[i] = rowOf(i)[j] = column[i];
    }
    for (Index j = 0; j < n; ++j) {
      for (Index i = n; i < kStride; ++i) rowOf(j)[i] = 0.0;
    }
  }

  Index run() {
    Largest found = searchLast();
    for (Index k = n_ - 1; k >= 0;) {
      const Pivot pivot = choose(k, found);
      if (pivot.order == 2) {
        found = eliminateTwo(k, pivot.row);
      } else {
        found = eliminateOne(k, pivot.row);
      }
      k -= pivot.order;
    }
    return info_;
  }

 private:
  static constexpr Index kStride = vectors * kWidth;

  double* rowOf(Index i) { return elements_ + i * kStride; }

  // Copies rows i.. of columns j.., a block of the width of a register, to both sides of the
  // diagonal.
  void expandBlock(Index i, Index j) {
    Vector columns[kWidth], rows[kWidth];
    const double* from = packedColumn(ap_, j) + i;
    for (Index c = 0; c < kWidth; ++c) {
      rows[c] = columns[c] = load(from);
      from += j + c + 1;
    }
    transpose(rows);
    for (Index c = 0; c < kWidth; ++c) {
      if (i == j) {
        store(rowOf(j + c) + i, lanesFrom(c + 1, rows[c], columns[c]));
      } else {
        store(rowOf(j + c) + i, columns[c]);
        store(rowOf(i + c) + j, rows[c]);
      }
    }
  }

  // Searches a row among the places before k. Of equal elements the first place counts.
  inline __attribute__((always_inline)) Largest search(Index k, const Vector* row) const {
    Largest found[vectors];
    for (Index v = 0; v < vectors; ++v) {
      found[v] = {place_[v] < splatLanes(k) ? absolute(row[v]) : Vector{}, place_[v]};
    }
    for (Index distance = 1; distance < vectors; distance *= 2) {
      for (Index v = 0; v + distance < vectors; v += 2 * distance)
        found[v].add(found[v + distance]);
    }
    return found[0];
  }

  Largest searchLast() {
    Vector row[vectors];
    for (Index v = 0; v < vectors; ++v) row[v] = load(rowOf(n_ - 1) + v * kWidth);
    return search(n_ - 1, row);
  }

  // The largest element of a row among the places up to k. The tests of pivots come out the same
  // with and without the one on the diagonal.
  double largestInRow(Index k, const double* row) const {
    Vector largest{};
    for (Index v = 0; v < vectors; ++v) {
      const Vector size = absolute(load(row + v * kWidth));
      const Vector candidates = place_[v] <= splatLanes(k) ? size : Vector{};
      largest = candidates > largest ? candidates : largest;
    }
    return largestOf(largest);
  }

  Pivot choose(Index k, Largest& found) {
    found.join();
    const Index r = order_[k];
    const double diagonal = __builtin_fabs(rowOf(r)[r]);
    const double value = found.value[0];
    if (diagonal >= kAlpha * value || value == 0.0) return {1, k};
    const auto place = static_cast<Index>(found.row[0]);
    const Index c = order_[place];
    return choosePivot(k, {place, value}, diagonal, __builtin_fabs(rowOf(c)[c]),
                       largestInRow(k, rowOf(c)));
  }

  // The row and column at place k change with those at `place`.
  void exchange(Index k, Index place) {
    const int pivot = order_[place];
    const int moved = order_[k];
    order_[place] = moved;
    order_[k] = pivot;
    for (Index v = 0; v < vectors; ++v) {
      const Lanes index = lanes() + v * kWidth;
      place_[v] = index == splatLanes(moved) ? splatLanes(place) : place_[v];
      place_[v] = index == splatLanes(pivot) ? splatLanes(k) : place_[v];
    }
  }

  Largest eliminateOne(Index k, Index place) {
    exchange(k, place);
    kpvt_[k] = static_cast<int>(place + 1);
    double* row = rowOf(order_[k]);
    const double pivot = row[order_[k]];
    double* column = packedColumn(ap_, k);
    column[k] = pivot;
    Vector old[vectors];
    double multipliers[kStride];
    Division division(-pivot);
    if (pivot == 0.0) {
      info_ = k + 1;
      division.factor = 0.0;
    }
    for (Index v = 0; v < vectors; ++v) {
      old[v] = load(row + v * kWidth);
      store(multipliers + v * kWidth, division.of(old[v]));
    }
    const auto update = [&](Index i, Vector* sum) {
      const Index q = order_[i];
      const double x = multipliers[q];
      column[i] = x;
      for (Index v = 0; v < vectors; ++v) {
        sum[v] = load(rowOf(q) + v * kWidth) + splat(x) * old[v];
        store(rowOf(q) + v * kWidth, sum[v]);
      }
    };
    return updateRows(k, update);
  }

  Largest eliminateTwo(Index k, Index place) {
    exchange(k - 1, place);
    kpvt_[k] = kpvt_[k - 1] = -static_cast<int>(place + 1);
    const double* firstRow = rowOf(order_[k - 1]);
    const double* secondRow = rowOf(order_[k]);
    double* second = packedColumn(ap_, k);
    double* first = second - k;
    first[k - 1] = firstRow[order_[k - 1]];
    second[k - 1] = secondRow[order_[k - 1]];
    second[k] = secondRow[order_[k]];
    const Block block(first[k - 1], second[k - 1], second[k]);
    Vector oldFirst[vectors], oldSecond[vectors];
    double xs[kStride], ys[kStride];
    for (Index v = 0; v < vectors; ++v) {
      Vector x = oldFirst[v] = load(firstRow + v * kWidth);
      Vector y = oldSecond[v] = load(secondRow + v * kWidth);
      block.toMultipliers(x, y);
      store(xs + v * kWidth, x);
      store(ys + v * kWidth, y);
    }
    const auto update = [&](Index i, Vector* sum) {
      const Index q = order_[i];
      const double x = xs[q], y = ys[q];
      first[i] = x;
      second[i] = y;
      for (Index v = 0; v < vectors; ++v) {
        sum[v] = load(rowOf(q) + v * kWidth) + splat(x) * oldFirst[v] + splat(y) * oldSecond[v];
        store(rowOf(q) + v * kWidth, sum[v]);
      }
    };
    return updateRows(k - 1, update);
  }

  // Updates the rows at the first `count` places, and searches that of the next pivot.
  template <class Update>
  inline __attribute__((always_inline)) Largest updateRows(Index count, const Update& update) {
    if (count == 0) return Largest{};
    Vector sum[vectors];
    update(count - 1, sum);
    const Largest found = search(count - 1, sum);
    for (Index i = count - 1; i-- > 0;) update(i, sum);
    return found;
  }

  const Index n_;
  double* const ap_;
  int* const kpvt_;
  Index info_ = 0;
  Lanes place_[vectors];
  int order_[kMostSmall];
  double elements_[kMostSmall * kStride];
};

// Takes the code for the next multiple of 8.
template <Index most = kMostSmall>
Index factorUpTo(Index n, double* ap, int* kpvt) {
  if constexpr (most > 16) {
    if (n <= most - 8) return factorUpTo<most - 8>(n, ap, kpvt);
  }
  return SmallElimination<most / kWidth>(n, ap, kpvt).run();
}

}  // namespace

Index factorSmallSymmetric(Index n, double* ap, int* kpvt) {
  return n <= kMostTiny ? factorTinySymmetric(n, ap, kpvt) : factorUpTo(n, ap, kpvt);
}

}  // namespace vxKilnBase::kernels::KILN_ISA
