#include <algorithm>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <utility>

#include <kilnbase/geometry/T4dDblMatrix.h>
#include <kilnbase/geometry/TgenXformMatrix.h>
#include <kilnbase/geometry/Tscale.h>

#include "tests/geometry/Values.h"

using kilntest::distance;
using kilntest::kRounding;
using kilntest::RandomValues;

namespace {

T4dDblMatrix diagonal(double x, double y, double z) {
  const double elements[4][4] = {{x}, {0, y}, {0, 0, z}, {0, 0, 0, 1}};
  return T4dDblMatrix().setFromDouble(elements);
}

}  // namespace

TEST(Matrix, ProductsActOneAfterTheOtherAndMayBeTheirOwnFactors) {
  RandomValues random(1);
  const T4dDblMatrix a = random.matrix(), b = random.matrix(), ab = a * b;
  const T4dDblPoint row(0.5, -1.5, 2.5, 3.5);
  EXPECT_TRUE((row * ab).equivalent(row * a * b, 10 * kRounding));
  T4dDblMatrix square = a;
  EXPECT_LT(distance(a * a, square.postmultBy(square)), kRounding);
  EXPECT_LT(distance(ab, T4dDblMatrix(b).premultBy(a)), kRounding);
  EXPECT_LT(distance(ab.transpose(), b.transpose() * T4dDblMatrix(a).transposeIt()), kRounding);
}

TEST(Matrix, TheInverseIsThatOfGaussJordan) {
  RandomValues random(2);
  for (short i = 0; i < 200; ++i) {
    T4dDblMatrix m = random.matrix();
    m(i % 4, i / 4 % 4) = 0.0;
    const T4dDblMatrix inverse = m.inverse();
    const double size = distance(inverse, diagonal(0, 0, 0));
    EXPECT_LT(distance(T4dDblMatrix::identity, m * inverse), size * kRounding);
  }
  EXPECT_FALSE(std::isfinite(diagonal(1, 0, 1).inverse()(1, 1)));
}

TEST(Matrix, GoesInAndOutRowByRow) {
  const float floats[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, -1.0F / 3, 0, 1}};
  float back[4][4];
  T4dDblMatrix m;
  m.setFromFloat(floats).copyToFloat(back);
  EXPECT_TRUE(std::equal(floats[0], floats[0] + 16, back[0]));
  testing::internal::CaptureStdout();
  m.print(stdout);
  EXPECT_EQ("1 0 0 0\n0 1 0 0\n0 0 1 0\n0 -0.333333 0 1\n", testing::internal::GetCapturedStdout());
  EXPECT_TRUE(T4dDblMatrix::identity.equivalent(diagonal(1, 1, 1.25), 0.25));
  EXPECT_FALSE(T4dDblMatrix::identity.equivalent(diagonal(1, 1, 1.25), 0.249));
}

TEST(Scale, TinyValuesAndTolerancesBecomeOneTenThousandth) {
  EXPECT_EQ(diagonal(0.0001, 0.0001, -0.0001), Tscale(0, -0.00005, -0.0001));
  EXPECT_EQ(diagonal(0.5, 0.25, -2), Tscale(2, 4, -0.5).inverse());
  // `inverse` clamps the reciprocals, `invertIt` does not.
  EXPECT_EQ(0.0001, Tscale(1e6, 1, 1).inverse().x);
  EXPECT_EQ(1e-6, Tscale(1e6, 1, 1).invertIt().x);
  EXPECT_TRUE(Tscale().equivalent(Tscale(1, 1, 1.00005), 0.0));
  EXPECT_FALSE(Tscale().equivalent(Tscale(1, 1.0002, 1), 0.0));
  EXPECT_TRUE(Tscale().equivalent(Tscale(1.25, 1, 1), 0.25));
  EXPECT_FALSE(Tscale().equivalent(Tscale(), -1.0));
  EXPECT_TRUE(Tscale(1, 1, 1 + 1e-10).proportionalScale());
  const double more = 1 + 8e-10, less = 1 - 8e-10;
  for (const Tscale& s : {Tscale(1, more, less), {more, less, 1}, {more, 1, less}}) {
    EXPECT_FALSE(s.proportionalScale());
  }
}

TEST(GenXform, MultipliesElementaryTransformsOnTheLeft) {
  RandomValues random(5);
  for (const T4dDblVector& v :
       {random.vector(), T4dDblVector(0, 2, 0), T4dDblVector(0, 0, -1), T4dDblVector()}) {
    const T4dDblMatrix start = random.matrix();
    const auto begun = [&] { return TgenXformMatrix().multiplyBy(start); };
    const Tangle turn(180.0 * random.number());
    const auto about = [&](double x, double y, double z) {
      return T4dDblMatrix().setToAxisRotate(T4dDblVector(x, y, z), turn.radians());
    };
    const std::pair<T4dDblMatrix, T4dDblMatrix> cases[] = {
        {v, begun().translate(v.array())},
        {diagonal(v.x, v.y, v.z), begun().scale(v.array())},
        {about(1, 0, 0), begun().rotatex(turn)},
        {about(0, 1, 0), begun().rotatey(turn)},
        {about(0, 0, 1), begun().rotatez(turn)},
        {about(0.6, 0, 0.8), begun().rotateAxis(T4dDblVector(3e-200, 0, 4e-200).array(), turn)},
        {T4dDblMatrix::identity, begun().rotateAxis(T4dDblVector().array(), turn)}};
    for (const auto& [elementary, result] : cases) {
      EXPECT_LT(distance(elementary * start, result), kRounding);
    }
    EXPECT_LT(distance(v * about(1, 0, 0), T4dDblVector(v).rotateItX(turn)), kRounding);
    EXPECT_LT(distance(v * about(0, 1, 0), T4dDblVector(v).rotateItY(turn)), kRounding);
    EXPECT_LT(distance(v * about(0, 0, 1), T4dDblVector(v).rotateItZ(turn)), kRounding);
    TgenXformMatrix align, back;
    const T4dDblVector aligned = v * align.alignVectorWithZAxis(v.array());
    EXPECT_LT(distance(T4dDblVector(0, 0, v.length()), aligned), kRounding);
    back.alignZAxisWithVector(v.array());
    EXPECT_LT(distance(T4dDblMatrix::identity, align * back), kRounding);
  }
}

TEST(GenXform, TakesItsOwnRowsAsOperands) {
  const auto expectSame = [](auto call) {
    TgenXformMatrix own = TgenXformMatrix().multiplyBy(RandomValues(8).matrix()), other = own;
    const TgenXformMatrix rows = own;
    call(other, rows);
    call(own, own);
    EXPECT_EQ(other, own);
  };
  expectSame([](auto& g, const auto& m) { g.rotateAxis(m[2], Tangle(50.0)); });
  expectSame([](auto& g, const auto& m) { g.alignZAxisWithVector(m[0]); });
  expectSame([](auto& g, const auto& m) { g.setOrientation(m[0], m[1], m[2]); });
}
