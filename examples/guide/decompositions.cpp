// The program of docs/guide/decompositions.md.
#include <algorithm>
#include <cmath>
#include <limits>

#include <kilnbase/linalg/DoubleChDecomp.h>
#include <kilnbase/linalg/DoubleGenFact.h>
#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/DoubleLeastSqQR.h>
#include <kilnbase/linalg/DoubleSVDecomp.h>
#include <kilnbase/linalg/DoubleSymEig.h>
#include <kilnbase/linalg/DoubleSymFact.h>
#include <kilnbase/linalg/DoubleSymMat.h>
#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/Products.h>
#include <kilnbase/linalg/vecmath.h>

#include "examples/guide/expect.h"

namespace {

using guide::expect;
using guide::isNear;
using vxKilnBase::dot;
using vxKilnBase::product;
using vxKilnBase::toSymMat;
using vxKilnBase::transposeProduct;

// Whether all elements agree.
bool areNear(const DoubleVec& a, const DoubleVec& b) {
  return a.length() == b.length() && (a - b).isZero(1e-12 * (1.0 + b.vecLen()));
}

void linearSystem() {
  //! [system]
  const DoubleGenMat a{{2, 1, 1}, {1, 3, 2}, {1, 0, 0}};
  const DoubleGenFact lu(a, 1);  // 1: estimate the condition, too
  expect(lu.good());
  expect(lu.condition() > 1e-12);  // the reciprocal: near 1 is well, near 1e-16 is hopeless
  const DoubleVec x = lu.solve(DoubleVec{4, 5, 6});
  expect(areNear(product(a, x), {4, 5, 6}));
  //! [system]
}

void manyRightSides() {
  //! [many]
  const DoubleGenMat a{{4, 1}, {1, 3}};
  const DoubleGenMat b{{1, 0, 2}, {0, 1, 5}};  // three right-hand sides, a column each
  const DoubleGenMat x = DoubleGenFact(a).solve(b);
  expect(areNear(product(a, x), b));
  //! [many]
}

void definite() {
  //! [definite]
  const DoubleGenMat stiffness{{4, 1, 0}, {1, 3, 1}, {0, 1, 2}};  // only the upper triangle is read
  const DoubleChDecomp factor(stiffness);
  expect(factor.isPD());
  expect(areNear(product(stiffness, factor.solve(DoubleVec{1, 2, 3})), {1, 2, 3}));
  const DoubleChDecomp saddle(DoubleGenMat{{1, 2}, {2, 1}});  // eigenvalues 3 and -1
  expect(!saddle.isPD());
  expect(saddle.fail());  // a negative pivot: indefinite, and not merely of lower rank
  //! [definite]
}

void indefinite() {
  //! [indefinite]
  // Least x0^2 + x1^2 under x0 + x1 = 2: the unknowns, and a multiplier.
  const DoubleSymMat a = toSymMat({{2, 0, 1}, {0, 2, 1}, {1, 1, 0}});
  const DoubleSymFact factor(a);
  expect(factor.good());
  const DoubleVec x = factor.solve(DoubleVec{0, 0, 2});
  expect(areNear(x.slice(0, 2), {1, 1}));
  //! [indefinite]
}

//! [fit]
// The line z = c(0) + c(1) x that fits best.
DoubleVec fitLine(const DoubleVec& x, const DoubleVec& z) {
  DoubleGenMat a(x.length(), 2, 1.0);  // an equation a row, an unknown a column
  a.col(1) = x;
  DoubleLeastSqQR fit(a);
  fit.setTolerance(1e-12 * std::abs(fit(0, 0)));
  return fit.isUnderDetermined() ? DoubleVec() : fit.solve(z);
}
//! [fit]

void leastSquares() {
  //! [line]
  expect(areNear(fitLine({0, 1, 2, 3}, {1, 3, 5, 7}), {1, 2}));
  expect(fitLine({2, 2, 2}, {1, 3, 5}).length() == 0);  // all over one place: no line
  //! [line]
}

void dependentColumns() {
  //! [dependent]
  DoubleGenMat a{{1, 0, 0}, {1, 1, 0}, {1, 2, 0}, {1, 3, 0}};
  a.col(2) = a.col(0) + 2.0 * a.col(1);  // says nothing new
  const DoubleVec b = product(a, DoubleVec{1, 1, 1});
  DoubleLeastSqQR fit(a);
  fit.setTolerance(1e-12 * std::abs(fit(0, 0)));
  expect(fit.numFreeCols() == 1);
  const DoubleVec x = fit.solve(b);
  expect(x.countValue(0.0, 0.0) >= 1);  // the free unknown is 0
  expect(areNear(product(a, x), b));    // and the others make up for it
  //! [dependent]
}

//! [shortest]
// Of all x that make |A x - b| least, the shortest one.
DoubleVec shortestSolution(const DoubleGenMat& a, const DoubleVec& b) {
  const DoubleSVDecomp svd(a);
  const DoubleVec values = svd.singularValues();
  DoubleVec x(a.cols(), 0.0);
  for (int i = 0; i < static_cast<int>(values.length()) && values(i) > 1e-12 * values(0); ++i)
    x += dot(svd.leftVecs().col(i), b) / values(i) * svd.rightVecs().col(i);
  return x;
}
//! [shortest]

void shortest() {
  //! [shorter]
  const DoubleGenMat a{{1, 1, 2}, {1, 2, 3}};  // two equations, three unknowns
  const DoubleVec b{4, 6};
  const DoubleVec basic = DoubleLeastSqQR(a).solve(b), x = shortestSolution(a, b);
  expect(areNear(product(a, basic), b));
  expect(areNear(product(a, x), b));
  expect(x.vecLen() < basic.vecLen());
  //! [shorter]
}

void rank() {
  //! [rank]
  const DoubleGenMat a{{1, 2, 3}, {2, 4, 6}, {1, 0, 1}};  // row 1 is twice row 0
  const DoubleSVDecomp svd(a);
  const DoubleVec values = svd.singularValues();
  const double tolerance = 3 * std::numeric_limits<double>::epsilon() * values(0);
  int rank = 0;
  for (const double value : values) rank += value > tolerance ? 1 : 0;
  expect(rank == 2);
  const DoubleVec null = svd.rightVecs().col(2);  // what A makes 0
  expect(product(a, null).isZero(1e-14));
  //! [rank]
}

//! [plane]
struct Plane {
  DoubleVec centre, normal;  // the normal has length 1
  double deviation;          // the root of the mean square of the distances
};

// The plane for which the squared distances of the points, a row each, are least.
Plane fitPlane(const DoubleGenMat& points) {
  const double n = points.rows();
  const DoubleVec ones(points.rows(), 1.0);
  const DoubleVec centre = product(ones, points) / n;
  DoubleGenMat offsets = points.copy();
  for (DoubleVec offset : offsets.eachRow()) offset -= centre;
  const DoubleSymEig axes(toSymMat(transposeProduct(offsets, offsets) / n));
  // Ascending: the least variance is that across the plane.
  return {centre, axes.eigenVecs().col(0), std::sqrt(std::max(0.0, axes.eigenValues()(0)))};
}
//! [plane]

void principalAxes() {
  //! [axes]
  const Plane plane = fitPlane({{0, 0, 2}, {1, 0, 4}, {0, 1, 1}, {1, 1, 3}});  // z = 2 + 2x - y
  const DoubleVec normal = DoubleVec{-2, 1, 1} / std::sqrt(6.0);
  expect(isNear(std::abs(dot(plane.normal, normal)), 1.0));  // one of the two directions
  expect(isNear(plane.centre(2), 2.5));
  expect(plane.deviation < 1e-7);  // the root of rounding errors of size 1e-16
  //! [axes]
}

//! [scaled]
// Fits with unknowns of very different units, by making all columns equally long.
DoubleVec fitScaled(const DoubleGenMat& a, const DoubleVec& b) {
  DoubleGenMat scaled = a.copy();
  DoubleVec lengths(a.cols(), 1.0);
  for (int j = 0; j < static_cast<int>(a.cols()); ++j) {
    if (const double length = a.col(j).vecLen(); length > 0.0) lengths(j) = length;
    scaled.col(j) /= lengths(j);
  }
  DoubleLeastSqQR fit(scaled);
  fit.setTolerance(1e-12 * std::abs(fit(0, 0)));
  return fit.solve(b) / lengths;  // unknowns in their own units again
}
//! [scaled]

void badScale() {
  //! [scale]
  const DoubleGenMat a{
      {1, 0}, {1, 1e-14}, {1, 2e-14}, {1, 3e-14}};  // the second column in tiny units
  const DoubleVec b{1, 3, 5, 7};
  DoubleLeastSqQR fit(a);
  fit.setTolerance(1e-12 * std::abs(fit(0, 0)));
  expect(fit.numFreeCols() == 1);  // small was taken for dependent
  const DoubleVec x = fitScaled(a, b);
  expect(isNear(x(0), 1.0));
  expect(isNear(x(1) * 1e-14, 2.0));
  //! [scale]
}

}  // namespace

int main() {
  linearSystem();
  manyRightSides();
  definite();
  indefinite();
  leastSquares();
  dependentColumns();
  shortest();
  rank();
  principalAxes();
  badScale();
}
