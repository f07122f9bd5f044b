#include <cmath>
#include <gtest/gtest.h>

#include <kilnbase/geometry/TpostXformMatrix.h>
#include <kilnbase/geometry/TxformMatrix.h>

#include "tests/geometry/Values.h"

using kilntest::distance;
using kilntest::kRounding;
using kilntest::RandomValues;

namespace {

T4dDblMatrix move(const T4dDblVector& v) {
  return v;
}

constexpr double kChainRounding = 50 * kRounding;  // products of a dozen matrices

}  // namespace

TEST(Xform, ExtractsTheComponentsOfAMatrix) {
  RandomValues random(1);
  for (int i = 0; i < 100; ++i) {
    const T4dDblMatrix m = T4dDblMatrix(random.scale()) * random.rotation() * move(random.vector());
    const TxformMatrix xform(m);
    EXPECT_LT(distance(m, xform.composed()), kRounding);
    EXPECT_LT(0.0, xform.scale().x);
    EXPECT_LT(0.0, xform.scale().y);
  }
  T4dDblMatrix flat;
  flat(1, 1) = 1e-5;
  EXPECT_EQ(1e-5, TxformMatrix(flat).scale().y);  // not clamped
  EXPECT_EQ(0.0001, TxformMatrix(flat).composed()(1, 1));
  flat(1, 1) = 0.0;
  EXPECT_TRUE(std::isnan(TxformMatrix(flat).rotation().w));
  // The triple product of rows in one plane is a rounding error: here a negative one.
  const double coplanar[4][4] = {{1, 2, 3, 0}, {-3, -3, -2, 0}, {-2, -1, 1, 0}, {0, 0, 0, 1}};
  EXPECT_LT(TxformMatrix(flat.setFromDouble(coplanar)).scale().z, 0.0);
}

TEST(Xform, ActsAboutItsPivotsAndSettingThemMovesNothing) {
  RandomValues random(4);
  for (int i = 0; i < 100; ++i) {
    const T4dDblVector v = random.vector(), more = random.vector();
    const T4dDblMatrix matrix = T4dDblMatrix(random.scale()) * random.rotation();
    TxformMatrix xform(matrix);
    xform.setScalePivotPoint(random.point()).setRotatePivotPoint(random.point());
    xform += random.scale();
    xform += random.rotation();
    xform += v;
    const T4dDblMatrix before = xform.composed();
    const T4dDblPoint scalePivot = random.point(), rotatePivot = random.point();
    xform.setScalePivotPoint(scalePivot).setRotatePivotPoint(rotatePivot);
    EXPECT_LT(distance(before, xform.composed()), kChainRounding);
    EXPECT_LT(distance(T4dDblMatrix::identity, before * xform.inverse()), kChainRounding);
    EXPECT_LT(distance(scalePivot, xform.scalePivotPoint()), kRounding);
    EXPECT_LT(distance(rotatePivot, xform.rotatePivotPoint()), kChainRounding);
    xform = v;
    xform += more;
    const T4dDblPoint origin = T4dDblPoint::origin * xform.composed();
    EXPECT_LT(distance((v + more) * xform.scale() * xform.rotation(), origin), kChainRounding);
    EXPECT_EQ(matrix, xform);

    // Assigning a scale or a rotation drops what kept the transform in place.
    xform = T4dDblMatrix();
    xform = random.scale();
    xform.setScalePivotPoint(scalePivot);
    const Tscale scale = random.scale();
    xform = scale;
    const T4dDblMatrix scaled =
        move(-T4dDblVector(scalePivot)) * T4dDblMatrix(scale) * move(scalePivot);
    EXPECT_LT(distance(scaled, xform.composed()), kChainRounding);
    const T4dDblVector image = rotatePivot * scaled;
    const TunitQuaternion rotation = random.rotation(), turn = random.rotation();
    xform = turn;
    xform.setRotatePivotPoint(rotatePivot);
    xform = rotation;
    xform += turn;
    const T4dDblMatrix turned = scaled * move(-image) * T4dDblMatrix(rotation * turn) * move(image);
    EXPECT_LT(distance(turned, xform.composed()), kChainRounding);
  }
  TxformMatrix xform;
  xform = Tscale(1e6, 0.001, 3);
  EXPECT_LT(distance(T4dDblMatrix::identity, xform.composed() * xform.inverse()), kRounding);
  xform += Tscale(2, 0.001, -1);
  EXPECT_EQ(1e-6, xform.scale().y);  // not clamped
}

