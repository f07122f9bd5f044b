#include <algorithm>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <utility>

#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/TgenXformMatrix.h>
#include <kilnbase/geometry/Tscale.h>

#include "tests/geometry/Values.h"

using kilntest::distance;
using kilntest::elements;
using kilntest::kRounding;
using kilntest::RandomValues;

namespace {

T4dDblMatrix diagonal(double x, double y, double z) {
  T4dDblMatrix m;
  m(0, 0) = x;
  m(1, 1) = y;
  m(2, 2) = z;
  return m;
}

}  // namespace

TEST(Matrix, ProductsActOneAfterTheOtherAndMayBeTheirOwnFactors) {
  RandomValues random(1);
  for (int i = 0; i < 20; ++i) {
    const T4dDblMatrix a = random.matrix(), b = random.matrix();
    const T4dDblMatrix ab = a * b;
    for (short r = 0; r < 4; ++r) {
      T4dDblPoint row(0, 0, 0, 0);
      row(r) = 1.0;
      EXPECT_TRUE((row * ab).equivalent(row * a * b, kRounding));
    }
    T4dDblMatrix square = a;
    EXPECT_LT(distance(a * a, square.setToProduct(square, square)), kRounding);
    EXPECT_LT(distance(ab, T4dDblMatrix(a).postmultBy(b)), kRounding);
    EXPECT_LT(distance(ab, T4dDblMatrix(b).premultBy(a)), kRounding);
    EXPECT_LT(distance(ab.transpose(), b.transpose() * T4dDblMatrix(a).transposeIt()), kRounding);
    const T4dDblVector x(a[0][0], a[0][1], a[0][2]), y(a[1][0], a[1][1], a[1][2]),
        z(a[2][0], a[2][1], a[2][2]);
    EXPECT_NEAR(x.dotProduct(y ^ z), a.det3x3(), kRounding);
  }
}

TEST(Matrix, TheInverseIsThatOfGaussJordan) {
  RandomValues random(2);
  int regular = 0;
  for (int i = 0; i < 200; ++i) {
    T4dDblMatrix m = random.matrix();
    if (i % 2 == 0) {
      for (int k = 0; k < 16; ++k) elements(m)[k] = std::round(3.0 * elements(m)[k]);
    }
    const double size = distance(m.inverse(), diagonal(0, 0, 0));
    if (!(size < 1e10)) continue;
    ++regular;
    EXPECT_LT(distance(T4dDblMatrix::identity, m * m.inverse()), size * kRounding);
  }
  EXPECT_GT(regular, 180);
  EXPECT_FALSE(distance(diagonal(1, 0, 1).inverse(), T4dDblMatrix()) < 1e10);

  T4dDblMatrix tie;  // the other pivot would round the difference away
  tie(0, 1) = tie(1, 0) = 1.0;
  tie(1, 1) = 1e20;
  EXPECT_EQ(-1e-20, tie.inverse()(0, 1));
}

TEST(Matrix, AxisRotationsAreRightHandedAndActFirst) {
  T4dDblMatrix turn;
  turn.setToAxisRotate(T4dDblVector(0, 0, 1), kilntest::kPi / 2);
  EXPECT_LT(distance(T4dDblVector(0, 1, 0), T4dDblVector(1, 0, 0) * turn), kRounding);
  RandomValues random(4);
  for (int i = 0; i < 20; ++i) {
    const T4dDblVector axis = random.vector().getNormal();
    const double angle = random.number();
    turn.setToAxisRotate(axis, angle);
    EXPECT_LT(distance(axis, axis * turn), kRounding);
    const T4dDblMatrix m = random.matrix();
    EXPECT_LT(distance(turn * m, T4dDblMatrix(m).axisRotateIt(axis, angle)), kRounding);
  }
  EXPECT_EQ(T4dDblMatrix::identity, turn.setToAxisRotate(T4dDblVector(9, 9, 9), 0.0));
}

TEST(Matrix, FloatsGoInAndOutRowByRow) {
  float floats[4][4], back[4][4];
  double doubles[4][4];
  for (int i = 0; i < 16; ++i) {
    floats[i / 4][i % 4] = 1.0F / static_cast<float>(i + 1);
    doubles[i / 4][i % 4] = static_cast<double>(floats[i / 4][i % 4]);
  }
  T4dDblMatrix m;
  m.setFromFloat(floats).copyToFloat(back);
  EXPECT_EQ(1.0F / 7, m(1, 2));
  EXPECT_TRUE(std::equal(floats[0], floats[0] + 16, back[0]));
  T4dDblMatrix other;
  EXPECT_EQ(m, other.setFromDouble(doubles));
  other(3, 3) += 0.25;
  EXPECT_TRUE(m.equivalent(other, 0.25));
  EXPECT_FALSE(m.equivalent(other, 0.249));
}

TEST(Matrix, PrintsFourLines) {
  std::FILE* file = std::tmpfile();
  ASSERT_NE(nullptr, file);
  T4dDblMatrix m;
  m(3, 1) = -1.0 / 3;
  m.print(file);
  ASSERT_EQ(0, std::fseek(file, 0, SEEK_SET));
  char text[100] = {};
  const std::string written(text, std::fread(text, 1, sizeof text, file));
  std::fclose(file);
  EXPECT_EQ("1 0 0 0\n0 1 0 0\n0 0 1 0\n0 -0.333333 0 1\n", written);
}

