#include <algorithm>
#include <numeric>
#include <utility>

#include <kilnbase/linalg/DoubleQRDecomp.h>
#include <kilnbase/linalg/detail/PivotedOrder.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/linpack/dqrdc.h>
#include <kilnbase/linalg/linpack/dqrsl.h>
#include <kilnbase/linalg/linpack/rightHandSides.h>

namespace detail = vxKilnBase::detail;
using vxKilnBase::detail::PivotedOrder;
using vxKilnBase::linpack::dqrdc;
using vxKilnBase::linpack::dqrsl;
using vxKilnBase::linpack::OrthogonalFactor;
using vxKilnBase::linpack::solveUpper;
using vxKilnBase::linpack::Submatrix;

namespace {

// Jobs of dqrsl.
constexpr int kQy = 10000;
constexpr int kQTy = 1000;
constexpr int kCoefficients = 100;
constexpr int kResidual = 10;
constexpr int kFit = 1;

// Multiplies the columns of C by the Q of the first `count` transformations.
class QTimesColumns {
 public:
  QTimesColumns(const DoubleVec& factors, const DoubleVec& qraux, unsigned count, DoubleGenMat& c)
      : q_{factors.data(), c.rows(), c.rows(), count, qraux.data()},
        columns_{c.data(), c.rows(), c.rows(), c.cols()},
        work_(OrthogonalFactor::needsWork(c.cols()) ? c.rows() : 0, OrthogonalFactor::kWorkPerRow) {
  }

  void multiply() const { q_.multiply(columns_, static_cast<double*>(work_.data)); }
  void multiplyTransposed() const {
    q_.multiplyTransposed(columns_, static_cast<double*>(work_.data));
  }
  Submatrix leadingRows() const { return {columns_.x, columns_.ld, q_.k, columns_.columns}; }

 private:
  OrthogonalFactor q_;
  Submatrix columns_;
  RWBlock work_;
};

}  // namespace

void DoubleQRDecomp::factor(const DoubleGenMat& a) {
  const unsigned n = a.cols();
  DoubleGenMat factors = a.copy();
  // New vectors: pivots() and copies of this decomposition may still view the old ones.
  IntVec pivots(n, 0);
  DoubleVec qraux(n), work(n);
  if (std::min({factors.cols(), pivots.length(), qraux.length(), work.length()}) < n) return;
  const auto height = static_cast<int>(a.rows());
  dqrdc(factors.data(), height, height, static_cast<int>(n), qraux.data(), pivots.data(),
        work.data(), pivoting_ != 0 ? 1 : 0);
  if (pivoting_ != 0) {
    pivots -= 1;
  } else {
    std::iota(pivots.data(), pivots.data() + n, 0);
  }
  reference(factors);
  pvts_.reference(pivots);
  qraux_.reference(qraux);
}

int DoubleQRDecomp::doPivoting(int on) {
  return std::exchange(pivoting_, on);
}

unsigned DoubleQRDecomp::diagonalLength() const {
  return std::min(rows(), cols());
}

unsigned DoubleQRDecomp::rank() const {
  const DoubleVec diagonalOfR = diagonal();
  unsigned result = 0;
  for (int k = 0; k < static_cast<int>(diagonalLength()); ++k) {
    if (diagonalOfR(k) != 0.0) ++result;
  }
  return result;
}

bool DoubleQRDecomp::isSingular() const {
  const unsigned r = rank();
  return r != rows() && r != cols();
}

unsigned DoubleQRDecomp::regularColumns(unsigned k) const {
  for (unsigned j = 0; j < k; ++j) {
    if ((*this)(static_cast<int>(j), static_cast<int>(j)) == 0.0) return j;
  }
  return k;
}

DoubleVec DoubleQRDecomp::solve(const DoubleVec& b) const {
  return solve(DoubleGenMat(b, b.length(), 1)).dataVec();
}

DoubleGenMat DoubleQRDecomp::solve(const DoubleGenMat& b) const {
  return solveLeading(b, diagonalLength());
}

