// The products of kernels/Dense.h beside plain loops: every length, leading dimension and layout.
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/kernels/Tuning.h>

#include "tests/support/GuardedArray.h"

namespace {

using kilntest::Doubles;
using kilntest::Index;
using vxKilnBase::kernels::active;
using vxKilnBase::kernels::DenseKernels;
using vxKilnBase::kernels::MatrixView;
namespace tuning = vxKilnBase::kernels::tuning;

const DenseKernels& dense() {
  return *active().dense;
}

Index width() {
  return active().vectorDoubles;
}

double element(const MatrixView& a, Index i, Index j) {
  return a.data[i * a.rowStride + j * a.columnStride];
}

// beta C + alpha A B for C of m rows and n columns, in the upper triangle only if `upper`.
Doubles plainProduct(Index m, Index n, Index k, double alpha, MatrixView a, MatrixView b,
                     double beta, Doubles c, Index ldc, bool upper = false) {
  for (Index j = 0; j < n; ++j) {
    for (Index i = 0; i < (upper ? j + 1 : m); ++i) {
      double& sum = c[j * ldc + i];
      if (beta == 0.0) sum = 0.0;
      for (Index l = 0; l < k; ++l) sum += alpha * element(a, i, l) * element(b, l, j);
    }
  }
  return c;
}

TEST(DenseKernels, VectorsOfEveryLength) {
  for (Index n = 0; n <= 9 * width() + 1; ++n) {
    SCOPED_TRACE(n);
    Doubles x(n, 1), y(n, 2);
    Doubles sum = y, product = x, newX = x, newY = y;
    double dot = 0.0;
    for (Index i = 0; i < n; ++i) {
      dot += x[i] * y[i];
      sum[i] += -3.0 * x[i];
      product[i] *= -3.0;
      newX[i] = 3.0 * x[i] + 5.0 * y[i];
      newY[i] = 3.0 * y[i] - 5.0 * x[i];
    }
    Doubles rotatedX = x, rotatedY = y;
    active().rotations->rotate(n, rotatedX.data(), rotatedY.data(), 3.0, 5.0);
    EXPECT_EQ(rotatedX.difference(newX), "");
    EXPECT_EQ(rotatedY.difference(newY), "");
    EXPECT_EQ(dense().dot(n, x.data(), y.data()), dot);
    dense().axpy(n, -3.0, x.data(), y.data());
    EXPECT_EQ(y.difference(sum), "");
    dense().scale(n, -3.0, x.data());
    EXPECT_EQ(x.difference(product), "");
  }
}

void expectMatrixTimesVector(Index m, Index n, Index lda) {
  SCOPED_TRACE(testing::Message() << m << " by " << n << ", lda " << lda);
  Doubles a(m, n, lda, 1);
  for (const bool transposed : {false, true}) {
    const auto add = transposed ? dense().gemvTransposed : dense().gemv;
    const auto multiply = transposed ? dense().productVectorTransposed : dense().productVector;
    const MatrixView view = {a.data(), transposed ? lda : 1, transposed ? 1 : lda};
    const Index rows = transposed ? n : m, depth = transposed ? m : n;
    Doubles x(depth, 2), y(rows, 3), unset(rows);
    const MatrixView column = {x.data(), 1, depth};
    const Doubles sum = plainProduct(rows, 1, depth, -2.0, view, column, 1.0, y, rows);
    const Doubles product = plainProduct(rows, 1, depth, 1.0, view, column, 0.0, unset, rows);
    add(m, n, -2.0, a.data(), lda, x.data(), y.data());
    EXPECT_EQ(y.difference(sum), "") << transposed;
    multiply(m, n, a.data(), lda, x.data(), unset.data());
    EXPECT_EQ(unset.difference(product), "") << transposed;
  }
}

TEST(DenseKernels, MatrixTimesVectorOfEveryShape) {
  for (Index m = 0; m <= 3 * width() + 1; ++m) {
    for (Index n = 0; n <= 3 * width() + 1; ++n) {
      expectMatrixTimesVector(m, n, m);
      expectMatrixTimesVector(m, n, m + 3);
    }
  }
  const Index tile = tuning::kVectorTile * width();
  for (Index m : {tile - 1, tile, tile + 1, tile + width() - 1, tile + width(), 2 * tile + 3}) {
    for (Index n : {2, 17}) expectMatrixTimesVector(m, n, m + 1);
    expectMatrixTimesVector(m, tuning::kMostUnblockedColumns + 1, m + 1);
    expectMatrixTimesVector(m, tuning::kMostUnblockedColumns + 3 * tuning::kColumnBlock, m);
  }
}

// A matrix operand of the product, by the strides of its rows and columns.
struct Operand {
  Operand(Index m, Index n, int layout, std::uint64_t seed)
      : rows(layout == 1   ? n
             : layout == 2 ? 2 * m
                           : m),
        storage(rows, layout == 1 ? m : n, rows + 3, seed) {
    const Index ld = rows + 3;
    view = {storage.data(), 1, ld};                                              // by columns
    if (layout == 1) view = {storage.data(), ld, 1};                             // by rows
    if (layout == 2) view = {storage.data(), 2, ld};                             // neither
    if (layout == 3 && m > 0 && n > 0) view = {&storage[(n - 1) * ld], 1, -ld};  // backwards
  }

