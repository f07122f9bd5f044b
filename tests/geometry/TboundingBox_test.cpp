#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <kilnbase/geometry/TboundingBox.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using kilntest::kInfinity;
using kilntest::kNaN;
using kilntest::list;
using kilntest::vectorOf;
using testing::ElementsAre;

namespace {

std::string text(const TboundingBox& box) {
  std::ostringstream stream;
  box.printOn(stream);
  return stream.str();
}

std::string raw(const TboundingBox& box) {
  std::ostringstream stream;
  box.printRaw(stream);
  return stream.str();
}

// From (0, 10, 20) to (1, 12, 23).
TboundingBox block() {
  return {vectorOf({0.0, 10.0, 20.0}), vectorOf({1.0, 12.0, 23.0})};
}

// Numbers with weights of all kinds among them, at times none.
DoubleVec randomElements(std::mt19937& random, int count) {
  const double special[] = {kNaN, 0.0, 1e-9, -1.1e-9, 1.0, 1.0 + 5e-10, -2.0, kInfinity};
  DoubleVec elements(static_cast<unsigned>(count));
  for (int i = 0; i < count; ++i) {
    const auto number = random();
    elements(i) = number % 3 == 0 ? special[number / 3 % 8] : std::ldexp(number, -31) - 1.0;
  }
  return elements;
}

TboundingBox mergedOneByOne(const TboundingBox& box, const TtupleVector& points, int rational) {
  DoubleVec low = box.minCorner().copy(), high = box.maxCorner().copy();
  for (int i = 0; i < points.points(); ++i) {
    const DoubleVec p = points[i];
    const double weight = rational == 0 ? 1.0 : p(box.boxDim());
    double factor = std::fabs(weight) > 1e-9 ? 1.0 / weight : 1.0;
    if (std::fabs(factor - 1.0) <= 1e-9) factor = 1.0;
    for (int k = 0; k < box.boxDim(); ++k) {
      low(k) = std::fmin(low(k), p(k) * factor);
      high(k) = std::fmax(high(k), p(k) * factor);
    }
  }
  return {low, high};
}

}  // namespace

// Of every dimension, size and number of points, as a sequence with any stride and as a grid.
TEST(TboundingBox, MergesWhatComparingPointsOneByOneGives) {
  std::mt19937 random(31);
  for (int round = 0; round < 4000; ++round) {
    const int size = 1 + static_cast<int>(random() % 6);
    const int count = static_cast<int>(random() % 30);
    const int rational = random() % 2 == 0 ? 0 : 4;
    const DoubleVec all = randomElements(random, 3 * size * count);
    const int stride = random() % 2 == 0 ? 1 : 3;
    const DoubleVec elements = all.slice(0, static_cast<unsigned>(size * count), stride);
    const TtupleVector points(size, elements);
    TboundingBox box(static_cast<int>(random() % 6)), ofGrid = box;
    const bool fits = size >= box.boxDim() + (rational == 0 ? 0 : 1);
    const TboundingBox expected = fits ? mergedOneByOne(box, points, rational) : box;
    EXPECT_EQ(fits ? 1 : 0, box.merge(points, rational));
    EXPECT_EQ(fits ? 1 : 0, ofGrid.merge(TtupleMatrix(size, 1, count, elements), rational));
    ASSERT_EQ(expected.minCorner(), box.minCorner()) << round;
    ASSERT_EQ(expected.maxCorner(), box.maxCorner()) << round;
    ASSERT_EQ(text(box), text(ofGrid)) << round;
  }
}

TEST(TboundingBox, TakesItsDimensionFromWhatMakesIt) {
  const TtupleVector points(3, vectorOf({2.0, 8.0, 2.0, 9.0, 3.0, 3.0}));
  const std::pair<TboundingBox, std::string> cases[] = {
      {{vectorOf({5.0, 6.5, 7.0}), vectorOf({1.0, 2.0})}, "(5, 6.5) to (1, 2)"},
      {{points, 0}, "(2, 3, 2) to (9, 8, 3)"},
      {{TtupleMatrix(3, 2, 1, points.data()), 1}, "(1, 1) to (3, 4)"},
      {{TtupleVector(2, 0, 0.0), 1}, "(1.79769e+308) to (-1.79769e+308)"},
  };
  for (const auto& [box, expected] : cases) EXPECT_EQ(expected, text(box));
}

TEST(TboundingBox, IsAValueThatKeepsItsDimension) {
  DoubleVec low(2, 1.0);
  TboundingBox box(low, low), copy = box, solid(3);
  low = 5.0;
  solid = box;
  EXPECT_EQ(1, box.set(TtupleMatrix(2, 1, 1, 7.0), 0));
  EXPECT_EQ("(7, 7) to (7, 7)", text(box));
  EXPECT_EQ(0, box.set(TtupleVector(2, 1, 1.0), 1));  // reset all the same
  EXPECT_EQ(kInfinity, box.size2());
  EXPECT_EQ("(1, 1) to (1, 1)", text(copy));
  EXPECT_EQ("(0, 0, 0) to (0, 0, 0)", text(solid));
  for (const int size : {1, 5}) {
    const DoubleVec infinite(static_cast<unsigned>(size), kInfinity);
    TboundingBox inverted(infinite, -infinite);
    const std::string before = text(inverted);
    EXPECT_EQ(1, inverted.merge(TtupleVector(size, 0, 0.0), 0));
    EXPECT_EQ(before, text(inverted));
  }
  std::vector<TboundingBox> boxes = {TboundingBox(1), TboundingBox(2)};
  std::swap(boxes[0], boxes[1]);
  boxes.insert(boxes.begin(), 2, block());
  EXPECT_EQ(text(block()), text(boxes[1]));
  EXPECT_EQ("(0, 0) to (0, 0)", text(boxes[2]));
}

