#include <algorithm>
#include <numeric>
#include <utility>

#include <kilnbase/linalg/DoubleQRDecomp.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/linpack/dqrdc.h>
#include <kilnbase/linalg/linpack/dqrsl.h>

namespace detail = vxKilnBase::detail;
using vxKilnBase::linpack::dqrdc;
using vxKilnBase::linpack::dqrsl;

namespace {

// Jobs of dqrsl.
constexpr int kQy = 10000;
constexpr int kQTy = 1000;
constexpr int kCoefficients = 100;
constexpr int kResidual = 10;
constexpr int kFit = 1;

}  // namespace

void DoubleQRDecomp::factor(const DoubleGenMat& a) {
  reference(a.copy());
  dofactor();
}

void DoubleQRDecomp::dofactor() {
  deepenShallowCopy();
  // New vectors: pivots() and copies of this decomposition may still view the old ones.
  pvts_.reference(IntVec(cols(), 0));
  qraux_.reference(DoubleVec(cols()));
  DoubleVec work(cols());
  dqrdc(data(), static_cast<int>(rows()), static_cast<int>(rows()), static_cast<int>(cols()),
        qraux_.data(), pvts_.data(), work.data(), pivoting_ != 0 ? 1 : 0);
  if (pivoting_ != 0) {
    pvts_ -= 1;
  } else {
    std::iota(pvts_.data(), pvts_.data() + cols(), 0);
  }
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
  if (cols() == 0 && b.length() == rows()) detail::raiseNotFactored();
  return solveLeading(b, diagonalLength());
}

DoubleVec DoubleQRDecomp::solveLeading(const DoubleVec& b, unsigned k) const {
  DoubleVec x = partialSolve(b, k);
  if (b.length() != rows()) return x;
  x.resize(cols());
  return unpermute(x);
}

DoubleVec DoubleQRDecomp::partialSolve(const DoubleVec& b, unsigned k) const {
  if (!lengthAgrees(b)) return DoubleVec();
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
  if (!lengthAgrees(y)) return DoubleVec();
  DoubleVec result = y.copy();
  run(job, usableColumns(k), result.data(), nullptr);
  return result;
}

// How many of the first k columns have a transformation, whatever has become of the matrix part.
unsigned DoubleQRDecomp::usableColumns(unsigned k) const {
  return std::min({k, diagonalLength(), qraux_.length()});
}

// Runs dqrsl on the first k columns, in place of y but for the coefficients.
void DoubleQRDecomp::run(int job, unsigned k, double* y, double* coefficients) const {
  const DoubleVec factors = stride() == 1 ? DoubleVec(*this) : DoubleVec(*this).copy();
  const auto height = static_cast<int>(rows());
  dqrsl(factors.data(), height, height, static_cast<int>(k), qraux_.data(), y, y, y, coefficients,
        y, y, job);
}

bool DoubleQRDecomp::lengthAgrees(const DoubleVec& y) const {
  if (y.length() == rows()) return true;
  detail::raiseRightSideLength(y.length(), rows());
  return false;
}

DoubleVec DoubleQRDecomp::permute(const DoubleVec& v) const {
  if (v.length() == cols()) return v.vecPick(pvts_);
  detail::raisePermutedLength(v.length(), cols());
  return v.copy();
}

DoubleVec DoubleQRDecomp::unpermute(const DoubleVec& v) const {
  DoubleVec result = v.copy();
  if (v.length() == cols()) {
    result.vecPick(pvts_) = v;
  } else {
    detail::raisePermutedLength(v.length(), cols());
  }
  return result;
}
