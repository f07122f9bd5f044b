#include <algorithm>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/linpack/dqrsl.h>
#include <kilnbase/linalg/linpack/rightHandSides.h>
#include <kilnbase/linalg/linpack/triangular.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;

// Triangles up to this order are solved without dividing them further: 8 n² bytes, 32 KiB of the 48
// KiB first-level cache of a Xeon with AVX-512. Bench: "Cholesky, right-hand sides", 500.
constexpr Index kSmallTriangle = 64;

// Jobs of dqrsl.
constexpr int kQy = 10000;
constexpr int kQTy = 1000;

}  // namespace

void OrthogonalFactor::multiplyTransposed(const Columns& c, double* work) const {
  if (work == nullptr) return multiplyEach(c, kQTy);
  for (Index j = 0; j < k; j += BlockReflector::kMostColumns) {
    const Index end = std::min(j + BlockReflector::kMostColumns, k);
    const BlockReflector reflector(copyPanel(j, end, work), qraux + j);
    reflector.applyTransposed(c.from(j, 0, c.count));
  }
}

void OrthogonalFactor::multiply(const Columns& c, double* work) const {
  if (work == nullptr) return multiplyEach(c, kQy);
  for (Index end = k; end > 0;) {
    const Index j = (end - 1) / BlockReflector::kMostColumns * BlockReflector::kMostColumns;
    const BlockReflector reflector(copyPanel(j, end, work), qraux + j);
    reflector.apply(c.from(j, 0, c.count));
    end = j;
  }
}

void OrthogonalFactor::multiplyEach(const Columns& c, int job) const {
  for (Index j = 0; j < c.count; ++j) {
    double* y = c.at(0, j);
    dqrsl(x, static_cast<int>(ldx), static_cast<int>(n), static_cast<int>(k), qraux, y, y, y,
          nullptr, nullptr, nullptr, job);
  }
}

// A copy of columns j to before `end` of the factor, from row j on. (The reflector writes to its
// panel.)
Columns OrthogonalFactor::copyPanel(Index j, Index end, double* work) const {
  const Columns panel = {work, n - j, n - j, end - j};
  for (Index l = 0; l < panel.count; ++l) {
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
void solveSmallUpper(const double* r, Index ldr, const Columns& x) {
  const auto reverseRows = [&x] {
    for (Index j = 0; j < x.count; ++j) std::reverse(x.at(0, j), x.at(x.rows, j));
  };
  reverseRows();
  const double* last = r + (x.rows - 1) * (ldr + 1);
  active().dense->solveLower(x.rows, x.count, {last, -1, -ldr}, x.x, x.ld);
  reverseRows();
}

}  // namespace

void solveUpper(const double* r, Index ldr, const Columns& x) {
  if (x.count == 1) return solveUpper(r, ldr, x.rows, x.x);
  if (x.rows == 0) return;
  if (x.rows <= kSmallTriangle) return solveSmallUpper(r, ldr, x);
  const Index half = halfOf(x.rows);
  const Columns above = {x.x, x.ld, half, x.count}, below = x.from(half, 0, x.count);
  solveUpper(r + half * (ldr + 1), ldr, below);
  active().dense->gemm(half, x.count, below.rows, -1.0, {r + half * ldr, 1, ldr},
                       {below.x, 1, x.ld}, x.x, x.ld);
  solveUpper(r, ldr, above);
}

void solveUpperTransposed(const double* r, Index ldr, const Columns& x) {
  if (x.count == 1) return solveUpperTransposed(r, ldr, x.rows, x.x);
  if (x.rows <= kSmallTriangle) {
    return active().dense->solveLower(x.rows, x.count, {r, ldr, 1}, x.x, x.ld);
  }
  const Index half = halfOf(x.rows);
  const Columns above = {x.x, x.ld, half, x.count}, below = x.from(half, 0, x.count);
  solveUpperTransposed(r, ldr, above);
  active().dense->gemm(below.rows, x.count, half, -1.0, {r + half * ldr, ldr, 1}, {x.x, 1, x.ld},
                       below.x, x.ld);
  solveUpperTransposed(r + half * (ldr + 1), ldr, below);
}

}  // namespace vxKilnBase::linpack