DoubleGenMat DoubleQRDecomp::solveLeading(const DoubleGenMat& b, unsigned k) const {
  if (!lengthAgrees(b.rows())) return DoubleGenMat();
  if (cols() == 0) detail::raiseNotFactored();
  const DoubleVec factors = elements();
  const unsigned count = regularColumns(usableColumns(k));
  DoubleGenMat c = b.copy();
  const QTimesColumns q(factors, qraux_, count, c);
  q.multiplyTransposed();
  solveUpper(factors.data(), rows(), q.leadingRows());
  return PivotedOrder(pvts_, cols()).unpermuteRows(c, count);
}

DoubleGenMat DoubleQRDecomp::residualsOf(const DoubleGenMat& b, unsigned k) const {
  if (!lengthAgrees(b.rows())) return DoubleGenMat();
  const DoubleVec factors = elements();
  const unsigned count = usableColumns(k);
  DoubleGenMat c = b.copy();
  const QTimesColumns q(factors, qraux_, count, c);
  q.multiplyTransposed();
  for (int j = 0; j < static_cast<int>(c.cols()); ++j) c.col(j).slice(0, count) = 0.0;
  q.multiply();
  return c;
}

DoubleVec DoubleQRDecomp::partialSolve(const DoubleVec& b, unsigned k) const {
  if (!lengthAgrees(b.length())) return DoubleVec();
  k = usableColumns(k);
  DoubleVec qty = b.copy();
  DoubleVec x(k, 0.0);
  run(kCoefficients, regularColumns(k), qty.data(), x.data());
  return x;
}

DoubleVec DoubleQRDecomp::computeQy(const DoubleVec& y, unsigned k) const {
  return transform(y, k, kQy);
}

DoubleVec DoubleQRDecomp::computeQTy(const DoubleVec& y, unsigned k) const {
  return transform(y, k, kQTy);
}

DoubleVec DoubleQRDecomp::computeXb(const DoubleVec& y, unsigned k) const {
  return transform(y, k, kFit);
}

DoubleVec DoubleQRDecomp::computeResidualVec(const DoubleVec& y, unsigned k) const {
  return transform(y, k, kResidual);
}

// Runs a job of dqrsl whose one result is as long as y.
DoubleVec DoubleQRDecomp::transform(const DoubleVec& y, unsigned k, int job) const {
  if (!lengthAgrees(y.length())) return DoubleVec();
  DoubleVec result = y.copy();
  run(job, usableColumns(k), result.data(), nullptr);
  return result;
}

// How many of the first k columns have a transformation. (The matrix part may have been rebound.)
unsigned DoubleQRDecomp::usableColumns(unsigned k) const {
  return std::min({k, diagonalLength(), qraux_.length()});
}

// The elements of the matrix part, contiguous: a view where possible.
DoubleVec DoubleQRDecomp::elements() const {
  return stride() == 1 ? DoubleVec(*this) : DoubleVec(*this).copy();
}

// Runs dqrsl on the first k columns. All results but the coefficients replace y.
void DoubleQRDecomp::run(int job, unsigned k, double* y, double* coefficients) const {
  const DoubleVec factors = elements();
  const auto height = static_cast<int>(rows());
  dqrsl(factors.data(), height, height, static_cast<int>(k), qraux_.data(), y, y, y, coefficients,
        y, y, job);
}

bool DoubleQRDecomp::lengthAgrees(unsigned length) const {
  if (length == rows()) return true;
  detail::raiseRightSideLength(length, rows());
  return false;
}

DoubleVec DoubleQRDecomp::permute(const DoubleVec& v) const {
  if (v.length() == cols()) return PivotedOrder(pvts_, cols()).permute(v);
  detail::raisePermutedLength(v.length(), cols());
  return v.copy();
}

DoubleVec DoubleQRDecomp::unpermute(const DoubleVec& v) const {
  if (v.length() == cols()) return PivotedOrder(pvts_, cols()).unpermute(v);
  detail::raisePermutedLength(v.length(), cols());
  return v.copy();
}
