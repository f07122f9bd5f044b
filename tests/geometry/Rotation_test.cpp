#include <cmath>
#include <gtest/gtest.h>

#include <kilnbase/geometry/Tangle.h>
#include <kilnbase/geometry/Tplane.h>
#include <kilnbase/geometry/Tquaternion.h>
#include <kilnbase/geometry/TunitQuaternion.h>

#include "tests/geometry/Values.h"

using kilntest::distance;
using kilntest::kPi;
using kilntest::kRounding;
using kilntest::RandomValues;

namespace {

Tquaternion quaternion(double w, double x, double y, double z) {
  Tquaternion q;
  q.w = w;
  q.x = x;
  q.y = y;
  q.z = z;
  return q;
}

double norm(const Tquaternion& q) {
  return std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
}

double distance(const Tquaternion& a, const Tquaternion& b) {
  return norm(a - b);
}

Tquaternion randomQuaternion(RandomValues& random) {
  const T4dDblVector v = random.vector();
  return quaternion(random.number(), v.x, v.y, v.z);
}

}  // namespace

TEST(Angle, EachRepresentationLeadsToTheOthers) {
  for (long degrees = -720; degrees <= 720; ++degrees) {
    const bool isInTable = degrees % 15 == 0;
    const double expected = static_cast<double>(isInTable ? (degrees + 720) % 360 : degrees % 360);
    const double radians = expected * kPi / 180.0;
    const double cosine = std::cos(radians), sine = std::sin(radians);
    const bool isQuirk = isInTable && degrees % 60 == 0 && degrees % 180 != 0;
    const Tangle whole(degrees);
    EXPECT_EQ(expected, whole.degrees());
    EXPECT_NEAR(radians, whole.radians(), kRounding);
    EXPECT_NEAR(cosine, whole.cos(), kRounding);
    EXPECT_NEAR(isQuirk ? std::copysign(0.5, sine) : sine, whole.sin(), kRounding) << degrees;
    Tangle byRadians;
    byRadians.radians(radians);
    const Tangle exact(expected), byCosSin(cosine, sine);
    EXPECT_NEAR(sine, exact.sin(), kRounding);
    EXPECT_NEAR(cosine, byRadians.cos(), kRounding);
    EXPECT_NEAR(expected, byRadians.degrees(), 360 * kRounding);
    EXPECT_NEAR(0.0, std::remainder(byCosSin.degrees() - expected, 360.0), 360 * kRounding);
    EXPECT_NEAR(0.0, std::remainder(byCosSin.radians() - radians, 2 * kPi), 2 * kRounding);
  }
  EXPECT_EQ(0.9659258262890683, Tangle(375L).cos());
  EXPECT_EQ(0.0, Tangle(90L).cos());
  EXPECT_EQ(720.0, Tangle(720.0).degrees());
}

TEST(Angle, ClampingSnapsCosineAndSine) {
  Tangle angle;
  angle.radians(1e-6);
  angle.clamp();
  EXPECT_EQ(0.0, angle.sin());
  EXPECT_EQ(1.0, angle.cos());
  EXPECT_EQ(1e-6, angle.radians());
  angle.setCosSin(-0.999991, 1.1e-5);
  angle.clamp();
  EXPECT_EQ(-1.0, angle.cos());
  EXPECT_EQ(1.1e-5, angle.sin());
}

TEST(Plane, LinesMeetItAheadBehindOrNever) {
  const Tplane plane(T4dDblPoint(0, 0, 5, 2), T4dDblVector(0, 0, 2), 0.5);
  EXPECT_EQ(T4dDblVector(0, 0, 1), plane.normal());
  EXPECT_EQ(-5.0, plane.d);  // the weight of the point does not matter
  EXPECT_EQ(1e-9, plane.tolerance);
  EXPECT_EQ(0.5, Tplane(0.5).tolerance);
  EXPECT_EQ(1e-10, Tplane(T4dDblPoint(), T4dDblVector(1e-10, 0, 0), 0.5).a);

  T4dDblPoint out(9, 9, 9, 9);
  EXPECT_EQ(1, plane.intersection(T4dDblPoint(), T4dDblVector(1, 0, 9e-10), out));
  EXPECT_EQ(T4dDblPoint(9, 9, 9, 9), out);
  EXPECT_EQ(2, plane.intersection(T4dDblPoint(), T4dDblVector(1, 0, 1), out));
  EXPECT_EQ(T4dDblPoint(5, 0, 5, 1), out);
  EXPECT_EQ(3, plane.intersection(T4dDblPoint(), T4dDblVector(1, 0, -1), out));
  EXPECT_EQ(T4dDblPoint(-5, 0, 5, 1), out);
  EXPECT_EQ(2, plane.intersection(out, T4dDblVector(0, 0, -1), out));
}

TEST(Quaternion, ProductsAreHamiltons) {
  const Tquaternion i = quaternion(0, 1, 0, 0), j = quaternion(0, 0, 1, 0),
                    k = quaternion(0, 0, 0, 1);
  EXPECT_EQ(k, i * j);
  EXPECT_EQ(i, j * k);
  EXPECT_EQ(j, k * i);
  EXPECT_EQ(-k, j * i);
  EXPECT_EQ(-Tquaternion(), i * i);
  RandomValues random(2);
  for (int n = 0; n < 100; ++n) {
    const Tquaternion p = randomQuaternion(random);
    EXPECT_LT(distance(Tquaternion(), p * p.inverse()), kRounding);
    EXPECT_LT(distance(p, Tquaternion(p.normalize()).scaleIt(norm(p))), kRounding);
  }
  EXPECT_TRUE(i.equivalent(k, std::sqrt(2.0)));
  EXPECT_FALSE(i.equivalent(k, 1.414));
  EXPECT_TRUE(i.equivalent(i, -1.0));
}

