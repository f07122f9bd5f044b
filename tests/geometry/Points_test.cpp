#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include <kilnbase/geometry/T3dDblPoint.h>
#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/T4dDblPoint.h>
#include <kilnbase/geometry/T4dDblVector.h>
#include <kilnbase/geometry/Tangle.h>
#include <kilnbase/geometry/TunitQuaternion.h>

#include "tests/geometry/Values.h"

using kilntest::distance;
using kilntest::kPi;
using kilntest::kRounding;
using kilntest::RandomValues;

TEST(Points, IndicesBeyondTheLastComponentMeanTheLast) {
  T4dDblPoint p(1, 2, 3, 4);
  T4dDblVector v(1, 2, 3);
  const T4dDblVector& constant = v;
  for (short i = 0; i < 3; ++i) {
    EXPECT_EQ(i + 1, p(i));
    EXPECT_EQ(i + 1, v(i));
    EXPECT_EQ(i + 1, constant[static_cast<std::size_t>(i)]);
    EXPECT_EQ(i + 1, p.array()[i]);
    EXPECT_EQ(i + 1, constant.array()[i]);
  }
  p(-1) = 5;
  v[7] = 6;
  EXPECT_EQ(T4dDblPoint(1, 2, 3, 5), p);
  EXPECT_EQ(5, p(3));
  EXPECT_EQ(6, constant(-1));
  EXPECT_EQ(6, v.z);
}

// Each kind of value has its own idea of what is near: at most, at most, and less.
TEST(Points, EquivalenceIsInclusiveForPointsAndStrictForVectors) {
  const T3dDblPoint p(3, 0, 4);
  EXPECT_TRUE(p.equivalent(T3dDblPoint(), 5.0));
  EXPECT_TRUE(p.equivalent(T3dDblPoint(), -5.0));
  EXPECT_FALSE(p.equivalent(T3dDblPoint(), 4.999));

  const T4dDblPoint twos(2, 2, 2, 2), ones(1, 1, 1, 1);  // the same in Cartesian form
  EXPECT_NE(twos, ones);
  EXPECT_TRUE(twos.equivalent(ones, 2.0));
  EXPECT_FALSE(twos.equivalent(ones, 1.999));
  EXPECT_FALSE(ones.equivalent(ones, -1.0));

  const T4dDblVector v(3, 0, 4);
  EXPECT_FALSE(v.equivalent(T4dDblVector(), 5.0));
  EXPECT_TRUE(v.equivalent(T4dDblVector(), 5.001));
  EXPECT_FALSE(v.equivalent(v, 0.0));
  EXPECT_FALSE(v.unitLength(4.0));
  EXPECT_TRUE(v.unitLength(4.001));
}

TEST(Points, EachComponentDecidesEquality) {
  for (short i = 0; i < 4; ++i) {
    T4dDblPoint p;
    p(i) += 1.0;
    EXPECT_NE(T4dDblPoint::origin, p);
    EXPECT_EQ(i < 3, T4dDblVector(p) != T4dDblVector::identity);
    EXPECT_EQ(i < 3, T3dDblPoint(T4dDblVector(p)) != T3dDblPoint::origin);
  }
}

TEST(Points, WeightsDivideOrMultiply) {
  const T4dDblPoint p(2, 4, 6, 2);
  EXPECT_EQ(T4dDblPoint(1, 2, 3, 1), p.cartesian());
  EXPECT_EQ(T4dDblPoint(1, 2, 3, 2), p.rational());
  EXPECT_EQ(T4dDblPoint(4, 8, 12, 2), p.homogenous());
  EXPECT_EQ(T4dDblVector(2, 4, 6), T4dDblVector(p));
  const T4dDblVector v(1, 1, 1);
  EXPECT_EQ(T4dDblPoint(2, 3, 4, 1), p + v);
  EXPECT_EQ(T4dDblPoint(0, 1, 2, 1), p - v);
  EXPECT_EQ(T4dDblVector(0.5, 1.5, 2.5), p - T4dDblPoint(2, 2, 2, 4));
  EXPECT_EQ(3.0, p.distanceTo(T4dDblPoint(2, 4, 0, 1) + T4dDblVector(-1, -2, 0)));
  EXPECT_TRUE(std::isinf(T4dDblPoint(1, 0, 0, 0).cartesian().x));
  EXPECT_TRUE(std::isnan(T4dDblPoint(1, 0, 0, 0).rational().y));
}

