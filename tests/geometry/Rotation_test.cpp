#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <utility>

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

constexpr Tquaternion quaternion(double w, double x, double y, double z) {
  return std::bit_cast<Tquaternion>(std::array{w, x, y, z});
}

}  // namespace

TEST(Angle, EachRepresentationLeadsToTheOthers) {
  for (long degrees = -720; degrees <= 720; ++degrees) {
    const bool isInTable = degrees % 15 == 0;
    const double expected = static_cast<double>(isInTable ? (degrees + 720) % 360 : degrees % 360);
    const double radians = expected * kPi / 180.0;
    const double cosine = std::cos(radians), sine = std::sin(radians);
    const bool isQuirk = isInTable && degrees % 60 == 0 && degrees % 180 != 0;
    const Tangle whole(degrees), byCosSin(cosine, sine);
    EXPECT_EQ(expected, whole.degrees());
    EXPECT_NEAR(radians, whole.radians(), kRounding);
    EXPECT_NEAR(cosine, whole.cos(), kRounding);
    EXPECT_NEAR(isQuirk ? std::copysign(0.5, sine) : sine, whole.sin(), kRounding) << degrees;
    Tangle byRadians;
    byRadians.radians(radians);
    EXPECT_NEAR(cosine, byRadians.cos(), kRounding);
    EXPECT_NEAR(expected, byRadians.degrees(), 360 * kRounding);
    EXPECT_NEAR(0.0, std::remainder(byCosSin.degrees() - expected, 360.0), 360 * kRounding);
    EXPECT_NEAR(0.0, std::remainder(byCosSin.radians() - radians, 2 * kPi), 2 * kRounding);
  }
  EXPECT_EQ(720.0, Tangle(720.0).degrees());
}

TEST(Angle, ClampingSnapsCosineAndSine) {
  Tangle angle;
  angle.radians(1e-6);
  angle.clamp();
  EXPECT_EQ(0.0, angle.sin());
  EXPECT_EQ(1e-6, angle.radians());
  angle.setCosSin(-0.999991, 1.1e-5);
  angle.clamp();
  EXPECT_EQ(-1.0, angle.cos());
  EXPECT_EQ(1.1e-5, angle.sin());
}

TEST(Plane, LinesMeetItAheadBehindOrNever) {
  const Tplane plane(T4dDblPoint(0, 0, 5, 2), T4dDblVector(0, 0, 2), 0.5);
  EXPECT_EQ(1e-10, Tplane(T4dDblPoint(), T4dDblVector(1e-10, 0, 0), 0.5).a);
  T4dDblPoint out(9, 9, 9, 9);
  EXPECT_EQ(1, plane.intersection(T4dDblPoint(), T4dDblVector(1, 0, 9e-10), out));
  EXPECT_EQ(T4dDblPoint(9, 9, 9, 9), out);
  EXPECT_EQ(2, plane.intersection(T4dDblPoint(), T4dDblVector(1, 0, 2e-9), out));
  EXPECT_EQ(3, plane.intersection(T4dDblPoint(), T4dDblVector(1, 0, -1), out));
  EXPECT_EQ(T4dDblPoint(-5, 0, 5, 1), out);
  EXPECT_EQ(2, plane.intersection(out, T4dDblVector(0, 0, -1), out));
}

TEST(Rotation, QuaternionRotatesLikeItsMatrixAndComesBackFromIt) {
  RandomValues random(3);
  for (int n = 0; n < 1000; ++n) {
    const T4dDblVector axis = random.vector().getNormal(), v = random.vector();
    // Every other angle is near pi, where the trace is near -1.
    const double angle = kPi + (n % 2 == 0 ? 1e-3 : 0.99 * kPi) * random.number();
    TunitQuaternion q, back;
    q.setToPivotAxis(angle, 3.0 * axis);
    const T4dDblMatrix turn = T4dDblMatrix().setToAxisRotate(axis, angle);
    const T4dDblVector along = axis.dotProduct(v) * axis, across = v - along;
    const T4dDblVector turned = along + std::cos(angle) * across + std::sin(angle) * (axis ^ v);
    EXPECT_LT(distance(turned, v * turn), kRounding);
    const T4dDblMatrix m = random.matrix();
    EXPECT_LT(distance(turn * m, T4dDblMatrix(m).axisRotateIt(axis, angle)), kRounding);
    EXPECT_LT(distance(turn.transpose(), q.inverse()), kRounding);
    const TunitQuaternion p = random.rotation();
    EXPECT_LT(distance(turn * T4dDblMatrix(p), p * q), kRounding);
    back = turn;
    EXPECT_TRUE(q.equivalent(back, kRounding) || q.equivalent(-back, kRounding));
    double foundAngle = 0.0;
    T4dDblVector foundAxis;
    q.getPivotAxis(foundAngle, foundAxis);
    EXPECT_NEAR(angle, foundAngle, 1e-11);
    EXPECT_LT(distance(axis, foundAxis), 1e-11);

    const Tquaternion stretched = Tquaternion(q).scaleIt(-2.0 + random.number());
    EXPECT_LT(distance(turn, stretched), kRounding);
    EXPECT_TRUE(q.equivalent(-stretched.normalize(), kRounding));
    EXPECT_TRUE((stretched * stretched.inverse()).equivalent(Tquaternion(), kRounding));
    Tquaternion log = q.log();
    EXPECT_EQ(0.0, log.w);
    EXPECT_TRUE((q * q).equivalent(log.scaleIt(2.0).exp(), kRounding));
  }
  // Of equal diagonal elements the first gives the positive component. The last trace is 0.
  const std::pair<Tquaternion, Tquaternion> cases[] = {
      {quaternion(0, -1, 1, 0), quaternion(0, 1, -1, 0)},
      {quaternion(0, -1, 0, 1), quaternion(0, 1, 0, -1)},
      {quaternion(1, -1, -1, -1), quaternion(-1, 1, 1, 1)}};
  for (const auto& [from, expected] : cases) {
    Tquaternion found;
    found = T4dDblMatrix(from);
    EXPECT_TRUE(found.equivalent(expected.normalize(), kRounding));
  }
}