TEST(Quaternion, RotatesLikeItsMatrix) {
  RandomValues random(3);
  for (int n = 0; n < 100; ++n) {
    const T4dDblVector axis = random.vector().getNormal(), v = random.vector();
    const double angle = kPi * random.number();
    TunitQuaternion q;
    q.setToPivotAxis(angle, 3.0 * axis);
    const T4dDblMatrix turn = T4dDblMatrix().setToAxisRotate(axis, angle);
    EXPECT_LT(distance(turn, q), kRounding);
    EXPECT_LT(distance(turn, Tquaternion(q).scaleIt(5.0)), kRounding);
    EXPECT_LT(distance(turn, -q), kRounding);
    EXPECT_LT(distance(turn.transpose(), q.inverse()), kRounding);
    const Tquaternion rotated = q * quaternion(0, v.x, v.y, v.z) * q.conjugate();
    EXPECT_LT(distance(v * turn, {rotated.x, rotated.y, rotated.z}), kRounding);
    const TunitQuaternion p = random.rotation();
    EXPECT_LT(distance(T4dDblMatrix(q) * T4dDblMatrix(p), p * q), kRounding);
  }
}

TEST(Quaternion, ComesBackFromItsMatrix) {
  RandomValues random(4);
  for (int n = 0; n < 1000; ++n) {
    // Many half turns and near them, where the trace says little.
    TunitQuaternion q = random.rotation();
    if (n % 2 == 0) q.setToPivotAxis(kPi - 1e-3 * random.number(), random.vector());
    TunitQuaternion back;
    back = T4dDblMatrix(q);
    EXPECT_LT(std::fmin(distance(q, back), distance(q, -back)), kRounding);
  }
  // The first of equal elements leads and is positive.
  Tquaternion q;
  EXPECT_EQ(quaternion(0, 1, 0, 0), q = Tscale(1, -1, -1));
  EXPECT_EQ(quaternion(0, 0, 1, 0), q = Tscale(-1, 1, -1));
  EXPECT_EQ(quaternion(0, 0, 0, 1), q = Tscale(-1, -1, 1));
  const double h = std::sqrt(0.5);
  T4dDblMatrix swapXY = Tscale(1, 1, -1), swapXZ = Tscale(1, -1, 1);
  swapXY(0, 0) = swapXY(1, 1) = swapXZ(0, 0) = swapXZ(2, 2) = 0.0;
  swapXY(0, 1) = swapXY(1, 0) = swapXZ(0, 2) = swapXZ(2, 0) = -1.0;
  EXPECT_LT(distance(quaternion(0, h, -h, 0), q = swapXY), kRounding);
  EXPECT_LT(distance(quaternion(0, h, 0, -h), q = swapXZ), kRounding);
}

TEST(Quaternion, AnglesAndAxesComeBack) {
  RandomValues random(5);
  for (int n = 0; n < 100; ++n) {
    const T4dDblVector axis = random.vector().getNormal();
    const double angle = kPi * (1.001 + random.number());
    double foundAngle = 0.0;
    T4dDblVector foundAxis;
    TunitQuaternion().setToPivotAxis(angle, axis).getPivotAxis(foundAngle, foundAxis);
    EXPECT_NEAR(angle, foundAngle, 1e-11);
    EXPECT_LT(distance(axis, foundAxis), 1e-11);
  }
  const Tquaternion identity;
  double angle = 5.0;
  T4dDblVector axis(7, 8, 9);
  TunitQuaternion().getPivotAxis(angle, axis);
  EXPECT_EQ(0.0, angle);
  EXPECT_EQ(T4dDblVector(7, 8, 9), axis);
  quaternion(1.5, 0, 0, 0).getPivotAxis(angle, axis);
  EXPECT_TRUE(std::isnan(angle));
  EXPECT_EQ(identity, quaternion(1e-9, 0, 0, 0).normalizeIt());
  EXPECT_EQ(quaternion(-1, 0, 0, 0), quaternion(-1.001e-9, 0, 0, 0).normalizeIt());
  Tquaternion q = quaternion(0, 1, 0, 0);
  EXPECT_EQ(identity, q.setToPivotAxis(1.0, T4dDblVector(3e-5, 0, 0)));
  EXPECT_NE(identity, q.setToPivotAxis(1.0, T4dDblVector(4e-5, 0, 0)));
  EXPECT_FALSE(std::isfinite(quaternion(0, 0, 0, 0).inverse().w));
  // A unit quaternion takes its length for granted.
  TunitQuaternion stretched;
  stretched.w = 2.0;
  EXPECT_EQ(2.0, stretched.inverse().w);
  EXPECT_EQ(1.0, stretched.renormalizeIt().w);
}

TEST(Quaternion, ExponentialUndoesLogarithm) {
  RandomValues random(6);
  for (int n = 0; n < 100; ++n) {
    const TunitQuaternion q = random.rotation();
    const Tquaternion log = q.log();
    EXPECT_EQ(0.0, log.w);
    EXPECT_LT(distance(q, log.exp()), kRounding);
    Tquaternion power = log;
    EXPECT_LT(distance(q * q, power.scaleIt(2.0).exp()), kRounding);
  }
  EXPECT_EQ(quaternion(0, 0, 0, 0), (-TunitQuaternion()).log());
  EXPECT_EQ(quaternion(1, 1e-10, 0, 0), quaternion(9, 1e-10, 0, 0).exp());
}
