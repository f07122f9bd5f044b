#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/dgeslColumns.h>
#include <kilnbase/linalg/linpack/triangular.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;
using kernels::Index;
using kernels::MatrixView;

struct Factors {
  const double* a;
  Index lda;
  Index n;
  const int* ipvt;

  const double* at(Index i, Index j) const { return a + j * lda + i; }
  MatrixView view(Index i, Index j) const { return {at(i, j), 1, lda}; }
  MatrixView transposed(Index i, Index j) const { return {at(i, j), lda, 1}; }
};

struct Columns {
  double* b;
  Index ldb;
  Index count;

  double* column(Index j) const { return b + j * ldb; }
  MatrixView view(Index i) const { return {b + i, 1, ldb}; }
};

constexpr Index kSteps = kernels::tuning::kSolvedSteps;
constexpr Index kColumns = kernels::tuning::kSolvedColumns;

// The steps from `begin` to before `end` with the rows from `end` on that they exchange. These rows
// meet only some of the steps, each at its place at the time, so that products leave them out.
class Steps {
 public:
  Steps(const Factors& f, Index begin, Index end) : f_(f), begin_(begin), end_(end) {
    for (Index k = begin; k < end; ++k) {
      const Index row = f.ipvt[k] - 1;
      const int* found = std::find(rows_, rows_ + count_, row);
      slots_[k - begin] = row < end ? -1 : static_cast<int>(found - rows_);
      if (row >= end && found == rows_ + count_) rows_[count_++] = static_cast<int>(row);
    }
    for (Index k = begin; k < end; ++k) {
      for (Index s = 0; s < count_; ++s) multipliers_[k - begin][s] = *f.at(rows_[s], k);
    }
  }

  // Carries out the steps for all rows.
  void apply(const Columns& columns) {
    for (Index j = 0; j < columns.count; ++j) applyToColumn(columns.column(j), values_[j]);
    active().dense->gemm(f_.n - end_, columns.count, end_ - begin_, 1.0, f_.view(end_, begin_),
                         columns.view(begin_), columns.b + end_, columns.ldb);
    putBack(columns);
  }

  // Carries out the transposed steps, the last one first.
  void applyTransposed(const Columns& columns) {
    for (Index j = 0; j < columns.count; ++j) {
      for (Index s = 0; s < count_; ++s) {
        values_[j][s] = std::exchange(columns.column(j)[rows_[s]], 0.0);
      }
    }
    active().dense->gemm(end_ - begin_, columns.count, f_.n - end_, 1.0,
                         f_.transposed(end_, begin_), columns.view(end_), columns.b + begin_,
                         columns.ldb);
    for (Index j = 0; j < columns.count; ++j) transposeToColumn(columns.column(j), values_[j]);
    putBack(columns);
  }

 private:
  void exchange(Index k, double* x, double* values) const {
    const int slot = slots_[k - begin_];
    std::swap(x[k], slot < 0 ? x[f_.ipvt[k] - 1] : values[slot]);
  }

  void applyToColumn(double* x, double* values) const {
    for (Index s = 0; s < count_; ++s) values[s] = x[rows_[s]];
    for (Index k = begin_; k < end_; ++k) {
      exchange(k, x, values);
      active().dense->axpy(end_ - k - 1, x[k], f_.at(k + 1, k), x + k + 1);
      active().dense->axpy(count_, x[k], multipliers_[k - begin_], values);
    }
  }

  void transposeToColumn(double* x, double* values) const {
    for (Index k = end_; k-- > begin_;) {
      x[k] += active().dense->dot(end_ - k - 1, f_.at(k + 1, k), x + k + 1);
      x[k] += active().dense->dot(count_, multipliers_[k - begin_], values);
      exchange(k, x, values);
    }
  }

  void putBack(const Columns& columns) const {
    for (Index j = 0; j < columns.count; ++j) {
      for (Index s = 0; s < count_; ++s) columns.column(j)[rows_[s]] = values_[j][s];
    }
  }

  const Factors& f_;
  const Index begin_;
  const Index end_;
  Index count_ = 0;
  int rows_[kSteps];
  int slots_[kSteps];                   // of the exchanged row of each step in `rows_`, or -1
  double multipliers_[kSteps][kSteps];  // of these rows
  double values_[kColumns][kSteps];     // of these rows
};

void solveColumns(const Factors& f, const Columns& x) {
  for (Index k = 0; k < f.n; k += kSteps) Steps(f, k, std::min(k + kSteps, f.n)).apply(x);
  for (Index end = f.n; end > 0;) {
    const Index size = (end - 1) % kSteps + 1;
    const Index k = end - size;
    for (Index j = 0; j < x.count; ++j) solveUpper(f.at(k, k), f.lda, size, x.column(j) + k);
    active().dense->gemm(k, x.count, size, -1.0, f.view(0, k), x.view(k), x.b, x.ldb);
    end = k;
  }
}

void solveTransposed(const Factors& f, const Columns& x) {
  for (Index k = 0; k < f.n; k += kSteps) {
    const Index size = std::min(kSteps, f.n - k);
    active().dense->gemm(size, x.count, k, -1.0, f.transposed(0, k), x.view(0), x.b + k, x.ldb);
    for (Index j = 0; j < x.count; ++j) {
      solveUpperTransposed(f.at(k, k), f.lda, size, x.column(j) + k);
    }
  }
  for (Index end = f.n; end > 0;) {
    const Index begin = end - ((end - 1) % kSteps + 1);
    Steps(f, begin, end).applyTransposed(x);
    end = begin;
  }
}

}  // namespace

void dgeslColumns(const double* a, int lda, int n, const int* ipvt, double* b, int ldb, int columns,
                  int job) {
  const Factors f{a, lda, n, ipvt};
  for (Index j = 0; j < columns; j += kColumns) {
    const Columns x{b + j * ldb, ldb, std::min(kColumns, columns - j)};
    if (job == 0) {
      solveColumns(f, x);
    } else {
      solveTransposed(f, x);
    }
  }
}

}  // namespace vxKilnBase::linpack
