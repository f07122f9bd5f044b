#include <cmath>
#include <utility>

#include <kilnbase/linalg/Fact.h>
#include <kilnbase/linalg/detail/counts.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/linpack/dgeco.h>
#include <kilnbase/linalg/linpack/dgedi.h>
#include <kilnbase/linalg/linpack/dgefa.h>
#include <kilnbase/linalg/linpack/dgesl.h>
#include <kilnbase/linalg/linpack/dgeslColumns.h>
#include <kilnbase/linalg/linpack/dspco.h>
#include <kilnbase/linalg/linpack/dspdi.h>
#include <kilnbase/linalg/linpack/dspfa.h>
#include <kilnbase/linalg/linpack/dspsl.h>
#include <kilnbase/linalg/linpack/dspslColumns.h>

namespace vxKilnBase {

using detail::asInt;

namespace {

// Jobs of dgesl, and of dgedi and dspdi.
constexpr int kNotTransposed = 0;
constexpr int kDeterminant = 10;
constexpr int kInverse = 1;

// The routines of LINPACK on contiguous factors, by the kind of the matrix.

int runFactor(DoubleGenMat& a, int n, int* pivots) {
  return linpack::dgefa(a.data(), n, n, pivots);
}
int runFactor(DoubleSymMat& a, int n, int* pivots) {
  return linpack::dspfa(a.data(), n, pivots);
}

double runEstimate(DoubleGenMat& a, int n, int* pivots, double* work) {
  return linpack::dgeco(a.data(), n, n, pivots, work);
}
double runEstimate(DoubleSymMat& a, int n, int* pivots, double* work) {
  return linpack::dspco(a.data(), n, pivots, work);
}

void runSolve(const DoubleGenMat& a, int n, const int* pivots, DoubleVec& x) {
  linpack::dgesl(a.data(), n, n, pivots, x.data(), kNotTransposed);
}
void runSolve(const DoubleSymMat& a, int n, const int* pivots, DoubleVec& x) {
  linpack::dspsl(a.data(), n, pivots, x.data());
}
void runSolve(const DoubleGenMat& a, int n, const int* pivots, DoubleGenMat& x) {
  linpack::dgeslColumns(a.data(), n, n, pivots, x.data(), n, asInt(x.cols()), kNotTransposed);
}
void runSolve(const DoubleSymMat& a, int n, const int* pivots, DoubleGenMat& x) {
  linpack::dspslColumns(a.data(), n, pivots, x.data(), n, asInt(x.cols()));
}

void runDeterminantOrInverse(DoubleGenMat& a, int n, const int* pivots, double* determinant,
                             double* work, int job) {
  linpack::dgedi(a.data(), n, n, pivots, determinant, work, job);
}
void runDeterminantOrInverse(DoubleSymMat& a, int n, const int* pivots, double* determinant,
                             double* work, int job) {
  linpack::dspdi(a.data(), n, pivots, determinant, nullptr, work, job);
}

}  // namespace

template <class Matrix>
Fact<Matrix>& Fact<Matrix>::operator=(const Fact& other) {
  const bool rebinds = Matrix::isMovedFrom();
  const bool fits = rebinds || Matrix::rows() == other.rows();
  Matrix::operator=(other);
  if (rebinds) pvts_.reference(IntVec());  // which copies may still view
  pvts_.reshape(fits ? other.pvts_.length() : 0);
  if (fits) pvts_ = other.pvts_;
  rcond_ = fits ? other.rcond_ : 0.0;
  return *this;
}

template <class Matrix>
Fact<Matrix>& Fact<Matrix>::operator=(Fact&& other) {
  if (!Matrix::isMovedFrom()) return *this = other;
  Matrix::operator=(static_cast<Matrix&&>(other));
  pvts_.reference(other.pvts_);
  rcond_ = other.rcond_;
  return *this;
}

template <class Matrix>
void Fact<Matrix>::factor(const Matrix& a, int estimateCondition) {
  const unsigned n = a.rows();
  const bool square = a.cols() == n;
  if (!square) detail::raiseFactorNotSquare(n, a.cols());
  Matrix factors = a.copy();
  if (!square) factors.resize(n, n);
  // New vectors: copies of this factorization keep theirs.
  IntVec pivots(n);
  DoubleVec work(estimateCondition != 0 ? n : 0);
  const bool hasWork = estimateCondition == 0 || work.length() == n;
  if (factors.rows() != n || pivots.length() != n || !hasWork) return;
  if (n > 0 && estimateCondition != 0) {
    rcond_ = runEstimate(factors, asInt(n), pivots.data(), work.data());
  } else if (n > 0) {
    rcond_ = runFactor(factors, asInt(n), pivots.data()) > 0 ? 0.0 : -1.0;
  }
  Matrix::reference(factors);
  pvts_.reference(pivots);
}

// Whether the pivots belong to the matrix part, whatever has become of either.
template <class Matrix>
bool Fact<Matrix>::hasFactors() const {
  return pvts_.length() == Matrix::rows() && Matrix::cols() == Matrix::rows();
}

template <class Matrix>
Matrix Fact<Matrix>::contiguousFactors() const {
  return Matrix::stride() == 1 ? Matrix(*this) : Matrix::copy();
}

// --- Solving

template <class Matrix>
DoubleVec Fact<Matrix>::solve(const DoubleVec& b) const {
  return solveFor(b, b.length());
}

template <class Matrix>
DoubleGenMat Fact<Matrix>::solve(const DoubleGenMat& b) const {
  return solveFor(b, b.rows());
}

template <class Matrix>
template <class RightHandSides>
RightHandSides Fact<Matrix>::solveFor(const RightHandSides& b, unsigned height) const {
  const unsigned n = Matrix::rows();
  if (height != n) {
    detail::raiseRightSideLength(height, n);
    return RightHandSides();
  }
  if (fail() || !hasFactors()) detail::raiseNotFactored();
  if (!hasFactors()) return RightHandSides();
  RightHandSides x = b.copy();
  const Matrix factors = contiguousFactors();
  if (x.length() == b.length() && factors.rows() == n) {
    runSolve(factors, asInt(n), pvts_.data(), x);
  }
  return x;
}

// --- Condition, determinant, inverse

template <class Matrix>
double Fact<Matrix>::condition() const {
  if (rcond_ < 0.0) detail::raiseNoConditionNumber();
  return rcond_;
}

template <class Matrix>
double Fact<Matrix>::determinant() const {
  Matrix factors = contiguousFactors();
  if (factors.rows() == 0 || !hasFactors()) return 0.0;
  double determinant[2];
  runDeterminantOrInverse(factors, asInt(factors.rows()), pvts_.data(), determinant, nullptr,
                          kDeterminant);
  return determinant[0] * std::pow(10.0, determinant[1]);
}

template <class Matrix>
Matrix Fact<Matrix>::inverse() const {
  if (fail() || !hasFactors()) detail::raiseNotFactored();
  Matrix result = Matrix::copy();
  const unsigned n = result.rows();
  DoubleVec work(n);
  if (!hasFactors() || n != Matrix::rows() || work.length() != n) return Matrix();
  runDeterminantOrInverse(result, asInt(n), pvts_.data(), nullptr, work.data(), kInverse);
  return result;
}

template class Fact<DoubleGenMat>;
template class Fact<DoubleSymMat>;

}  // namespace vxKilnBase