  Index rows;
  Doubles storage;
  MatrixView view;
};

void expectProduct(Index m, Index n, Index k, int layoutA, int layoutB) {
  SCOPED_TRACE(testing::Message() << m << " by " << k << " by " << n << ", layouts " << layoutA
                                  << " and " << layoutB);
  const Operand a(m, k, layoutA, 1), b(k, n, layoutB, 2);
  const Index ldc = m + 2;
  const Doubles old(m, n, ldc, 3);
  Doubles sum = old, triangle = old;
  dense().gemm(m, n, k, -2.0, a.view, b.view, sum.data(), ldc);
  EXPECT_EQ(sum.difference(plainProduct(m, n, k, -2.0, a.view, b.view, 1.0, old, ldc)), "");
  const Doubles plain = plainProduct(m, n, k, 1.0, a.view, b.view, 0.0, old, ldc);
  static std::vector<double> scratch(vxKilnBase::kernels::kProductScratch, std::nan(""));
  for (double* memory : {static_cast<double*>(nullptr), scratch.data()}) {
    Doubles product = old;
    dense().product(m, n, k, a.view, b.view, product.data(), ldc, memory);
    EXPECT_EQ(product.difference(plain), "") << (memory == nullptr);
  }
  if (m != n) return;
  dense().syrkUpper(n, k, -2.0, a.view, b.view, triangle.data(), ldc);
  EXPECT_EQ(triangle.difference(plainProduct(m, n, k, -2.0, a.view, b.view, 1.0, old, ldc, true)),
            "");
}

TEST(DenseKernels, ProductOfEveryShapeAndLayout) {
  for (Index m = 0; m <= 3 * width() + 1; ++m) {
    for (Index n = 0; n <= 3 * width() + 1; ++n) {
      for (Index k : {0, 1, 5, 16}) {
        expectProduct(m, n, k, static_cast<int>((m + n) % 4), static_cast<int>((m + k) % 4));
      }
    }
  }
  const Index deep = tuning::kPanelDepth + 7, wide = tuning::kLeastPackedColumns + 5;
  for (int layout = 0; layout < 4; ++layout) {
    expectProduct(31, 29, deep, layout, 0);
    expectProduct(50, wide, 3 * width() + 2, layout, 1);
    expectProduct(wide, wide, 21, layout, 3);
    expectProduct(5, tuning::kBlockColumns + 9, 9, layout, 0);
  }
  expectProduct(tuning::kBlockColumns + 9, tuning::kBlockColumns + 9, deep, 1, 0);
  expectProduct(30, tuning::kCopiedColumns + 15, tuning::kBlockDepth + 3, 0, 1);
  expectProduct(500, 20, 2 * tuning::kBlockDepth, 1, 1);
}

TEST(DenseKernels, SolveLowerOfEveryShapeAndLayout) {
  for (Index k = 0; k <= 3 * width() + 1; ++k) {
    for (Index n = 0; n <= 2 * width() + 1; ++n) {
      SCOPED_TRACE(testing::Message() << k << " by " << n);
      Doubles rows(k, k, k + 3, 1);
      const bool byRows = n % 2 == 0;
      const MatrixView l = {rows.data(), byRows ? k + 3 : 1, byRows ? 1 : k + 3};
      for (Index i = 0; i < k; ++i) {
        rows[i * (k + 4)] = i % 3 == 0 ? -2.0 : 4.0;
        for (Index j = i + 1; j < k; ++j) rows[i * l.rowStride + j * l.columnStride] = std::nan("");
      }
      // The right-hand sides L X of a known X.
      Doubles solution(k, n, k + 1, 2), x = solution;
      for (Index j = 0; j < n; ++j) {
        for (Index i = 0; i < k; ++i) {
          x[j * (k + 1) + i] = 0.0;
          for (Index q = 0; q <= i; ++q)
            x[j * (k + 1) + i] += element(l, i, q) * solution[j * (k + 1) + q];
        }
      }
      dense().solveLower(k, n, l, x.data(), k + 1);
      EXPECT_EQ(x.difference(solution), "");
    }
  }
}

}  // namespace
