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

unsigned DoubleLeastSqQR::determinedColumns() const {
  return cols() - numFreeCols();
}

DoubleVec DoubleLeastSqQR::solve(const DoubleVec& b) const {
  return solve(DoubleGenMat(b, b.length(), 1)).dataVec();
}

DoubleGenMat DoubleLeastSqQR::solve(const DoubleGenMat& b) const {
  return solveLeading(b, determinedColumns());
}

DoubleVec DoubleLeastSqQR::residual(const DoubleVec& b) const {
  return computeResidualVec(b, regularColumns(determinedColumns()));
}

DoubleGenMat DoubleLeastSqQR::residual(const DoubleGenMat& b) const {
  return residualsOf(b, regularColumns(determinedColumns()));
}
