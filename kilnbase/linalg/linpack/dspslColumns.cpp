#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/SymmetricFactors.h>
#include <kilnbase/linalg/linpack/dspslColumns.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::Index;

constexpr Index kColumns = kernels::tuning::kPackedRightHandSides;

struct Columns {
  double* b;
  Index ldb;
  Index count;
};

// Calls use(x) with each column.
template <class Use>
void forEach(const Columns& columns, const Use& use) {
  for (Index j = 0; j < columns.count; ++j) use(columns.b + j * columns.ldb);
}

void solve(const SymmetricFactors& f, const Columns& columns) {
  const auto& dense = *kernels::active().dense;
  for (Index k = f.n - 1, first = k; k >= 0; k = first - 1) {
    first = k + 1 - f.orderOfBlock(k);
    forEach(columns, [&](double* x) {
      std::swap(x[first], x[f.exchanged(k)]);
      for (Index j = k; j >= first; --j) dense.axpy(first, x[j], f.column(j), x);
      f.divideByBlock(first, x);
    });
  }
  for (Index k = 0, end = 0; k < f.n; k = end) {
    end = k + f.orderOfBlock(k);
    forEach(columns, [&](double* x) {
      for (Index j = k; j < end; ++j) x[j] += dense.dot(k, f.column(j), x);
      std::swap(x[k], x[f.exchanged(k)]);
    });
  }
}

}  // namespace

void dspslColumns(const double* ap, int n, const int* kpvt, double* b, int ldb, int columns) {
  const SymmetricFactors f{{ap, n}, kpvt};
  for (Index j = 0; j < columns; j += kColumns) {
    solve(f, {b + j * ldb, ldb, std::min(kColumns, columns - j)});
  }
}

}  // namespace vxKilnBase::linpack
