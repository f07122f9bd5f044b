#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <sstream>
#include <string>
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

constexpr double kLargest = std::numeric_limits<double>::max();

// The minimum, then the maximum.
std::vector<double> corners(const TboundingBox& box) {
  std::vector<double> both = list(box.minCorner());
  for (const double x : list(box.maxCorner())) both.push_back(x);
  return both;
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

std::vector<double> mergedOneByOne(TboundingBox box, const TtupleVector& points, int rational) {
  std::vector<double> expected = corners(box);
  const std::size_t n = expected.size() / 2;
  for (int i = 0; i < points.points(); ++i) {
    const std::vector<double> p = list(points[i]);
    double factor = rational == 0 ? 1.0 : std::fabs(p[n]) > 1e-9 ? 1.0 / p[n] : 1.0;
    if (std::fabs(factor - 1.0) <= 1e-9) factor = 1.0;
    for (std::size_t k = 0; k < n; ++k) {
      expected[k] = std::fmin(expected[k], p[k] * factor);
      expected[n + k] = std::fmax(expected[n + k], p[k] * factor);
    }
  }
  return expected;
}

}  // namespace

// Of every dimension, size and number of points, as a sequence with any stride and as a grid.
TEST(TboundingBox, MergesWhatComparingPointsOneByOneGives) {
  std::mt19937 random(31);
  for (int round = 0; round < 4000; ++round) {
    const int size = 1 + static_cast<int>(random() % 6);
    const int n = static_cast<int>(random() % 6);
    const int count = static_cast<int>(random() % 30);
    const int rational = random() % 2 == 0 ? 0 : 4;
    const int stride = random() % 2 == 0 ? 1 : -3;
    const DoubleVec all = randomElements(random, 3 * size * count + 1);
    const int start = stride == 1 ? 1 : 3 * size * count;
    const DoubleVec elements = all.slice(start, static_cast<unsigned>(size * count), stride);
    const TtupleVector points(size, elements);
    TboundingBox box(n);
    const bool fits = size >= n + (rational == 0 ? 0 : 1);
    const auto expected = fits ? mergedOneByOne(box, points, rational) : corners(box);
    TboundingBox ofGrid = box;
    EXPECT_EQ(fits ? 1 : 0, box.merge(points, rational));
    EXPECT_EQ(fits ? 1 : 0, ofGrid.merge(TtupleMatrix(size, 1, count, elements), rational));
    ASSERT_EQ(expected, corners(box)) << round;
    ASSERT_EQ(expected, corners(ofGrid)) << round;
  }
}

TEST(TboundingBox, ConstructorsSetTheDimension) {
  const TtupleVector points(3, vectorOf({2.0, 8.0, 2.0, 9.0, 3.0, 3.0}));
  const double* noRows[] = {nullptr};
  const struct {
    TboundingBox box;
    std::vector<double> corners;
  } cases[] = {
      {{}, {}},
      {TboundingBox(2), {0, 0, 0, 0}},
      {TboundingBox(-1), {}},
      {{vectorOf({5.0, 6.0, 7.0}), vectorOf({1.0, 2.0})}, {5, 6, 1, 2}},
      {{points, 0}, {2, 3, 2, 9, 8, 3}},
      {{points, 1}, {1, 1, 3, 4}},
      {{TtupleMatrix(3, 2, 1, points.data()), 1}, {1, 1, 3, 4}},
      {{TtupleVector(), 1}, {}},
      {{TtupleMatrix(), 1}, {}},
      {{TtupleVector(0, 0, noRows), 1}, {}},
      {{TtupleVector(2, 0, 0.0), 1}, {kLargest, -kLargest}},
      {{TtupleVector(1, 0, 0.0), 0}, {kLargest, -kLargest}},
  };
  for (const auto& [box, expected] : cases) {
    EXPECT_EQ(expected, corners(box));
    EXPECT_EQ(static_cast<int>(expected.size() / 2), box.boxDim());
  }
}

TEST(TboundingBox, SettingResetsEvenWhereItFails) {
  TboundingBox box = block();
  EXPECT_EQ(0, box.set(TtupleVector(3, 2, 1.0), 1));
  EXPECT_THAT(corners(box),
              ElementsAre(kLargest, kLargest, kLargest, -kLargest, -kLargest, -kLargest));
  EXPECT_EQ(kInfinity, box.size2());
  EXPECT_EQ(1, box.set(TtupleMatrix(3, 1, 1, 2.0), 0));
  EXPECT_THAT(corners(box), testing::Each(2.0));
}

TEST(TboundingBox, CopiesAreIndependentAndAssignmentKeepsTheDimension) {
  DoubleVec low(2, 1.0);
  TboundingBox box(low, low), copy = box, other(2), solid(3);
  low = 5.0;
  other = box;
  solid = box;
  box.set(TtupleVector(2, 1, 7.0), 0);
  for (const TboundingBox& same : {copy, other}) EXPECT_THAT(corners(same), testing::Each(1.0));
  EXPECT_EQ(3, solid.boxDim());
  EXPECT_THAT(corners(solid), testing::Each(0.0));
}

