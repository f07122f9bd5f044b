#include <algorithm>
#include <utility>

#include <kilnbase/linalg/kernels/Kernels.h>
#include <kilnbase/linalg/kernels/Tuning.h>
#include <kilnbase/linalg/linpack/determinant.h>
#include <kilnbase/linalg/linpack/dgedi.h>

namespace vxKilnBase::linpack {

namespace {

using kernels::active;
using kernels::Index;
using kernels::MatrixView;

void computeDeterminant(const double* a, Index lda, Index n, const int* ipvt, double* det) {
  det[0] = 1.0;
  det[1] = 0.0;
  for (Index k = 0; k < n && det[0] != 0.0; ++k) {
    const double pivot = a[k * lda + k];
    multiplyDeterminant(det, ipvt[k] == k + 1 ? pivot : -pivot);
  }
}

// A square matrix with an upper triangular matrix on and above the diagonal, and below a lower one
// with ones on its diagonal.
struct Triangles {
  double* a;
  Index lda;
  Index n;

  double* at(Index i, Index j) const { return a + j * lda + i; }
  MatrixView view(Index i, Index j) const { return {at(i, j), 1, lda}; }
  Triangles block(Index k, Index size) const { return {at(k, k), lda, size}; }
};

constexpr Index kBlock = kernels::tuning::kInverseBlock;

// One triangle of a block as a full matrix.
class FullBlock {
 public:
  enum Triangle { kUpper, kLower };

  FullBlock(const Triangles& t, Triangle triangle) {
    for (Index j = 0; j < t.n; ++j) {
      double* column = elements_ + j * kBlock;
      std::fill_n(column, t.n, 0.0);
      if (triangle == kUpper) {
        std::copy(t.at(0, j), t.at(j + 1, j), column);
      } else {
        column[j] = 1.0;
        std::copy(t.at(j + 1, j), t.at(t.n, j), column + j + 1);
      }
    }
  }

  MatrixView view() const { return {elements_, 1, kBlock}; }

