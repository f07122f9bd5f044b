#include <algorithm>
#include <numeric>
#include <utility>

#include <kilnbase/detail/assert.h>
#include <kilnbase/linalg/DoubleQRDecomp.h>
#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/linpack/dqrdc.h>
#include <kilnbase/linalg/linpack/dqrsl.h>

using vxKilnBase::raiseMathError;
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
  if (cols() == 0 && b.length() == rows()) raiseMathError(0x5011);
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
  k = std::min(k, diagonalLength());
  const unsigned regular = regularColumns(k);
  if (regular < k) raiseMathError(0x5011);
  DoubleVec qty = b.copy();
  DoubleVec x(k, 0.0);
  dqrsl(data(), static_cast<int>(rows()), static_cast<int>(rows()), static_cast<int>(regular),
        qraux_.data(), qty.data(), nullptr, qty.data(), x.data(), nullptr, nullptr, kCoefficients);
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

// Runs a job of dqrsl that has one result as long as y.
DoubleVec DoubleQRDecomp::transform(const DoubleVec& y, unsigned k, int job) const {
  if (!lengthAgrees(y)) return DoubleVec();
  KILN_ASSERT(stride() == 1 && qraux_.length() == cols());
  k = std::min(k, diagonalLength());
  DoubleVec result = y.copy();
  double* z = result.data();
  dqrsl(data(), static_cast<int>(rows()), static_cast<int>(rows()), static_cast<int>(k),
        qraux_.data(), z, z, z, nullptr, z, z, job);
  return result;
}

bool DoubleQRDecomp::lengthAgrees(const DoubleVec& y) const {
  if (y.length() == rows()) return true;
  raiseMathError(0x5002, y.length(), rows());
  return false;
}

DoubleVec DoubleQRDecomp::permute(const DoubleVec& v) const {
  if (v.length() == cols()) return v.vecPick(pvts_);
  raiseMathError(0x5004, v.length(), cols());
  return v.copy();
}

DoubleVec DoubleQRDecomp::unpermute(const DoubleVec& v) const {
  DoubleVec result = v.copy();
  if (v.length() == cols()) {
    result.vecPick(pvts_) = v;
  } else {
    raiseMathError(0x5004, v.length(), cols());
  }
  return result;
}