TEST(Xform, ComponentsMakeItDirty) {
  const auto check = [](const auto& component) {
    EXPECT_EQ(1, (TxformMatrix() = component).dirty());
    EXPECT_EQ(1, (TxformMatrix() += component).dirty());
    EXPECT_EQ(1, (TpostXformMatrix() = component).dirty());
    EXPECT_EQ(1, (TpostXformMatrix() += component).dirty());
  };
  check(T4dDblVector());
  check(Tscale());
  check(TunitQuaternion());
  const T4dDblPoint p;
  EXPECT_EQ(1, TxformMatrix().setScalePivotPoint(p).dirty());
  EXPECT_EQ(1, TxformMatrix().setRotatePivotPoint(p).dirty());
  EXPECT_EQ(0, (TxformMatrix().setScalePivotPoint(p) = T4dDblMatrix()).dirty());
  EXPECT_EQ(0, TpostXformMatrix().setScalePivotPoint(p).setRotatePivotPoint(p).dirty());
}

// The stored translation is (-2, 12, 0). It is turned back and divided by the scale of 4.
TEST(Xform, TranslationsComeBackThroughRotationAndScale) {
  TxformMatrix xform(T4dDblMatrix(Tscale(2, 2, 2)));
  xform.setScalePivotPoint(T4dDblPoint(1, 0, 0, 1));
  xform += Tscale(2, 2, 2);
  xform.setRotatePivotPoint(T4dDblPoint(0, 1, 0, 1));
  xform += TunitQuaternion().setToPivotAxis(kilntest::kPi / 2, T4dDblVector(0, 0, 1));
  xform = T4dDblVector(4, 0, 0);
  EXPECT_LT(distance(T4dDblVector(3, 0.5, 0), xform.translation()), kChainRounding);
}

TEST(PostXform, AccumulatesAboutThePivotsAndComposesForTheInverse) {
  RandomValues random(7);
  TpostXformMatrix xform;
  xform = random.rotation();
  xform = random.vector();
  const T4dDblPoint pivot(random.number(), random.number(), random.number(), 2.0);
  xform.setScalePivotPoint(pivot).setRotatePivotPoint(pivot);
  const T4dDblVector centre = pivot.cartesian(), arm = xform.translation() - centre;
  const TunitQuaternion turn = random.rotation();
  const T4dDblMatrix turned = turn * xform.rotation();
  xform += turn;
  EXPECT_EQ(turned, xform.rotation());
  EXPECT_LT(distance(centre + arm * turn, xform.translation()), kRounding);
  const T4dDblVector scaledArm = arm * turn * turned.transpose() * Tscale(2, 3, -4) * turned;
  xform += Tscale(2, 3, -4);
  EXPECT_LT(distance(centre + scaledArm, xform.translation()), kRounding);
  xform += centre;
  const T4dDblMatrix composed = T4dDblMatrix(xform.scale()) * turned * move(xform.translation());
  EXPECT_LT(distance(T4dDblMatrix::identity, composed * xform.inverse()), kChainRounding);
  EXPECT_EQ(0, xform.dirty());
  xform = Tscale(0.001, 1, 1);
  xform += Tscale(0.001, 1, 1);
  EXPECT_EQ(0.0001, xform.scale().x);  // clamped
}