TEST(Vectors, ShortOnesAreNotNormalised) {
  EXPECT_EQ(T4dDblVector(), T4dDblVector().getNormal());
  EXPECT_EQ(T4dDblVector(1e-9, 0, 0), T4dDblVector(1e-9, 0, 0).getNormal());
  EXPECT_LT(distance(T4dDblVector(1, 0, 0), T4dDblVector(1.001e-9, 0, 0).getNormal()), kRounding);
  EXPECT_LT(distance(T4dDblVector(0.6, 0, 0.8), T4dDblVector(3, 0, 4).normalizeIt()), kRounding);
  EXPECT_EQ(T4dDblVector(1.5, 0, 2), T4dDblVector(3, 0, 4).normalizeIt(2.0));
  EXPECT_EQ(T4dDblVector(3, 0, 4), T4dDblVector(3, 0, 4).normalizeIt(1e-9));
  EXPECT_EQ(1, T4dDblVector(1, 0, 0).parallel(T4dDblVector(-2, 0, 0), 1e-6));
  EXPECT_EQ(1, T4dDblVector(1, 0, 0).parallel(T4dDblVector(3, 1e-7, 0), 1e-6));
  EXPECT_EQ(0, T4dDblVector(1, 0, 0).parallel(T4dDblVector(3, 1e-5, 0), 1e-6));
}

TEST(Vectors, TheLaterOfEqualAxesDominates) {
  EXPECT_EQ(Taxis::Z, T4dDblVector(1, 1, 1).dominantAxis());
  EXPECT_EQ(Taxis::Y, T4dDblVector(1, -1, 0).dominantAxis());
  EXPECT_EQ(Taxis::Z, T4dDblVector(-1, 0, 1).dominantAxis());
  EXPECT_EQ(Taxis::X, T4dDblVector(-3, 1, 2).dominantAxis());
  EXPECT_EQ(Taxis::Z, T4dDblVector(2, 1, -3).dominantAxis());
}

TEST(Vectors, ProductsKeepTheirLaws) {
  RandomValues random(1);
  for (int i = 0; i < 100; ++i) {
    const T4dDblVector a = random.vector(), b = random.vector();
    T4dDblVector cross;
    cross.setToCrossProduct(a, b);
    EXPECT_EQ(cross, a ^ b);
    EXPECT_NEAR(0.0, cross.dotProduct(a), kRounding);
    EXPECT_NEAR(0.0, cross.dotProduct(b), kRounding);
    const double dot = a.dotProduct(b);
    EXPECT_NEAR(a.norm() * b.norm(), cross.norm() + dot * dot, kRounding);
    EXPECT_EQ(2.0 * a, a - a.inverse());
    T4dDblVector sum = a;
    sum += b;
    sum *= -1.0;
    EXPECT_EQ(-a - b, sum);
    EXPECT_EQ(a + b, sum.invertIt());
    EXPECT_NEAR(T3dDblPoint(a).distance2To(b), (a - b).norm(), kRounding);
    EXPECT_LT(distance(b, T3dDblPoint(a) + (T3dDblPoint(b) - T3dDblPoint(a))), kRounding);
    EXPECT_LT(distance(a, (T3dDblPoint(a) + b) - b), kRounding);
  }
  EXPECT_EQ(T4dDblVector(0, 0, 1), T4dDblVector(1, 0, 0) ^ T4dDblVector(0, 1, 0));
}

