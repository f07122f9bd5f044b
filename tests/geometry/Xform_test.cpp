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

T4dDblVector translationOf(const T4dDblMatrix& m) {
  T4dDblVector v;
  v = m;
  return v;
}

// With both pivots set, each after the other components, so that both compensate.
TxformMatrix randomXform(RandomValues& random) {
  TxformMatrix xform;
  xform = random.scale();
  xform = random.rotation();
  xform = random.vector();
  xform.setScalePivotPoint(random.point());
  xform.setRotatePivotPoint(random.point());
  xform += random.scale();
  xform += random.rotation();
  return xform;
}

}  // namespace

TEST(Xform, ExtractsTheComponentsOfAMatrix) {
  RandomValues random(1);
  for (int i = 0; i < 100; ++i) {
    const T4dDblMatrix m = T4dDblMatrix(random.scale()) * random.rotation() * move(random.vector());
    const TxformMatrix xform(m);
    EXPECT_EQ(m, xform);
    EXPECT_LT(distance(m, xform.composed()), kRounding);
    EXPECT_LT(distance(T4dDblMatrix::identity, m * xform.inverse()), kRounding);
    EXPECT_GT(xform.scale().x, 0.0);
    EXPECT_GT(xform.scale().y, 0.0);
    EXPECT_EQ(m.det3x3() < 0.0, xform.scale().z < 0.0);
    EXPECT_LT(distance(m, TxformMatrix(xform).composed()), kRounding);
  }
  // Mirrorings land on z.
  TxformMatrix mirrored;
  mirrored = T4dDblMatrix(Tscale(-2, 3, 4));
  EXPECT_EQ(T4dDblMatrix(Tscale(2, 3, -4)), mirrored.scale());
  EXPECT_EQ(1.0, std::fabs(mirrored.rotation().y));
  mirrored = T4dDblMatrix(Tscale(2, 3, -4));
  EXPECT_EQ(T4dDblMatrix(Tscale(2, 3, -4)), mirrored.scale());
  EXPECT_EQ(TunitQuaternion(), mirrored.rotation());
  T4dDblMatrix flat;
  flat(1, 1) = 0.0;
  EXPECT_TRUE(std::isnan(TxformMatrix(flat).rotation().w));
  flat(1, 1) = 1e-5;
  EXPECT_EQ(1e-5, TxformMatrix(flat).scale().y);  // not clamped
}

TEST(Xform, ComponentsLeaveTheMatrixAlone) {
  RandomValues random(2);
  const T4dDblMatrix m = move(random.vector());
  TxformMatrix xform(m);
  EXPECT_EQ(0, xform.dirty());
  const auto becomesDirty = [&](auto change) {
    xform = m;
    const int before = xform.dirty();
    change();
    return before == 0 && xform.dirty() == 1 && xform == m;
  };
  EXPECT_TRUE(becomesDirty([&] { xform = random.vector(); }));
  EXPECT_TRUE(becomesDirty([&] { xform = random.scale(); }));
  EXPECT_TRUE(becomesDirty([&] { xform = random.rotation(); }));
  EXPECT_TRUE(becomesDirty([&] { xform += random.vector(); }));
  EXPECT_TRUE(becomesDirty([&] { xform += random.scale(); }));
  EXPECT_TRUE(becomesDirty([&] { xform += random.rotation(); }));
  EXPECT_TRUE(becomesDirty([&] { xform.setScalePivotPoint(random.point()); }));
  EXPECT_TRUE(becomesDirty([&] { xform.setRotatePivotPoint(random.point()); }));
  TxformMatrix copy;
  copy = xform;
  EXPECT_EQ(1, copy.dirty());
}

TEST(Xform, TheInverseIsThatOfTheComponents) {
  RandomValues random(3);
  for (int i = 0; i < 100; ++i) {
    const TxformMatrix xform = randomXform(random);
    EXPECT_LT(distance(T4dDblMatrix::identity, xform.composed() * xform.inverse()), 10 * kRounding);
  }
  TxformMatrix large;
  large = Tscale(1e6, 1, 1);
  EXPECT_LT(distance(T4dDblMatrix::identity, large.composed() * large.inverse()), kRounding);
}

TEST(Xform, SettingAPivotMovesNothing) {
  RandomValues random(4);
  for (int i = 0; i < 100; ++i) {
    TxformMatrix xform = randomXform(random);
    const T4dDblMatrix before = xform.composed();
    const T4dDblPoint scalePivot = random.point(), rotatePivot = random.point();
    xform.setScalePivotPoint(scalePivot);
    EXPECT_LT(distance(before, xform.composed()), 20 * kRounding);
    EXPECT_LT(distance(scalePivot, xform.scalePivotPoint()), kRounding);
    xform.setRotatePivotPoint(rotatePivot);
    EXPECT_LT(distance(before, xform.composed()), 20 * kRounding);
    EXPECT_LT(distance(rotatePivot, xform.rotatePivotPoint()), 20 * kRounding);
    EXPECT_EQ(1.0, xform.rotatePivotPoint().w);
  }
}

