#include <algorithm>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/dqrsl.h>
#include <kilnbase/linalg/linpack/rightHandSides.h>
#include <kilnbase/linalg/linpack/triangular.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;
using kernels::tuning::kSmallTriangle;

// Jobs of dqrsl.
constexpr int kQy = 10000;
constexpr int kQTy = 1000;

}  // namespace

void OrthogonalFactor::multiplyTransposed(const Submatrix& c, double* work) const {
  if (work == nullptr) return multiplyEach(c, kQTy);
  for (Index j = 0; j < k; j += BlockReflector::kMostColumns) {
    const Index end = std::min(j + BlockReflector::kMostColumns, k);
    const BlockReflector reflector(copyPanel(j, end, work), qraux + j);
    reflector.applyTransposed(c.from(j, 0, c.columns));
  }
}

void OrthogonalFactor::multiply(const Submatrix& c, double* work) const {
  if (work == nullptr) return multiplyEach(c, kQy);
  for (Index end = k; end > 0;) {
    const Index j = std::max<Index>(end - BlockReflector::kMostColumns, 0);
    const BlockReflector reflector(copyPanel(j, end, work), qraux + j);
    reflector.apply(c.from(j, 0, c.columns));
    end = j;
  }
}

void OrthogonalFactor::multiplyEach(const Submatrix& c, int job) const {
  for (Index j = 0; j < c.columns; ++j) {
    double* y = c.at(0, j);
    dqrsl(x, static_cast<int>(ldx), static_cast<int>(n), static_cast<int>(k), qraux, y, y, y,
          nullptr, nullptr, nullptr, job);
  }
}

// A copy of columns j to before `end` of the factor, from row j on. (The reflector writes to its
// panel.)
Submatrix OrthogonalFactor::copyPanel(Index j, Index end, double* work) const {
  const Submatrix panel = {work, n - j, n - j, end - j};
  for (Index l = 0; l < panel.columns; ++l) {
    std::copy_n(x + ((j + l) * ldx + j), panel.rows, panel.at(0, l));
  }
  return panel;
}

namespace {

// A multiple of a register's width near half of n.
Index halfOf(Index n) {
  return (n / 2 + 7) / 8 * 8;
}

// With rows and columns in reverse order the triangle is a lower one.
void solveSmallUpper(const double* r, Index ldr, const Submatrix& x) {
  const auto reverseRows = [&x] {
    for (Index j = 0; j < x.columns; ++j) std::reverse(x.at(0, j), x.at(x.rows, j));
  };
  reverseRows();
  const double* last = r + (x.rows - 1) * (ldr + 1);
  active().dense->solveLower(x.rows, x.columns, {last, -1, -ldr}, x.x, x.ld);
  reverseRows();
}

}  // namespace

void solveUpper(const double* r, Index ldr, const Submatrix& x) {
  if (x.columns == 1) return solveUpper(r, ldr, x.rows, x.x);
  if (x.rows == 0) return;
  if (x.rows <= kSmallTriangle) return solveSmallUpper(r, ldr, x);
  const Index half = halfOf(x.rows);
  const Submatrix above = {x.x, x.ld, half, x.columns}, below = x.from(half, 0, x.columns);
  solveUpper(r + half * (ldr + 1), ldr, below);
  active().dense->gemm(half, x.columns, below.rows, -1.0, {r + half * ldr, 1, ldr},
                       {below.x, 1, x.ld}, x.x, x.ld);
  solveUpper(r, ldr, above);
}

void solveUpperTransposed(const double* r, Index ldr, const Submatrix& x) {
  if (x.columns == 1) return solveUpperTransposed(r, ldr, x.rows, x.x);
  if (x.rows <= kSmallTriangle) {
    return active().dense->solveLower(x.rows, x.columns, {r, ldr, 1}, x.x, x.ld);
  }
  const Index half = halfOf(x.rows);
  const Submatrix above = {x.x, x.ld, half, x.columns}, below = x.from(half, 0, x.columns);
  solveUpperTransposed(r, ldr, above);
  active().dense->gemm(below.rows, x.columns, half, -1.0, {r + half * ldr, ldr, 1}, {x.x, 1, x.ld},
                       below.x, x.ld);
  solveUpperTransposed(r + half * (ldr + 1), ldr, below);
}

}  // namespace vxKilnBase::linpack