TEST(Scale, TinyValuesBecomeOneTenThousandth) {
  EXPECT_EQ(diagonal(0.0001, 2, 0.0001), Tscale(0, 2, -0.00005));
  EXPECT_EQ(diagonal(-3, 0.0001, -0.0001), Tscale(-3, 0.0001, -0.0001));
  EXPECT_EQ(diagonal(0.0001, 0.0001, 0.0001), Tscale().set(0));
  EXPECT_EQ(diagonal(0.5, 0.25, -2), Tscale(2, 4, -0.5).inverse());
  // Only one of the two inversions clamps what it makes of large scales.
  Tscale s(1e6, 1, 1);
  EXPECT_EQ(0.0001, s.inverse().x);
  EXPECT_EQ(1e-6, s.invertIt().x);
  EXPECT_EQ(1e4, s.invertIt().x);
}

TEST(Scale, TolerancesAreClampedToo) {
  EXPECT_TRUE(Tscale().equivalent(Tscale(1, 1, 1.00005), 0.0));
  EXPECT_FALSE(Tscale().equivalent(Tscale(1, 1.0002, 1), 0.0));
  EXPECT_TRUE(Tscale().equivalent(Tscale(1.25, 1, 1), 0.25));
  EXPECT_FALSE(Tscale().equivalent(Tscale(), -1.0));
  EXPECT_TRUE(Tscale(1, 1, 1 + 1e-10).proportionalScale());
  EXPECT_FALSE(Tscale(1, 1 + 8e-10, 1 - 8e-10).proportionalScale());
}

TEST(GenXform, MultipliesElementaryTransformsOnTheLeft) {
  RandomValues random(5);
  for (int i = 0; i < 20; ++i) {
    TgenXformMatrix start;
    start.multiplyBy(random.matrix());
    const T4dDblVector v = random.vector();
    const double angle = random.number();
    Tangle turn;
    turn.radians(angle);
    const auto about = [&](const T4dDblVector& axis) {
      return T4dDblMatrix().setToAxisRotate(axis, angle);
    };
    using M = TgenXformMatrix;
    const std::pair<T4dDblMatrix, T4dDblMatrix> cases[] = {
        {v, M(start).translate(v.array())},
        {diagonal(v.x, v.y, v.z), M(start).scale(v.array())},
        {diagonal(1e-9, 1e-9, 1e-9), M(start).scale(1e-9)},
        {about({1, 0, 0}), M(start).rotatex(turn)},
        {about({0, 1, 0}), M(start).rotatey(turn)},
        {about({0, 0, 1}), M(start).rotatez(turn)},
        {about(v.getNormal()), M(start).rotateAxis(v.array(), turn)},
        {about(v.getNormal()), M(start).rotateAxis((1e-200 * v).array(), turn)},
        {diagonal(0, 0, 0), M(start).scale(0)},
        {T4dDblMatrix::identity, M(start).rotateAxis(T4dDblVector().array(), turn)}};
    for (const auto& [elementary, result] : cases) {
      EXPECT_LT(distance(elementary * start, result), kRounding);
    }
    EXPECT_LT(distance(v * about({1, 0, 0}), T4dDblVector(v).rotateItX(turn)), kRounding);
    EXPECT_LT(distance(v * about({0, 1, 0}), T4dDblVector(v).rotateItY(turn)), kRounding);
    EXPECT_LT(distance(v * about({0, 0, 1}), T4dDblVector(v).rotateItZ(turn)), kRounding);
  }
}

TEST(GenXform, AligningTurnsVectorsToTheZAxisAndBack) {
  RandomValues random(6);
  for (const T4dDblVector& v : {random.vector(), random.vector(), T4dDblVector(0, 2, 0),
                                T4dDblVector(0, 0, -1), T4dDblVector()}) {
    TgenXformMatrix align, back;
    const T4dDblVector aligned = v * align.alignVectorWithZAxis(v.array());
    EXPECT_LT(distance(T4dDblVector(0, 0, v.length()), aligned), kRounding);
    EXPECT_LT(distance(T4dDblMatrix::identity, align * back.alignZAxisWithVector(v.array())),
              kRounding);
  }
}

TEST(GenXform, PointsAndVectorsAreBothMoved) {
  TgenXformMatrix m;
  const double a[] = {1, 2, 3}, b[] = {4, 5, 6}, c[] = {7, 8, 9};
  m.translate(10, 20, 30).setOrientation(a, b, c);
  m(0, 3) = 5.0;  // ignored
  double p[] = {1, 1, 1, 2};
  m.transformPoint(p);
  EXPECT_EQ(T4dDblPoint(26, 55, 84, 2), T4dDblPoint(p[0], p[1], p[2], p[3]));
  double v[] = {1, 1, 1};
  m.transformVector(v);
  EXPECT_EQ(T4dDblVector(16, 35, 54), T4dDblVector(v[0], v[1], v[2]));
}
