#include <kilnbase/linalg/kernels/Largest.h>
#include <kilnbase/linalg/kernels/Lu.h>
#include <kilnbase/linalg/kernels/Product.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

constexpr Index kPanelColumns = LuKernels::kPanelColumns;

// The panel: rows in whole registers where they are, the others in a copy that fills a register
// with zeros.
class Panel {
 public:
  Panel(Index m, Index n, double* a, Index lda) : m_(m), n_(n), a_(a), lda_(lda) {
    for (Index j = 0; j < n; ++j) {
      for (Index i = 0; i < kWidth; ++i) {
        rest_[j * kWidth + i] = full_ + i < m ? a[j * lda + full_ + i] : 0.0;
      }
    }
  }

  Index factor(int* pivots) {
    Index info = 0;
    Index row = searchColumn(0);
    for (Index k = 0; k < n_; ++k) {
      if (*at(k, k) != *at(k, k)) row = k;
      pivots[k] = static_cast<int>(row);
      if (*at(row, k) == 0.0) {
        info = k + 1;
        if (k + 1 < n_) row = searchColumn(k + 1);
        continue;
      }
      exchange(k, row);
      row = eliminate(k);
    }
    copyBack();
    return info;
  }

 private:
  double* at(Index i, Index j) {
    return i < full_ ? a_ + j * lda_ + i : rest_ + j * kWidth + (i - full_);
  }

  void exchange(Index k, Index l) {
    for (Index j = k; j < n_; ++j) {
      double* x = at(k, j);
      double* y = at(l, j);
      const double old = *x;
      *x = *y;
      *y = old;
    }
  }

  void copyBack() {
    for (Index j = 0; j < n_; ++j) {
      for (Index i = full_; i < m_; ++i) a_[j * lda_ + i] = rest_[j * kWidth + i - full_];
    }
  }

  // The row of the pivot of column k, which is up to date.
  Index searchColumn(Index k) {
    Largest search = Largest::none(k);
    for (Index i = k / kWidth * kWidth; i <= full_; i += kWidth) {
      const Vector values = absolute(load(at(i, k)));
      search.add(lanesFrom(k - i, values, Vector{}), lanes() + i);
    }
    search.join();
    return search.row[0];
  }

  Index eliminate(Index k) {
    switch (n_ - k - 1) {
      case 7:
        return eliminateWith<7>(k);
      case 6:
        return eliminateWith<6>(k);
      case 5:
        return eliminateWith<5>(k);
      case 4:
        return eliminateWith<4>(k);
      case 3:
        return eliminateWith<3>(k);
      case 2:
        return eliminateWith<2>(k);
      case 1:
        return eliminateWith<1>(k);
      default:
        return eliminateWith<0>(k);
    }
  }

  // Carries out step k in one pass and returns the row of the next pivot.
  template <Index others>
  Index eliminateWith(Index k) {
    const Vector factor = splat(-1.0 / *at(k, k));
    Vector row[others + 1];
    for (Index j = 0; j < others; ++j) row[j] = splat(*at(k, k + 1 + j));
    Largest search = Largest::none(k + 1);
    Index i = (k + 1) / kWidth * kWidth;
    const Lanes wanted = lanes() + i > k;
    if (i < full_) {
      eliminatePart<others, true>(wanted, factor, row, a_ + k * lda_ + i, lda_, lanes() + i,
                                  search);
      for (i += kWidth; i < full_; i += kWidth) {
        eliminatePart<others, false>(wanted, factor, row, a_ + k * lda_ + i, lda_, lanes() + i,
                                     search);
      }
      eliminatePart<others, false>(wanted, factor, row, rest_ + k * kWidth, kWidth, lanes() + i,
                                   search);
    } else if (i == full_) {
      eliminatePart<others, true>(wanted, factor, row, rest_ + k * kWidth, kWidth, lanes() + i,
                                  search);
    }
    search.join();
    return search.row[0];
  }

  template <Index others, bool masked>
  static inline __attribute__((always_inline)) void eliminatePart(Lanes wanted, Vector factor,
                                                                  const Vector* row, double* column,
                                                                  Index ld, Lanes rows,
                                                                  Largest& search) {
    const Vector old = load(column);
    const Vector multipliers = old * factor;
    store(column, masked ? (wanted ? multipliers : old) : multipliers);
    for (Index j = 0; j < others; ++j) {
      column += ld;
      const Vector x = load(column);
      const Vector y = x + multipliers * row[j];
      store(column, masked ? (wanted ? y : x) : y);
      if (j > 0) continue;
      const Vector candidates = absolute(y);
      search.add(masked ? (wanted ? candidates : Vector{}) : candidates, rows);
    }
  }

