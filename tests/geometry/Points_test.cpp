#include <cmath>
#include <gtest/gtest.h>

#include <kilnbase/geometry/T3dDblPoint.h>
#include <kilnbase/geometry/T4dDblPoint.h>
#include <kilnbase/geometry/T4dDblVector.h>
#include <kilnbase/geometry/TgenXformMatrix.h>
#include <kilnbase/geometry/TunitQuaternion.h>

#include "tests/geometry/Values.h"

using kilntest::distance;
using kilntest::kRounding;
using kilntest::RandomValues;

TEST(Points, IndicesBeyondTheLastComponentMeanTheLast) {
  T4dDblPoint p(1, 2, 3, 4);
  T4dDblVector v(1, 2, 3);
  p(-1) = 5;
  v[7] = 6;
  EXPECT_EQ(T4dDblPoint(1, 2, 3, 5), p);
  EXPECT_EQ(T4dDblVector(1, 2, 6), v);
  const T3dDblPoint from(1, 2, 3), to(4, 6, 9);
  EXPECT_EQ(to, from + (to - from));
  EXPECT_EQ(from, to - T4dDblVector(3, 4, 6));
  EXPECT_NE(to, T4dDblVector(1, 2, 3));
}

TEST(Points, EquivalenceIsInclusiveForPointsAndStrictForVectors) {
  EXPECT_TRUE(T3dDblPoint(3, 0, 4).equivalent(T3dDblPoint(), -5.0));
  EXPECT_FALSE(T3dDblPoint(3, 0, 4).equivalent(T3dDblPoint(), 4.999));
  const T4dDblPoint twos(2, 2, 2, 2), ones(1, 1, 1, 1);
  EXPECT_TRUE(twos.equivalent(ones, 2.0));
  EXPECT_FALSE(twos.equivalent(ones, 1.999));
  EXPECT_FALSE(ones.equivalent(ones, -1.0));
  const T4dDblVector v(3, 0, 4);
  EXPECT_FALSE(v.equivalent(T4dDblVector(), 5.0));
  EXPECT_TRUE(v.equivalent(T4dDblVector(), 5.001));
  EXPECT_FALSE(v.unitLength(4.0));
}

TEST(Points, WeightsDivideOrMultiply) {
  const T4dDblPoint p(2, 4, 6, 2);
  EXPECT_EQ(T4dDblPoint(1, 2, 3, 2), p.rational());
  EXPECT_EQ(T4dDblPoint(4, 8, 12, 2), p.homogenous());
  EXPECT_EQ(T4dDblPoint(0, 1, 2, 1), p - T4dDblVector(1, 1, 1));
  EXPECT_EQ(3.0, p.distanceTo(T4dDblPoint(4, 8, 0, 4)));
  EXPECT_TRUE(std::isnan(T4dDblPoint(1, 0, 0, 0).rational().y));
}

TEST(Points, AreRowsOnTheLeftAndColumnsOnTheRight) {
  const double values[4][4] = {{0, 0, 0, 4}, {0, 0, 0, 8}, {0, 0, 0, 12}, {13, 14, 15, 16}};
  const double a[] = {1, 5, 9}, b[] = {2, 6, 10}, c[] = {3, 7, 11};
  TgenXformMatrix m;
  m.setFromDouble(values);
  m.setOrientation(a, b, c);
  T4dDblVector v(1, 2, 3);
  EXPECT_EQ(T4dDblVector(38, 44, 50), T4dDblVector(v).postmultBy(m));
  EXPECT_EQ(T4dDblVector(14, 38, 62), T4dDblVector(v).premultBy(m));
  EXPECT_EQ(T3dDblPoint(51, 58, 65), T3dDblPoint(v).postmultBy(m));
  T4dDblPoint p(1, 2, 3, 2);
  EXPECT_EQ(T4dDblPoint(64, 72, 80, 88), T4dDblPoint(p).postmultBy(m));
  EXPECT_EQ(T4dDblPoint(22, 54, 86, 118), T4dDblPoint(p).premultBy(m));
  m.transformPoint(p.array());
  EXPECT_EQ(T4dDblPoint(64, 72, 80, 2), p);
  m.transformVector(v.array());
  EXPECT_EQ(T4dDblVector(51, 58, 65), v);
}

TEST(Vectors, ShortOnesAreNotNormalisedAndTheLaterOfEqualAxesDominates) {
  EXPECT_EQ(T4dDblVector(1e-9, 0, 0), T4dDblVector(1e-9, 0, 0).getNormal());
  EXPECT_LT(distance(T4dDblVector(1, 0, 0), T4dDblVector(1.001e-9, 0, 0).getNormal()), kRounding);
  EXPECT_TRUE(T4dDblVector(1, 0, 0).parallel(T4dDblVector(-2, 0, 0), 1e-6));
  EXPECT_TRUE(T4dDblVector(1, 0, 0).parallel(T4dDblVector(3, 1e-7, 0), 1e-6));
  EXPECT_FALSE(T4dDblVector(1, 0, 0).parallel(T4dDblVector(3, 1e-5, 0), 1e-6));
  EXPECT_EQ(Taxis::Y, T4dDblVector(1, -1, 0).dominantAxis());
  EXPECT_EQ(Taxis::Z, T4dDblVector(-1, 0, 1).dominantAxis());
  EXPECT_EQ(Taxis::Z, T4dDblVector(0, 1, 1).dominantAxis());
}

TEST(Vectors, RotateToTurnsOneDirectionIntoTheOther) {
  RandomValues random(3);
  for (int i = 0; i < 100; ++i) {
    const T4dDblVector from = random.vector();
    for (const T4dDblVector& to : {random.vector(), 2.0 * from}) {
      // The cosine of an angle near 0 holds half of the digits of the angle.
      EXPECT_LT(distance(to.getNormal(), from.getNormal() * from.rotateTo(to)), 1e-7);
    }
  }
  const T4dDblVector x(1, 0, 0);
  for (const T4dDblVector& from : {x, T4dDblVector(0, -2, 0), T4dDblVector(4, 0, 3)}) {
    EXPECT_LT(distance(-from, from * from.rotateTo(-2.0 * from)), 10 * kRounding);
  }
  EXPECT_EQ(1.0, x.rotateTo(-x).y);
  // Here the axis is too short, or nearly.
  const TunitQuaternion none;
  EXPECT_EQ(none, T4dDblVector().rotateTo(x));
  EXPECT_EQ(none, x.rotateTo(T4dDblVector(1, 3e-5, 0)));
  EXPECT_NE(none, x.rotateTo(T4dDblVector(1, 4e-5, 0)));
  EXPECT_EQ(none, (3e-5 * x).rotateTo(-x));
  EXPECT_EQ(none, (1e3 * x).rotateTo(-9e-13 * x));
  // Directions are opposite only when the cosine is exactly -1.
  EXPECT_NE(none, x.rotateTo(T4dDblVector(-1, 1e-9, 0)));
  EXPECT_EQ(none, x.rotateTo(T4dDblVector(-1, 2e-8, 0)));
}
