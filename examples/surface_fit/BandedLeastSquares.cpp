#include "examples/surface_fit/BandedLeastSquares.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <kilnbase/linalg/DoubleQRDecomp.h>
#include <kilnbase/linalg/Products.h>
#include <kilnbase/linalg/vecmath.h>

using vxKilnBase::product;
using vxKilnBase::transProduct;

namespace surfacefit {

namespace {

// A combination with the singular value s times the damping keeps 1 - (1 + s^2)^-4 of its share in
// the solution: all but 1e-4 for s = 3, 94 % for s = 1, 4 % for s = 0.1.
constexpr int kDampedIterations = 4;

constexpr int kInverseIterations = 4;

// Rows [from, from + count) of each column of `source`, but none below its diagonal, to `target`.
void copyTrapezoid(const DoubleGenMat& source, int from, int count, DoubleGenMat& target,
                   int shift) {
  const auto columns = static_cast<int>(source.cols());
  for (int j = shift; j < columns; ++j)
    for (int i = from; i < std::min(from + count, j + 1); ++i)
      target(i - from, j - shift) = source(i, j);
}

// Overwrites y by the x with U x = y, where U is the upper triangle of a block.
void solveUpper(const DoubleGenMat& u, DoubleVec y) {
  for (int i = static_cast<int>(u.cols()) - 1; i >= 0; --i) {
    y(i) /= u(i, i);
    for (int k = 0; k < i; ++k) y(k) -= u(k, i) * y(i);
  }
}

void solveUpperTransposed(const DoubleGenMat& u, DoubleVec y) {
  for (int i = 0; i < static_cast<int>(u.cols()); ++i) {
    for (int k = 0; k < i; ++k) y(i) -= u(k, i) * y(k);
    y(i) /= u(i, i);
  }
}

DoubleGenMat solveUpper(const DoubleGenMat& u, const DoubleGenMat& y) {
  DoubleGenMat x = y.copy();
  for (int j = 0; j < static_cast<int>(x.cols()); ++j) solveUpper(u, x.col(j));
  return x;
}

DoubleGenMat identity(unsigned size) {
  DoubleGenMat result(size, size, 0.0);
  result.diagonal() = 1.0;
  return result;
}

// Puts `source`, as far as there is room, into `target` with its first element at (row, column).
void put(const DoubleGenMat& source, DoubleGenMat& target, int row, int column) {
  const int rows = std::min<int>(source.rows(), static_cast<int>(target.rows()) - row);
  const int columns = std::min<int>(source.cols(), static_cast<int>(target.cols()) - column);
  for (int j = 0; j < columns; ++j)
    for (int i = 0; i < rows; ++i) target(row + i, column + j) = source(i, j);
}

}  // namespace

BandedQr::BandedQr(int width) : width_(width), front_(columns() - 1, columns(), 0.0) {}

void BandedQr::add(const DoubleGenMat& equations) {
  DoubleGenMat stacked(rows_ + equations.rows(), columns(), 0.0);
  copyTrapezoid(front_, 0, rows_, stacked, 0);
  put(equations, stacked, rows_, 0);
  DoubleQRDecomp qr;
  qr.doPivoting(0);
  qr.factor(stacked);
  rows_ = std::min<int>(stacked.rows(), front_.rows());
  copyTrapezoid(qr, 0, rows_, front_, 0);
}

DoubleGenMat BandedQr::next() {
  const int taken = std::min(width_, rows_);
  DoubleGenMat rows(taken, columns(), 0.0);
  copyTrapezoid(front_, 0, taken, rows, 0);

  DoubleGenMat rest(front_.rows(), front_.cols(), 0.0);
  copyTrapezoid(front_, taken, rows_ - taken, rest, width_);
  rest.col(columns() - 1 - width_) = 0.0;
  for (int i = taken; i < rows_; ++i) rest(i - taken, columns() - 1) = front_(i, columns() - 1);
  front_.reference(rest);
  rows_ -= taken;
  return rows;
}

void BandedTriangle::append(const DoubleGenMat& rows) {
  DoubleGenMat padded(width_, rows.cols(), 0.0);
  put(rows, padded, 0, 0);
  rows_.push_back(padded);
}

// Views.
DoubleGenMat BandedTriangle::diagonalBlock(int block) const {
  return DoubleGenMat(rows_[block].dataVec().slice(0, width_ * width_), width_, width_);
}

DoubleGenMat BandedTriangle::rightBlocks(int block) const {
  constexpr int kRight = kBandBlocks - 1;
  return DoubleGenMat(rows_[block].dataVec().slice(width_ * width_, kRight * width_ * width_),
                      width_, kRight * width_);
}

DoubleVec BandedTriangle::part(const DoubleVec& x, int block, int count) const {
  return x.slice(block * width_, count * width_);
}

DoubleVec BandedTriangle::rightSide() const {
  DoubleVec z(length(), 0.0);
  for (int s = 0; s < blocks(); ++s)
    part(z, s, 1) = rows_[s].col(static_cast<int>(rows_[s].cols()) - 1);
  return z;
}

DoubleVec BandedTriangle::times(const DoubleVec& x) const {
  DoubleVec y(length(), 0.0);
  for (int s = 0; s < blocks(); ++s)
    part(y, s, 1) = product(diagonalBlock(s), part(x, s, 1)) +
                    product(rightBlocks(s), part(x, s + 1, kBandBlocks - 1));
  return y;
}

DoubleVec BandedTriangle::transposeTimes(const DoubleVec& y) const {
  DoubleVec x(length(), 0.0);
  for (int s = 0; s < blocks(); ++s) {
    part(x, s, 1) += product(part(y, s, 1), diagonalBlock(s));
    part(x, s + 1, kBandBlocks - 1) += product(part(y, s, 1), rightBlocks(s));
  }
  return x;
}

double BandedTriangle::meanColumn() const {
  double squares = 0.0;
  for (const DoubleGenMat& rows : rows_) {
    const DoubleVec all = rows.dataVec().slice(0, kBandBlocks * width_ * width_);
    squares += dot(all, all);
  }
  return std::sqrt(squares / unknowns());
}

double BandedTriangle::smallestDiagonal() const {
  double smallest = std::numeric_limits<double>::infinity();
  for (const DoubleGenMat& rows : rows_)
    for (int i = 0; i < width_; ++i) smallest = std::min(smallest, std::abs(rows(i, i)));
  return smallest;
}

DoubleVec BandedTriangle::solve(const DoubleVec& y) const {
  DoubleVec x = y.copy();
  for (int s = blocks() - 1; s >= 0; --s) {
    part(x, s, 1) -= product(rightBlocks(s), part(x, s + 1, kBandBlocks - 1));
    solveUpper(diagonalBlock(s), part(x, s, 1));
  }
  return x;
}

DoubleVec BandedTriangle::solveTransposed(const DoubleVec& y) const {
  DoubleVec x = y.copy();
  for (int s = 0; s < blocks(); ++s) {
    solveUpperTransposed(diagonalBlock(s), part(x, s, 1));
    part(x, s + 1, kBandBlocks - 1) -= product(part(x, s, 1), rightBlocks(s));
  }
  part(x, blocks(), kBandBlocks - 1) = 0.0;
  return x;
}

double BandedTriangle::smallestSingularValue() const {
  std::minstd_rand random(1);
  DoubleVec v(length(), 0.0);
  for (int i = 0; i < unknowns(); ++i)
    v(i) = static_cast<double>(random()) / std::minstd_rand::max() - 0.5;
  double growth = 0.0;
  for (int k = 0; k < kInverseIterations; ++k) {
    v /= v.vecLen();
    v.reference(solve(solveTransposed(v)));
    growth = v.vecLen();
  }
  return 1.0 / std::sqrt(growth);
}

DoubleVec BandedTriangle::inverseGramDiagonal() const {
  DoubleVec diagonal(unknowns());
  // The inverse at the three blocks after the current one.
  DoubleGenMat after((kBandBlocks - 1) * width_, (kBandBlocks - 1) * width_, 0.0);
  for (int s = blocks() - 1; s >= 0; --s) {
    const DoubleGenMat inverse = solveUpper(diagonalBlock(s), identity(width_));
    const DoubleGenMat right = solveUpper(diagonalBlock(s), rightBlocks(s));
    const DoubleGenMat rightTimesAfter = product(right, after);
    const DoubleGenMat own = transProduct(inverse, inverse) + transProduct(rightTimesAfter, right);
    part(diagonal, s, 1) = own.diagonal();

    DoubleGenMat next(after.rows(), after.cols());
    put(after, next, width_, width_);
    put(-rightTimesAfter, next, 0, width_);
    put(transpose(-rightTimesAfter), next, width_, 0);
    put(own, next, 0, 0);
    after.reference(next);
  }
  return diagonal;
}

BandedTriangle BandedTriangle::damped(double weight) const {
  BandedTriangle result(width_);
  BandedQr qr(width_);
  DoubleGenMat weights(width_, qr.columns(), 0.0);
  weights.diagonal() = weight;
  for (const DoubleGenMat& rows : rows_) {
    qr.add(rows);
    qr.add(weights);
    result.append(qr.next());
  }
  return result;
}

BandedSolution solveLeastSquares(const BandedTriangle& triangle, double tolerance, double damping) {
  const double mean = triangle.meanColumn();
  const double least = tolerance * mean;
  const DoubleVec z = triangle.rightSide();
  if (triangle.smallestDiagonal() > least && triangle.smallestSingularValue() > least)
    return {triangle.solve(z).slice(0, triangle.unknowns()), triangle.unknowns()};

  const BandedTriangle damped = triangle.damped(damping * mean);
  DoubleVec x(triangle.length(), 0.0);
  for (int k = 0; k < kDampedIterations; ++k) {
    const DoubleVec gradient = triangle.transposeTimes(z - triangle.times(x));
    x += damped.solve(damped.solveTransposed(gradient));
  }
  const DoubleVec undetermined = triangle.damped(least).inverseGramDiagonal() * (least * least);
  const double* const shares = undetermined.data();
  const auto determined =
      std::count_if(shares, shares + undetermined.length(), [](double s) { return s < 0.5; });
  return {x.slice(0, triangle.unknowns()), static_cast<int>(determined)};
}

}  // namespace surfacefit
