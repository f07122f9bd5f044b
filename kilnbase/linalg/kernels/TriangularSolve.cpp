// Triangular systems with many right-hand sides, by blocks of a register's width: what the solved
// blocks contribute to the next is a product, and within a block the right-hand sides lie across
// the lanes.
#include <kilnbase/linalg/kernels/Product.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// Solves Rᵀ Y = X for kWidth columns of X and the R of order `size`, at most kWidth.
void solveBlock(Index size, const double* r, Index ldr, Vector* x) {
  for (Index i = 0; i < size; ++i) {
    x[i] /= splat(r[i * ldr + i]);
    for (Index j = i + 1; j < size; ++j) x[j] -= splat(r[j * ldr + i]) * x[i];
  }
}

void solveColumns(const double* r, Index ldr, double* x, Index ldx) {
  Vector columns[kWidth];
  for (Index j = 0; j < kWidth; ++j) columns[j] = load(x + j * ldx);
  transpose(columns);
  solveBlock(kWidth, r, ldr, columns);
  transpose(columns);
  for (Index j = 0; j < kWidth; ++j) store(x + j * ldx, columns[j]);
}

// Fewer rows or columns than a register's width.
void solvePart(Index size, Index n, const double* r, Index ldr, double* x, Index ldx) {
  Vector rows[kWidth] = {};
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < size; ++i) rows[i][j] = x[j * ldx + i];
  }
  solveBlock(size, r, ldr, rows);
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < size; ++i) x[j * ldx + i] = rows[i][j];
  }
}

}  // namespace

void solveUpperTransposed(Index k, Index n, const double* r, Index ldr, double* x, Index ldx) {
  for (Index i = 0; i < k; i += kWidth) {
    const Index size = k - i < kWidth ? k - i : kWidth;
    gemm(size, n, i, -1.0, {r + i * ldr, ldr, 1}, {x, 1, ldx}, x + i, ldx);
    for (Index j = 0; j < n; j += kWidth) {
      const Index count = n - j < kWidth ? n - j : kWidth;
      const double* diagonal = r + i * ldr + i;
      if (size == kWidth && count == kWidth) {
        solveColumns(diagonal, ldr, x + j * ldx + i, ldx);
      } else {
        solvePart(size, count, diagonal, ldr, x + j * ldx + i, ldx);
      }
    }
  }
}

}  // namespace vxKilnBase::kernels::KILN_ISA