  const Index m_;
  const Index n_;
  double* const a_;
  const Index lda_;
  const Index full_ = m_ / kWidth * kWidth;
  double rest_[kPanelColumns * kWidth];
};

// Panels of which a register holds a column.
constexpr bool kHasRegisterPanels = kWidth >= kPanelColumns;

inline __attribute__((always_inline)) Vector loadRows(Index m, const double* column) {
  if (m == kWidth) return load(column);
  Vector result{};
  for (Index i = 0; i < m; ++i) result[i] = column[i];
  return result;
}

inline __attribute__((always_inline)) void storeRows(Index m, double* column, Vector values) {
  if (m == kWidth) return store(column, values);
  for (Index i = 0; i < m; ++i) column[i] = values[i];
}

inline __attribute__((always_inline)) Vector splatLane(Vector values, Index lane) {
  return __builtin_shuffle(values, splatLanes(lane));
}

// Step k with the columns from it to `columns` in registers. Returns whether the pivot is not 0.
inline __attribute__((always_inline)) bool eliminateInRegisters(Index k, Vector* c, int* pivots) {
  const Lanes lane = lanes();
  const Lanes self = splatLanes(k);
  Largest search = Largest::none(k);
  search.add(lane >= self ? absolute(c[k]) : Vector{}, lane);
  const Vector diagonal = splatLane(c[k], k);
  search.join();
  const Lanes row = diagonal == diagonal ? search.row : self;
  pivots[k] = static_cast<int>(row[0]);
  const Lanes exchanged = lane == self ? row : (lane == row ? self : lane);
#pragma GCC unroll 8
  for (Index j = k; j < kPanelColumns; ++j) c[j] = __builtin_shuffle(c[j], exchanged);
  const double pivot = splatLane(c[k], k)[0];
  if (pivot == 0.0) return false;
  const Vector multipliers = lane > self ? c[k] * splat(-1.0 / pivot) : Vector{};
  c[k] = lane > self ? multipliers : c[k];
#pragma GCC unroll 8
  for (Index j = k + 1; j < kPanelColumns; ++j) c[j] += multipliers * splatLane(c[j], k);
  return true;
}

Index factorInRegisters(Index m, Index n, double* a, Index lda, int* pivots) {
  Vector c[kPanelColumns];
#pragma GCC unroll 8
  for (Index j = 0; j < kPanelColumns; ++j) c[j] = j < n ? loadRows(m, a + j * lda) : Vector{};
  Index info = 0;
#pragma GCC unroll 8
  for (Index k = 0; k < kPanelColumns; ++k) {
    if (k == n) break;
    if (!eliminateInRegisters(k, c, pivots)) info = k + 1;
  }
#pragma GCC unroll 8
  for (Index j = 0; j < kPanelColumns; ++j) {
    if (j < n) storeRows(m, a + j * lda, c[j]);
  }
  return info;
}

Index factorPanel(Index m, Index n, double* a, Index lda, int* pivots) {
  if constexpr (kHasRegisterPanels) {
    if (m <= kWidth) return factorInRegisters(m, n, a, lda, pivots);
  }
  return Panel(m, n, a, lda).factor(pivots);
}

// Solves for kWidth rows of `columns` columns.
template <Index columns>
inline __attribute__((always_inline)) void solveBlock(const Vector* m, double* x, Index ldx) {
  Vector solution[columns];
  for (Index j = 0; j < columns; ++j) solution[j] = load(x + j * ldx);
  for (Index k = 0; k + 1 < kWidth; ++k) {
    for (Index j = 0; j < columns; ++j) {
      solution[j] += m[k] * __builtin_shuffle(solution[j], splatLanes(k));
    }
  }
  for (Index j = 0; j < columns; ++j) store(x + j * ldx, solution[j]);
}

void solveMultipliers(Index k, Index n, const double* m, Index ldm, double* x, Index ldx) {
  for (Index i = 0; i < k; i += kWidth) {
    gemm(kWidth, n, i, 1.0, {m + i, 1, ldm}, {x, 1, ldx}, x + i, ldx);
    Vector block[kWidth];
    for (Index j = 0; j < kWidth; ++j) {
      block[j] = lanesFrom(j + 1, load(m + i + (i + j) * ldm), Vector{});
    }
    Index j = 0;
    for (; j + 4 <= n; j += 4) solveBlock<4>(block, x + i + j * ldx, ldx);
    for (; j < n; ++j) solveBlock<1>(block, x + i + j * ldx, ldx);
  }
}

}  // namespace

extern const LuKernels luKernels = {factorPanel, solveMultipliers};

}  // namespace vxKilnBase::kernels::KILN_ISA