 private:
  double elements_[kBlock * kBlock];
};

// Copies columns of at most kBlock rows.
MatrixView copied(Index m, Index n, const double* b, Index ldb, double* to) {
  for (Index j = 0; j < n; ++j) std::copy_n(b + j * ldb, m, to + j * kBlock);
  return {to, 1, kBlock};
}

// B := T B for a T of order m, at most kBlock.
void multiplyFromLeft(const FullBlock& t, Index m, Index n, double* b, Index ldb) {
  double copy[kBlock * kBlock];
  for (Index j = 0; j < n; j += kBlock) {
    const Index count = std::min(kBlock, n - j);
    const MatrixView old = copied(m, count, b + j * ldb, ldb, copy);
    active().dense->product(m, count, m, t.view(), old, b + j * ldb, ldb, nullptr);
  }
}

// B := B T for a T of order n, at most kBlock.
void multiplyFromRight(const FullBlock& t, Index m, Index n, double* b, Index ldb) {
  double copy[kBlock * kBlock];
  for (Index i = 0; i < m; i += kBlock) {
    const Index count = std::min(kBlock, m - i);
    const MatrixView old = copied(count, n, b + i, ldb, copy);
    active().dense->product(count, n, n, old, t.view(), b + i, ldb, nullptr);
  }
}

// B := T B for the upper triangle; B has n columns.
void multiplyByUpper(const Triangles& t, Index n, double* b, Index ldb) {
  for (Index i = 0; i < t.n; i += kBlock) {
    const Index size = std::min(kBlock, t.n - i);
    const Index next = i + size;
    multiplyFromLeft(FullBlock(t.block(i, size), FullBlock::kUpper), size, n, b + i, ldb);
    active().dense->gemm(size, n, t.n - next, 1.0, t.view(i, next), {b + next, 1, ldb}, b + i, ldb);
  }
}

// The same for the lower one.
void multiplyByLower(const Triangles& t, Index n, double* b, Index ldb) {
  for (Index end = t.n; end > 0;) {
    const Index size = (end - 1) % kBlock + 1;
    const Index i = end - size;
    multiplyFromLeft(FullBlock(t.block(i, size), FullBlock::kLower), size, n, b + i, ldb);
    active().dense->gemm(size, n, i, 1.0, t.view(i, 0), {b, 1, ldb}, b + i, ldb);
    end = i;
  }
}

void invertUpperBlock(const Triangles& u) {
  const auto& dense = *active().dense;
  for (Index k = 0; k < u.n; ++k) {
    *u.at(k, k) = 1.0 / *u.at(k, k);
    dense.scale(k, -*u.at(k, k), u.at(0, k));
    for (Index j = k + 1; j < u.n; ++j) {
      dense.axpy(k, *u.at(k, j), u.at(0, k), u.at(0, j));
      *u.at(k, j) *= *u.at(k, k);
    }
  }
}

void invertLowerBlock(const Triangles& l) {
  for (Index k = l.n - 1; k-- > 0;) {
    for (Index j = l.n - 1; --j > k;) {
      active().dense->axpy(l.n - j - 1, *l.at(j, k), l.at(j + 1, j), l.at(j + 1, k));
    }
  }
}

void invertUpper(const Triangles& u) {
  for (Index j = 0; j < u.n; j += kBlock) {
    const Triangles block = u.block(j, std::min(kBlock, u.n - j));
    invertUpperBlock(block);
    multiplyByUpper(u.block(0, j), block.n, u.at(0, j), u.lda);
    multiplyFromRight(FullBlock(block, FullBlock::kUpper), j, block.n, u.at(0, j), u.lda);
    for (Index k = j; k < j + block.n; ++k) active().dense->scale(j, -1.0, u.at(0, k));
  }
}

// The multipliers stand for those of L⁻¹: L is I - M.
void invertLower(const Triangles& l) {
  for (Index end = l.n; end > 0;) {
    const Index size = (end - 1) % kBlock + 1;
    const Triangles block = l.block(end - size, size);
    invertLowerBlock(block);
    const Triangles rest = l.block(end, l.n - end);
    double* below = l.at(end, end - size);
    multiplyByLower(rest, size, below, l.lda);
    multiplyFromRight(FullBlock(block, FullBlock::kLower), rest.n, size, below, l.lda);
    end -= size;
  }
}

// The product of the upper and the lower triangle replaces both.
void multiplyTriangles(const Triangles& t) {
  for (Index j = 0; j < t.n; j += kBlock) {
    const Triangles block = t.block(j, std::min(kBlock, t.n - j));
    const Index next = j + block.n;
    const FullBlock lower(block, FullBlock::kLower);
    multiplyFromRight(lower, j, block.n, t.at(0, j), t.lda);
    const FullBlock upper(block, FullBlock::kUpper);
    active().dense->product(block.n, block.n, block.n, upper.view(), lower.view(), block.a, t.lda,
                            nullptr);
    active().dense->gemm(next, block.n, t.n - next, 1.0, t.view(0, next), t.view(next, j),
                         t.at(0, j), t.lda);
    multiplyByUpper(t.block(next, t.n - next), block.n, t.at(next, j), t.lda);
  }
}

// Source: for the order of the steps J. J. Du Croz, N. J. Higham, Stability of methods for matrix
// inversion, IMA J. Numer. Anal. 12 (1992), 1-19, method D.
void invert(const Triangles& factors, const int* ipvt) {
  for (Index j = 0; j < factors.n; ++j) {
    double* column = factors.at(0, j);
    for (Index k = j + 1; k < factors.n; ++k) std::swap(column[k], column[ipvt[k] - 1]);
  }
  invertUpper(factors);
  invertLower(factors);
  multiplyTriangles(factors);
  for (Index k = factors.n; k-- > 0;) {
    const Index l = ipvt[k] - 1;
    if (l != k) std::swap_ranges(factors.at(0, k), factors.at(factors.n, k), factors.at(0, l));
  }
}

// U⁻¹ L⁻¹ replaces U⁻¹ and the multipliers.
void multiplyByInverseLower(const Triangles& t, const int* ipvt, double* work) {
  for (Index k = t.n - 1; k-- > 0;) {
    std::copy(t.at(k + 1, k), t.at(t.n, k), work);
    std::fill(t.at(k + 1, k), t.at(t.n, k), 0.0);
    active().dense->gemv(t.n, t.n - k - 1, 1.0, t.at(0, k + 1), t.lda, work, t.at(0, k));
    const Index l = ipvt[k] - 1;
    if (l != k) std::swap_ranges(t.at(0, k), t.at(t.n, k), t.at(0, l));
  }
}

}  // namespace

void dgedi(double* a, int lda, int n, const int* ipvt, double* det, double* work, int job) {
  const Triangles factors{a, lda, n};
  if (job / 10 != 0) computeDeterminant(a, lda, n, ipvt, det);
  if (job % 10 == 0) return;
  if (n > kBlock) return invert(factors, ipvt);
  invertUpperBlock(factors);
  multiplyByInverseLower(factors, ipvt, work);
}

}  // namespace vxKilnBase::linpack