// Where a component is stored, the point on its pivot stays, up to the later components.
TEST(Xform, AddedScalesAndRotationsKeepTheirPivot) {
  RandomValues random(5);
  for (int i = 0; i < 100; ++i) {
    TxformMatrix xform = randomXform(random);
    const T4dDblPoint pivot = random.point();
    xform.setRotatePivotPoint(pivot);
    const T4dDblPoint image = pivot * xform.composed();
    const TunitQuaternion turn = random.rotation(), old = xform.rotation();
    const Tscale oldScale = xform.scale();
    xform += turn;
    EXPECT_EQ(old * turn, xform.rotation());
    const T4dDblVector afterOld = T4dDblVector(1, 2, 3) * oldScale * turn * old;
    EXPECT_LT(distance(afterOld, T4dDblVector(1, 2, 3) * xform.composed()), 20 * kRounding);
    xform.setScalePivotPoint(pivot);
    xform = oldScale;  // drops the compensation of the scale pivot
    xform = turn;      // and that of the rotate pivot
    EXPECT_EQ(turn, xform.rotation());
    TxformMatrix fresh;
    fresh.setScalePivotPoint(xform.scalePivotPoint());
    fresh.setRotatePivotPoint(xform.rotatePivotPoint());
    fresh = oldScale;
    fresh = turn;
    EXPECT_LT(distance(fresh.composed() *
                           move(translationOf(xform.composed()) - translationOf(fresh.composed())),
                       xform.composed()),
              50 * kRounding);
    (void)image;
  }
  TxformMatrix xform;
  xform = Tscale(0.001, 2, 3);
  xform += Tscale(0.001, 2, -1);
  EXPECT_EQ(1e-6, xform.scale().x);  // not clamped
  EXPECT_EQ(-3.0, xform.scale().z);
}

TEST(Xform, TranslationsAreScaledAndTurned) {
  RandomValues random(6);
  for (int i = 0; i < 100; ++i) {
    TxformMatrix xform = randomXform(random);
    const T4dDblVector v = random.vector(), more = random.vector();
    xform = v;
    const T4dDblVector expected = v * xform.scale() * xform.rotation();
    EXPECT_LT(distance(expected, translationOf(xform.composed())), 20 * kRounding);
    xform += more;
    EXPECT_LT(distance(expected + more * xform.scale() * xform.rotation(),
                       translationOf(xform.composed())),
              20 * kRounding);

    TxformMatrix withoutPivots(T4dDblMatrix(random.scale()) * random.rotation());
    withoutPivots = v;
    withoutPivots += more;
    EXPECT_LT(distance(v + more, withoutPivots.translation()), kRounding);
  }
}

TEST(PostXform, ComposesItsMatrixForTheInverse) {
  RandomValues random(7);
  TpostXformMatrix xform;
  EXPECT_EQ(T4dDblMatrix::identity, xform.inverse());
  const Tscale scale = random.scale();
  const TunitQuaternion rotation = random.rotation();
  const T4dDblVector v = random.vector();
  xform = scale;
  xform = rotation;
  xform = v;
  xform += v;
  EXPECT_EQ(1, xform.dirty());
  EXPECT_EQ(v + v, xform.translation());
  const T4dDblMatrix composed = T4dDblMatrix(scale) * T4dDblMatrix(rotation) * move(v + v);
  EXPECT_LT(distance(T4dDblMatrix::identity, composed * xform.inverse()), kRounding);
  EXPECT_EQ(0, xform.dirty());
  xform.setScalePivotPoint(random.point()).setRotatePivotPoint(random.point());
  EXPECT_EQ(0, xform.dirty());
  xform = TunitQuaternion();
  EXPECT_LT(distance(T4dDblMatrix(scale) * move(v + v), xform.inverse().inverse()), kRounding);
}

TEST(PostXform, AccumulatesAboutThePivots) {
  RandomValues random(8);
  for (int i = 0; i < 100; ++i) {
    TpostXformMatrix xform;
    xform = random.rotation();
    xform = random.vector();
    const T4dDblPoint pivot(random.number(), random.number(), random.number(), 2.0);
    xform.setScalePivotPoint(pivot).setRotatePivotPoint(pivot);
    const T4dDblVector centre = pivot.cartesian();
    const T4dDblVector arm = xform.translation() - centre;
    const TunitQuaternion old = xform.rotation(), turn = random.rotation();
    xform += turn;
    EXPECT_EQ(turn * old, xform.rotation());
    EXPECT_LT(distance(centre + arm * turn, xform.translation()), kRounding);
    xform += Tscale(2, 3, -4);
    EXPECT_EQ(-4.0, xform.scale().z);
    const T4dDblMatrix turned = xform.rotation();
    EXPECT_LT(distance(centre + arm * turn * turned.transpose() * Tscale(2, 3, -4) * turned,
                       xform.translation()),
              kRounding);
  }
  TpostXformMatrix tiny;
  tiny = Tscale(0.001, 1, 1);
  tiny += Tscale(0.001, 1, 1);
  EXPECT_EQ(0.0001, tiny.scale().x);  // clamped
}