TEST(Rotation, ProductsAreTheSameAtCompileTimeAndAtRunTime) {
  constexpr std::array factors = {
      quaternion(0.1, -0.7, 1.3, 0.9), quaternion(-0.3, 1.7, 0.11, -2.3),
      quaternion(0.77, 0.13, -1.9, 3.1), quaternion(-2.9, -0.19, 0.37, 1.1),
      quaternion(1.7, 0.59, 0.23, -0.83)};
  constexpr auto products = [&factors] {
    std::array<Tquaternion, factors.size()> result;
    for (std::size_t i = 0; i < factors.size(); ++i)
      result[i] = factors[i] * factors[(i + 1) % factors.size()];
    return result;
  }();
  for (std::size_t i = 0; i < factors.size(); ++i)
    EXPECT_EQ(products[i], Tquaternion(factors[i]) * factors[(i + 1) % factors.size()]);
}

// Doubles round the cosine of half an angle to 1 below 2.1e-8.
TEST(Rotation, AnglesBelow2em8CountAs0) {
  double angle = 5.0;
  T4dDblVector axis(7, 8, 9);
  TunitQuaternion turn;
  turn.setToPivotAxis(1e-8, T4dDblVector(1, 0, 0)).getPivotAxis(angle, axis);
  EXPECT_EQ(0.0, angle);
  EXPECT_EQ(T4dDblVector(7, 8, 9), axis);
  turn.setToPivotAxis(4e-8, T4dDblVector(1, 0, 0)).getPivotAxis(angle, axis);
  EXPECT_NEAR(4e-8, angle, 4e-9);
  quaternion(1.5, 0, 0, 0).getPivotAxis(angle, axis);
  EXPECT_TRUE(std::isnan(angle));
  Tquaternion q = quaternion(0, 1, 0, 0);
  q.getPivotAxis(q.x, axis);
  EXPECT_EQ(T4dDblVector(1, 0, 0), axis);
  EXPECT_EQ(T4dDblMatrix::identity, T4dDblMatrix(Tscale(2, 2, 2)).setToAxisRotate(axis, 0.0));
}

TEST(Rotation, ShortQuaternionsAndAxesGiveTheIdentity) {
  const Tquaternion identity;
  EXPECT_EQ(identity, quaternion(0, 1e-9, 0, 0).normalizeIt());
  EXPECT_EQ(-identity, quaternion(-1.001e-9, 0, 0, 0).normalize());
  EXPECT_EQ(identity, Tquaternion().setToPivotAxis(1.0, T4dDblVector(3e-5, 0, 0)));
  EXPECT_NE(identity, Tquaternion().setToPivotAxis(1.0, T4dDblVector(4e-5, 0, 0)));
  EXPECT_FALSE(std::isfinite(quaternion(0, 0, 0, 0).inverse().w));
  EXPECT_EQ(quaternion(0, 0, 0, 0), (-TunitQuaternion()).log());
  EXPECT_EQ(quaternion(1, 1e-10, 0, 0), quaternion(9, 1e-10, 0, 0).exp());
  const Tquaternion i = quaternion(0, 1, 0, 0), k = quaternion(0, 0, 0, 1);
  EXPECT_TRUE(i.equivalent(k, std::sqrt(2.0)));
  EXPECT_FALSE(i.equivalent(k, 1.414));
  EXPECT_TRUE(i.equivalent(i, -1.0));
  TunitQuaternion stretched;
  stretched.w = 2.0;
  EXPECT_EQ(2.0, stretched.inverse().w);
}
