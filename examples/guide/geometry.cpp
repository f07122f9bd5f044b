// The program of docs/guide/geometry.md.
#include <limits>
#include <numbers>

#include <kilnbase/geometry/T3dDblPoint.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/T4dDblPoint.h>
#include <kilnbase/geometry/T4dDblVector.h>
#include <kilnbase/geometry/Tangle.h>
#include <kilnbase/geometry/TboundingBox.h>
#include <kilnbase/geometry/TgenXformMatrix.h>
#include <kilnbase/geometry/Tplane.h>
#include <kilnbase/geometry/TpostXformMatrix.h>
#include <kilnbase/geometry/Tscale.h>
#include <kilnbase/geometry/TunitQuaternion.h>
#include <kilnbase/geometry/TxformMatrix.h>

#include "examples/guide/expect.h"

namespace {

using guide::expect;
using guide::isNear;

void shortest() {
  //! [shortest]
  T4dDblMatrix m;
  m.setToAxisRotate(T4dDblVector(0, 0, 1), std::numbers::pi / 2);  // x turns towards y
  m.postmultBy(T4dDblVector(5, 0, 0));                             // then moves along x
  const T3dDblPoint p = T3dDblPoint(1, 0, 0) * m;
  expect(p.equivalent(T3dDblPoint(5, 1, 0), 1e-12));
  //! [shortest]
}

void layout() {
  //! [layout]
  const T4dDblMatrix move = T4dDblVector(7, 8, 9);  // a vector as a matrix: its translation
  expect(move(3, 0) == 7.0);                        // row 3, column 0
  expect(&move(3, 0) == &move(0, 0) + 12);          // row by row in memory
  expect(T3dDblPoint(1, 1, 1) * move == T3dDblPoint(8, 9, 10));
  expect(T4dDblVector(1, 1, 1) * move == T4dDblVector(1, 1, 1));  // directions do not move
  //! [layout]
}

void order() {
  //! [order]
  T4dDblMatrix turn;
  turn.setToAxisRotate(T4dDblVector(0, 0, 1), std::numbers::pi / 2);
  const T4dDblMatrix move = T4dDblVector(3, 0, 0);
  const T3dDblPoint p(1, 0, 0);
  expect((p * (turn * move)).equivalent(T3dDblPoint(3, 1, 0), 1e-12));  // turns, then moves
  expect((p * (move * turn)).equivalent(T3dDblPoint(0, 4, 0), 1e-12));  // moves, then turns
  //! [order]
}

void prePost() {
  //! [prepost]
  const T4dDblMatrix turn = TgenXformMatrix().rotatez(90L);
  const T4dDblMatrix move = T4dDblVector(3, 0, 0);
  T4dDblMatrix after = turn;
  after.postmultBy(move);  // after := turn * move: the new step acts last
  T4dDblMatrix before = turn;
  before.premultBy(move);  // before := move * turn: the new step acts first
  TgenXformMatrix built;   // each call is premultBy: the last call acts first
  built.rotatez(90L).translate(3, 0, 0);
  expect(after == turn * move);
  expect(before == move * turn);
  expect(built == before);
  //! [prepost]
}

void increments() {
  //! [increments]
  TunitQuaternion aboutX, aboutZ;
  aboutX.setToPivotAxis(Tangle(90.0).radians(), T4dDblVector(1, 0, 0));
  aboutZ.setToPivotAxis(Tangle(90.0).radians(), T4dDblVector(0, 0, 1));
  const T4dDblMatrix matrixX = aboutX, matrixZ = aboutZ, move = T4dDblVector(3, 0, 0);
  TxformMatrix pre;
  pre = aboutX;
  pre += aboutZ;
  expect(pre.composed().equivalent(matrixZ * matrixX, 1e-12));
  TpostXformMatrix post;
  post = aboutX;
  post += T4dDblVector(3, 0, 0);
  post += aboutZ;
  expect(post.inverse().equivalent((matrixX * move * matrixZ).inverse(), 1e-12));
  //! [increments]
}

void turns() {
  //! [turns]
  T4dDblVector x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
  expect((x ^ y) == z);  // the cross product; mind the parentheses
  expect(x.rotateItZ(Tangle(90L)) == T4dDblVector(0, 1, 0));
  expect(y.rotateItX(Tangle(90L)) == T4dDblVector(0, 0, 1));
  expect(z.rotateItY(Tangle(90L)) == T4dDblVector(1, 0, 0));
  //! [turns]
}

void angles() {
  //! [angles]
  const Tangle right(90.0);  // degrees
  Tangle half;
  half.radians(std::numbers::pi);
  expect(isNear(right.radians(), std::numbers::pi / 2));
  expect(isNear(half.degrees(), 180.0));

  TgenXformMatrix byTangle;
  byTangle.rotatez(90.0);  // a number becomes a Tangle: degrees
  T4dDblMatrix byRadians;
  byRadians.setToAxisRotate(T4dDblVector(0, 0, 1), right.radians());
  TunitQuaternion byQuaternion;
  byQuaternion.setToPivotAxis(right.radians(), T4dDblVector(0, 0, 1));
  expect(byTangle.equivalent(byRadians, 1e-12));
  expect(byTangle.equivalent(byQuaternion, 1e-12));
  //! [angles]
  //! [tables]
  expect(Tangle(90L).cos() == 0.0);   // whole degrees: exact, from a table
  expect(Tangle(90.0).cos() != 0.0);  // degrees as a double: 6e-17
  expect(Tangle(60L).sin() == 0.5);   // kept as it is: sin 60 is 0.866...
  expect(isNear(Tangle(60.0).sin(), std::numbers::sqrt3 / 2));
  //! [tables]
}

void quaternions() {
  //! [quaternions]
  TunitQuaternion aboutZ, aboutX;
  aboutZ.setToPivotAxis(Tangle(90.0).radians(), T4dDblVector(0, 0, 1));
  aboutX.setToPivotAxis(Tangle(90.0).radians(), T4dDblVector(1, 0, 0));
  expect(isNear(aboutZ.w, std::numbers::sqrt2 / 2));  // cos 45: w is the scalar part
  expect(isNear(aboutZ.z, std::numbers::sqrt2 / 2));  // sin 45 times the axis

  const T4dDblVector v(1, 0, 0);
  expect((v * aboutZ).equivalent(T4dDblVector(0, 1, 0), 1e-12));

  const T4dDblVector zThenX = v * aboutZ * aboutX;  // x to y, y to z
  expect(zThenX.equivalent(T4dDblVector(0, 0, 1), 1e-12));
  expect((v * (aboutX * aboutZ)).equivalent(zThenX, 1e-12));  // the right factor acts first
  const T4dDblMatrix product = aboutX * aboutZ;
  const T4dDblMatrix matrixZ = aboutZ, matrixX = aboutX;
  expect(product.equivalent(matrixZ * matrixX, 1e-12));  // matrices: the left factor
  //! [quaternions]
}

void planes() {
  //! [planes]
  const Tplane plane(T4dDblPoint(0, 0, 2, 1), T4dDblVector(0, 0, 5), 0.0);  // z = 2, upwards
  expect(plane.c == 1.0);   // the normal is made a unit vector
  expect(plane.d == -2.0);  // 0 x + 0 y + 1 z - 2 = 0

  const auto side = [&plane](const T3dDblPoint& p) {
    return plane.normal().dotProduct(p) + plane.d;
  };
  expect(side(T3dDblPoint(1, 1, 5)) == 3.0);   // 3 above: on the side of the normal
  expect(side(T3dDblPoint(1, 1, 0)) == -2.0);  // 2 below

  T4dDblPoint hit;
  const T4dDblPoint origin;
  expect(plane.intersection(origin, T4dDblVector(1, 0, 1), hit) == 2);  // ahead
  expect(hit == T4dDblPoint(2, 0, 2, 1));
  expect(plane.intersection(origin, T4dDblVector(0, 0, -1), hit) == 3);  // behind
  expect(hit == T4dDblPoint(0, 0, 2, 1));
  expect(plane.intersection(origin, T4dDblVector(1, 0, 0), hit) == 1);  // parallel: hit stays
  //! [planes]
}

void weights() {
  //! [weights]
  const T4dDblPoint p(2, 4, 6, 2);  // homogeneous: (x*w, y*w, z*w, w)
  expect(p.cartesian() == T4dDblPoint(1, 2, 3, 1));
  expect(p.rational() == T4dDblPoint(1, 2, 3, 2));               // (x/w, y/w, z/w, w)
  expect(p - T4dDblPoint::origin == T4dDblVector(1, 2, 3));      // differences are Cartesian
  expect(T3dDblPoint(T4dDblVector(p)) == T3dDblPoint(2, 4, 6));  // the weight is dropped
  //! [weights]
}

void boxes() {
  //! [boxes]
  TtupleVector curve(3, 2, 0.0);      // two points in space, one at the origin
  curve[1] = DoubleVec(3, 1.0, 1.0);  // the other at (1, 2, 3)
  TboundingBox box(curve, 0);
  expect(box.size2() == 14.0);  // the square of the diagonal
  expect(box.isInside(DoubleVec(3, 1.0)) == 1);

  const double largest = std::numeric_limits<double>::max();
  const TboundingBox empty(TtupleVector(3, 0, 0.0), 0);
  expect(empty.minCorner()(0) == largest);  // minimum above maximum: no point is inside
  expect(empty.maxCorner()(0) == -largest);
  expect(empty.isInside(DoubleVec(3, 0.0)) == 0);
  expect(TboundingBox(3).isInside(DoubleVec(3, 0.0)) == 1);  // not empty: a box at the origin
  //! [boxes]
}

void components() {
  //! [components]
  TunitQuaternion quarter;
  quarter.setToPivotAxis(Tangle(90.0).radians(), T4dDblVector(0, 0, 1));
  TxformMatrix xform;
  xform.setRotatePivotPoint(T4dDblPoint(2, 0, 0, 1));  // moves nothing
  xform += quarter;                                    // turns about the pivot
  const T3dDblPoint p = T3dDblPoint(3, 0, 0) * xform.composed();
  expect(p.equivalent(T3dDblPoint(2, 1, 0), 1e-12));

  expect(xform.dirty() == 1);  // the matrix part is still the old one
  expect(T3dDblPoint(3, 0, 0) * xform == T3dDblPoint(3, 0, 0));
  xform = xform.composed();  // sets matrix and components, pivots to 0
  expect(xform.dirty() == 0);
  //! [components]
}

void scales() {
  //! [scales]
  const Tscale flat(1.0, 0.0, -0.00001);
  expect(flat.y == 0.0001);  // a scale is never 0, so that it can be undone
  expect(flat.z == 0.0001);  // small negative scales lose their sign
  //! [scales]
}

void mirrored() {
  //! [mirrored]
  const T4dDblMatrix mirror = Tscale(1, 1, -1);
  expect(mirror.det3x3() < 0.0);  // left-handed afterwards: faces turn inside out
  const TxformMatrix parts(mirror);
  expect(parts.scale().z == -1.0);  // extraction puts the sign into z
  //! [mirrored]
}

}  // namespace

int main() {
  shortest();
  layout();
  order();
  prePost();
  increments();
  turns();
  angles();
  quaternions();
  planes();
  weights();
  boxes();
  components();
  scales();
  mirrored();
}