TEST(Vectors, RotationsAreRightHanded) {
  const T4dDblVector axes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  T4dDblVector& (T4dDblVector::*const rotate[])(const Tangle&) = {
      &T4dDblVector::rotateItX, &T4dDblVector::rotateItY, &T4dDblVector::rotateItZ};
  RandomValues random(2);
  for (std::size_t i = 0; i < 3; ++i) {
    T4dDblVector next = axes[(i + 1) % 3];
    EXPECT_EQ(axes[(i + 2) % 3], (next.*rotate[i])(90L));
    T4dDblVector v = random.vector();
    const double angle = random.number();
    const T4dDblVector expected = v * T4dDblMatrix().setToAxisRotate(axes[i], angle);
    Tangle turn;
    turn.radians(angle);
    EXPECT_LT(distance(expected, (v.*rotate[i])(turn)), kRounding);
  }
}

TEST(Vectors, RotateToTurnsOneDirectionIntoTheOther) {
  RandomValues random(3);
  for (int i = 0; i < 100; ++i) {
    const T4dDblVector from = random.vector();
    for (const T4dDblVector& to : {random.vector(), 2.0 * from}) {
      // An angle near 0 or pi comes out of its cosine with half the digits only.
      EXPECT_LT(distance(to.getNormal(), from.getNormal() * from.rotateTo(to)), 1e-7);
    }
  }
  const TunitQuaternion half = T4dDblVector(1, 0, 0).rotateTo(T4dDblVector(-1, 0, 0));
  EXPECT_NEAR(0.0, half.w, kRounding);
  EXPECT_EQ(1.0, half.y);
  EXPECT_EQ(TunitQuaternion(), T4dDblVector().rotateTo(T4dDblVector(1, 0, 0)));
  EXPECT_EQ(TunitQuaternion(), T4dDblVector(1e-5, 0, 0).rotateTo(T4dDblVector(0, 9e-5, 0)));
}

// Every product with a matrix, against the sums that define it.
TEST(Points, AreRowsOnTheLeftAndColumnsOnTheRight) {
  RandomValues random(4);
  for (int i = 0; i < 20; ++i) {
    const T4dDblMatrix m = random.matrix();
    const T4dDblPoint p(random.number(), random.number(), random.number(), random.number());
    const auto row = [&](short c, double w) {
      return p.x * m(0, c) + p.y * m(1, c) + p.z * m(2, c) + w * m(3, c);
    };
    const auto column = [&](short r, double w) {
      return m(r, 0) * p.x + m(r, 1) * p.y + m(r, 2) * p.z + m(r, 3) * w;
    };
    const T4dDblVector v(p);
    const T3dDblPoint point(v);
    T4dDblVector inPlace = v, premultiplied = v;
    T3dDblPoint pointInPlace = point;
    T4dDblPoint weighted = p, weightedBefore = p;
    inPlace.postmultBy(m);
    premultiplied.premultBy(m);
    pointInPlace.postmultBy(m);
    weighted.postmultBy(m);
    weightedBefore.premultBy(m);
    for (short c = 0; c < 3; ++c) {
      EXPECT_NEAR(row(c, 0.0), inPlace(c), kRounding);
      EXPECT_NEAR(row(c, 1.0), T4dDblVector(pointInPlace)(c), kRounding);
      EXPECT_NEAR(column(c, 0.0), premultiplied(c), kRounding);
    }
    for (short c = 0; c < 4; ++c) {
      EXPECT_NEAR(row(c, p.w), weighted(c), kRounding);
      EXPECT_NEAR(column(c, p.w), weightedBefore(c), kRounding);
    }
    EXPECT_LT(distance(inPlace, v * m), kRounding);
    EXPECT_LT(distance(premultiplied, m * v), kRounding);
    EXPECT_LT(distance(pointInPlace, point * m), kRounding);
    EXPECT_LT(distance(weighted.cartesian() - T4dDblPoint(), (p * m) - T4dDblPoint()), 1e-9);
  }
}
