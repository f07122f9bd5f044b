// The texts of geometry values.
#include <gtest/gtest.h>
#include <iomanip>
#include <numbers>
#include <sstream>

#include <kilnbase/geometry/Tangle.h>
#include <kilnbase/geometry/TboundingBox.h>
#include <kilnbase/geometry/TgenXformMatrix.h>
#include <kilnbase/geometry/Tplane.h>
#include <kilnbase/geometry/TpostXformMatrix.h>
#include <kilnbase/geometry/TxformMatrix.h>

namespace {

// With one digit after the point, then in a field of six characters.
template <class Value>
std::string textsOf(const Value& value) {
  std::ostringstream stream;
  stream << std::fixed << std::setprecision(1) << value << '|' << std::setw(6) << value << '|';
  EXPECT_EQ(0, stream.width());
  return stream.str();
}

}  // namespace

TEST(Text, ValuesPrintTheirNumbersWithTheFormattingOfTheStream) {
  const std::string three = "(1.0, -2.0, 0.5)|(   1.0,   -2.0,    0.5)|";
  EXPECT_EQ(three, textsOf(T3dDblPoint(1, -2, 0.5)));
  EXPECT_EQ(three, textsOf(T4dDblVector(1, -2, 0.5)));
  EXPECT_EQ(three, textsOf(Tscale(1, -2, 0.5)));
  EXPECT_EQ(three, textsOf(T4dDblMatrix() * T4dDblVector(1, -2, 0.5)));
  const std::string four = "(1.0, 2.0, 3.0, 4.0)|(   1.0,    2.0,    3.0,    4.0)|";
  EXPECT_EQ(four, textsOf(T4dDblPoint(1, 2, 3, 4)));
  TunitQuaternion half;
  half.setToPivotAxis(std::numbers::pi, T4dDblVector(0.6, 0, 0.8));
  EXPECT_EQ("(0.0, 0.6, 0.0, 0.8)|(   0.0,    0.6,    0.0,    0.8)|", textsOf(half));
  EXPECT_EQ("(0.0, 0.0, 1.0, -7.0)|(   0.0,    0.0,    1.0,   -7.0)|",
            textsOf(Tplane(T4dDblPoint(0, 0, 7, 1), T4dDblVector(0, 0, 1), 0.1)));
  EXPECT_EQ("90.0 degrees|  90.0 degrees|", textsOf(Tangle(0.0, 1.0)));
  EXPECT_EQ("(0.0) to (1.0)|     (0.0) to (1.0)|", textsOf(TboundingBox({0}, {1})));
  TpostXformMatrix xform;
  xform = Tscale(2, 2, 2);
  xform = half;
  EXPECT_EQ(
      "translation (0.0, 0.0, 0.0), rotation (0.0, 0.6, 0.0, 0.8), scale (2.0, 2.0, 2.0)|"
      "translation (   0.0,    0.0,    0.0), rotation (   0.0,    0.6,    0.0,    0.8), "
      "scale (   2.0,    2.0,    2.0)|",
      textsOf(xform));
}

TEST(Text, MatricesPrintAsToFiles) {
  TgenXformMatrix m;
  m.translate(1.5, 0, 1e-7);
  std::ostringstream stream;
  stream << m << TxformMatrix(T4dDblVector(1, 0, 0));
  const std::string rows = "1 0 0 0\n0 1 0 0\n0 0 1 0\n";
  EXPECT_EQ(rows + "1.5 0 1e-07 1\n" + rows + "1 0 0 1\n", stream.str());
  EXPECT_EQ(0U, textsOf(m).find("1.0 0.0 0.0 0.0\n"));
  EXPECT_NE(std::string::npos, textsOf(m).find("|   1.0    0.0    0.0    0.0\n"));
}
