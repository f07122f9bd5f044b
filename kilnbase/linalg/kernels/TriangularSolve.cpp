// L X = B with many right-hand sides, in blocks of kWidth rows of X. A product subtracts the solved
// rows from the next block; within a block, each register holds one row of kWidth right-hand sides.
#include <kilnbase/linalg/kernels/Product.h>
#include <kilnbase/linalg/kernels/Simd.h>

namespace vxKilnBase::kernels::KILN_ISA {

namespace {

// L from row i and column j on.
MatrixView from(MatrixView l, Index i, Index j) {
  return {l.data + i * l.rowStride + j * l.columnStride, l.rowStride, l.columnStride};
}

// x := L⁻¹ x, where x[i] is row i of kWidth right-hand sides and L has order size <= kWidth.
void solveBlock(Index size, MatrixView l, Vector* x) {
  for (Index j = 0; j < size; ++j) {
    x[j] /= splat(*from(l, j, j).data);
    for (Index i = j + 1; i < size; ++i) x[i] -= splat(*from(l, i, j).data) * x[j];
  }
}

// solveBlock for kWidth rows of kWidth columns of X.
void solveColumns(MatrixView l, double* x, Index ldx) {
  Vector columns[kWidth];
  for (Index j = 0; j < kWidth; ++j) columns[j] = load(x + j * ldx);
  transpose(columns);
  solveBlock(kWidth, l, columns);
  transpose(columns);
  for (Index j = 0; j < kWidth; ++j) store(x + j * ldx, columns[j]);
}

// solveBlock for `size` rows of n columns of X, of which one is less than kWidth.
void solvePart(Index size, Index n, MatrixView l, double* x, Index ldx) {
  Vector rows[kWidth] = {};
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < size; ++i) rows[i][j] = x[j * ldx + i];
  }
  solveBlock(size, l, rows);
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < size; ++i) x[j * ldx + i] = rows[i][j];
  }
}

}  // namespace

void solveLower(Index k, Index n, const MatrixView& l, double* x, Index ldx) {
  for (Index i = 0; i < k; i += kWidth) {
    const Index size = k - i < kWidth ? k - i : kWidth;
    gemm(size, n, i, -1.0, from(l, i, 0), {x, 1, ldx}, x + i, ldx);
    for (Index j = 0; j < n; j += kWidth) {
      const Index count = n - j < kWidth ? n - j : kWidth;
      if (size == kWidth && count == kWidth) {
        solveColumns(from(l, i, i), x + j * ldx + i, ldx);
      } else {
        solvePart(size, count, from(l, i, i), x + j * ldx + i, ldx);
      }
    }
  }
}

}  // namespace vxKilnBase::kernels::KILN_ISA
