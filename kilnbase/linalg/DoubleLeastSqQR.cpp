#include <cmath>
#include <utility>

#include <kilnbase/linalg/DoubleLeastSqQR.h>

void DoubleLeastSqQR::factor(const DoubleGenMat& a) {
  DoubleQRDecomp::factor(a);
  tolerance_ = 0.0;
}

double DoubleLeastSqQR::setTolerance(double tolerance) {
  return std::exchange(tolerance_, tolerance);
}

unsigned DoubleLeastSqQR::numFreeCols() const {
  const DoubleVec diagonalOfR = diagonal();
  unsigned determined = diagonalLength();
  while (determined > 0 && std::abs(diagonalOfR(static_cast<int>(determined) - 1)) <= tolerance_) {
    --determined;
  }
  return cols() - determined;
}

DoubleVec DoubleLeastSqQR::solve(const DoubleVec& b) const {
  const unsigned freeColumns = numFreeCols();
  if (freeColumns == 0) return DoubleQRDecomp::solve(b);
  return solveLeading(b, cols() - freeColumns);
}

DoubleVec DoubleLeastSqQR::residual(const DoubleVec& b) const {
  return computeResidualVec(b, regularColumns(cols() - numFreeCols()));
}