TEST(TboundingBox, MeasuresAndCuts) {
  TboundingBox box = block(), flat(2);
  EXPECT_THAT(list(box.center()), ElementsAre(0.5, 11, 21.5));
  EXPECT_EQ(3.0, box.maxSize());
  EXPECT_EQ(std::sqrt(14.0), box.size());
  const DoubleVec a = vectorOf({-1.0, 0.5, 1.0}), b = vectorOf({2.0, 1.0, 0.0});
  EXPECT_EQ(0, box.cut(a, b, flat));
  EXPECT_EQ(0, box.cut(DoubleVec(2, 0.0), b, box));
  EXPECT_EQ(0, box.cut(a, DoubleVec(4, 0.0), box));
  EXPECT_EQ(1, box.cut(a, b, box));
  EXPECT_EQ("(-1, 11, 23) to (2, 12, 20)", text(box));
  kilntest::RecordedMathErrors errors;
  EXPECT_EQ(0.0, TboundingBox().maxSize());
  EXPECT_EQ(vxKilnBase::kEmptyVectorError, errors.takeAll().front().number);
}

TEST(TboundingBox, PointsMayLieAMillionthOutside) {
  const std::pair<DoubleVec, int> cases[] = {
      {vectorOf({0.0 - 1e-6, 11.0, 21.0}), 1}, {vectorOf({0.0, 12.0 + 1e-6, 21.0}), 1},
      {vectorOf({-2e-6, 11.0, 21.0}), 0},      {vectorOf({0.0, 11.0, 23 + 2e-6}), 0},
      {vectorOf({kNaN, 11.0, 21.0}), 0},       {vectorOf({0.0, 11.0}), 0},
      {vectorOf({0.0, 11.0, 21.0, 0.0}), 0}};
  for (const auto& [p, isInside] : cases) {
    EXPECT_EQ(isInside, block().isInside(p)) << p;
    EXPECT_EQ(isInside, block().intersect(p, DoubleVec(p.length(), 0.0), 0.0)) << p;
  }
}

// Rays along each axis from either side, where the nearer face is 2 away.
TEST(TboundingBox, RaysHitFacesAheadWithTheirAsymmetricTolerance) {
  const TboundingBox box(DoubleVec(3, -1.0), DoubleVec(3, 1.0));
  for (const int axis : {0, 1, 2}) {
    for (const double side : {-1.0, 1.0}) {
      const auto hits = [&](double speed, double maxParam, double offset = 0.5) {
        DoubleVec origin(3, 0.5), direction(3, 0.0);
        origin(axis) = 3.0 * side;
        origin((axis + 1) % 3) = offset;
        direction(axis) = speed * side;
        return box.intersect(origin, direction, maxParam);
      };
      EXPECT_EQ(0, hits(1.0, -1.0));
      EXPECT_EQ(0, hits(-1.0, 2.0));
      EXPECT_EQ(1, hits(-1.0, 2.5));
      EXPECT_EQ(0, hits(-1e-6, -1.0));
      EXPECT_EQ(1, hits(-1.1e-6, -1.0));
      EXPECT_EQ(1, hits(-1.0, -1.0, 1.0000009 * side));
      EXPECT_EQ(0, hits(-1.0, -1.0, 1.000002 * side));
      EXPECT_EQ(side > 0 && axis > 0 ? 0 : 1, hits(2e6, -1.0));  // at a parameter of -1e-6
      EXPECT_EQ(0, hits(1e6, -1.0));
    }
  }
  EXPECT_EQ(0, box.intersect(DoubleVec(2, 5.0), DoubleVec(3, -1.0), -1.0));
  EXPECT_EQ(0, box.intersect(DoubleVec(3, 5.0), DoubleVec(2, -1.0), -1.0));
  EXPECT_EQ(0, TboundingBox(2).intersect(DoubleVec(2, 1.0), DoubleVec(2, -1.0), -1.0));
}

TEST(TboundingBox, ReadsWhatItWroteWhole) {
  const std::string bytes = raw({vectorOf({-1.5, kNaN}), vectorOf({kInfinity, -0.0})});
  EXPECT_EQ(std::string("\2\0\0\0\0\0\0\0\0\0\xF8\xBF", 12), bytes.substr(0, 12));
  const std::string absurd("\xFF\xFF\xFF\xFF", 4), huge("\xFF\xFF\xFF\x7F", 4);
  std::vector<std::string> inputs = {bytes, absurd + bytes, huge + bytes};
  for (std::size_t n = 0; n < bytes.size(); ++n) inputs.push_back(bytes.substr(0, n));
  for (const std::string& input : inputs) {
    std::istringstream stream(input);
    TboundingBox box = block();
    EXPECT_EQ(input == bytes ? 1 : 0, box.readRaw(stream));
    EXPECT_EQ(input == bytes ? bytes : raw(block()), raw(box)) << input.size();
  }
}