TEST(TboundingBox, MeasuresAndCuts) {
  TboundingBox box = block(), part(3);
  EXPECT_THAT(list(box.center()), ElementsAre(0.5, 11, 21.5));
  EXPECT_EQ(3.0, box.maxSize());
  EXPECT_EQ(14.0, box.size2());
  EXPECT_EQ(std::sqrt(14.0), box.size());
  const DoubleVec a = vectorOf({-1.0, 0.5, 1.0}), b = vectorOf({2.0, 1.0, 0.0});
  EXPECT_EQ(1, box.cut(a, b, part));
  EXPECT_THAT(corners(part), ElementsAre(-1, 11, 23, 2, 12, 20));
  TboundingBox flat(2);
  EXPECT_EQ(0, box.cut(a, b, flat));
  EXPECT_EQ(0, box.cut(DoubleVec(2, 0.0), b, part));
  EXPECT_EQ(0, box.cut(a, DoubleVec(4, 0.0), part));
  EXPECT_THAT(corners(part), ElementsAre(-1, 11, 23, 2, 12, 20));
  EXPECT_EQ(1, box.cut(a, b, box));
  EXPECT_EQ(corners(part), corners(box));
  kilntest::RecordedMathErrors errors;
  EXPECT_EQ(0.0, TboundingBox().maxSize());
  EXPECT_THAT(errors.takeTexts(), ElementsAre("[ZEROVEC: DoubleVec]: maxIndex: vector is empty"));
}

TEST(TboundingBox, PointsMayLieAMillionthOutside) {
  const struct {
    std::vector<double> point;
    int isInside;
  } cases[] = {
      {{0, 10, 20}, 1},          {{1, 12, 23}, 1},     {{0.0 - 1e-6, 11, 21}, 1},
      {{0, 12.0 + 1e-6, 21}, 1}, {{-2e-6, 11, 21}, 0}, {{0, 11, 23 + 2e-6}, 0},
      {{kNaN, 11, 21}, 0},       {{0, 11}, 0},         {{0, 11, 21, 0}, 0},
  };
  for (const auto& [point, isInside] : cases) {
    const DoubleVec p(point.data(), static_cast<unsigned>(point.size()));
    EXPECT_EQ(isInside, block().isInside(p)) << p;
    EXPECT_EQ(isInside, block().intersect(p, DoubleVec(p.length(), 0.0), 0.0)) << p;
  }
  EXPECT_EQ(1, TboundingBox().isInside(DoubleVec()));
  EXPECT_EQ(0, TboundingBox().isInside(DoubleVec(1, 0.0)));
}

// Rays along each axis, from in front of either face; those at the tolerance begin 1e-6 behind it
// in parameter, and 1e-3 outside.
TEST(TboundingBox, RaysHitFacesAheadWithTheirAsymmetricTolerance) {
  const TboundingBox box(DoubleVec(3, -1.0), DoubleVec(3, 1.0));
  for (int axis = 0; axis < 3; ++axis) {
    for (const double side : {-1.0, 1.0}) {
      DoubleVec origin(3, 0.5), direction(3, 0.0);
      origin(axis) = 3.0 * side;
      const auto hits = [&](double speed, double maxParam) {
        direction(axis) = speed * side;
        return box.intersect(origin, direction, maxParam);
      };
      EXPECT_EQ(1, hits(-1.0, -1.0));
      EXPECT_EQ(0, hits(1.0, -1.0));
      EXPECT_EQ(0, hits(-1.0, 2.0));
      EXPECT_EQ(1, hits(-1.0, 2.5));
      EXPECT_EQ(0, hits(-1e-6, -1.0));
      EXPECT_EQ(1, hits(-1.1e-6, -1.0));
      const int other = (axis + 1) % 3;
      for (const auto& [offset, expected] : {std::pair(1.0000009, 1), std::pair(-1.0000009, 1),
                                             std::pair(1.000002, 0), std::pair(-1.000002, 0)}) {
        origin(other) = offset;
        EXPECT_EQ(expected, hits(-1.0, -1.0)) << offset;
      }
      origin(other) = 0.5;
      // t of exactly -1e-6 at the nearer face: ahead, but for the maximum of y and z.
      const double away = 2e6;
      EXPECT_EQ(side > 0 && axis > 0 ? 0 : 1, hits(away, -1.0)) << axis << " " << side;
      EXPECT_EQ(0, hits(away / 2, -1.0));
    }
  }
  EXPECT_EQ(0, box.intersect(DoubleVec(2, 5.0), DoubleVec(3, -1.0), -1.0));
  EXPECT_EQ(0, box.intersect(DoubleVec(3, 5.0), DoubleVec(2, -1.0), -1.0));
  EXPECT_EQ(0, TboundingBox(2).intersect(DoubleVec(2, 1.0), DoubleVec(2, -1.0), -1.0));
}

TEST(TboundingBox, PrintsAndReadsWhatItWroteWhole) {
  std::ostringstream text, raw;
  TboundingBox(vectorOf({-1.5, 2.0}), vectorOf({0.25, 3.0})).printOn(text);
  EXPECT_EQ("(-1.5, 2) to (0.25, 3)", text.str());
  const TboundingBox written(vectorOf({-1.5, kNaN}), vectorOf({kInfinity, -0.0}));
  written.printRaw(raw);
  const std::string bytes = raw.str();
  EXPECT_EQ(std::string("\2\0\0\0\0\0\0\0\0\0\xF8\xBF", 12), bytes.substr(0, 12));
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    std::istringstream stream(bytes.substr(0, length));
    TboundingBox box = block();
    EXPECT_EQ(length == bytes.size() ? 1 : 0, box.readRaw(stream)) << length;
    std::ostringstream again;
    box.printRaw(again);
    EXPECT_EQ(length == bytes.size(), bytes == again.str()) << length;
    EXPECT_EQ(length == bytes.size() ? 2 : 3, box.boxDim());
  }
  for (const char* absurd : {"\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\x7F"}) {
    std::istringstream stream(absurd + bytes);
    TboundingBox box = block();
    EXPECT_EQ(0, box.readRaw(stream));
    EXPECT_EQ(corners(block()), corners(box));
  }
}
