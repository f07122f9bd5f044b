#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

#include <kilnbase/auto/containers/TtupleVector.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using kilntest::counting;
using kilntest::list;
using kilntest::vectorOf;
using testing::Each;
using testing::ElementsAre;

namespace {

// The points (0, 1), (2, 3), ...
TtupleVector pairs(unsigned points) {
  return TtupleVector(2, counting<double>(2 * points));
}

}  // namespace

TEST(TtupleVector, PointsAndComponentsAreViewsOfTheElements) {
  for (const int stride : {1, 3, -2}) {
    DoubleVec all(40, 99.0);
    DoubleVec data = all.slice(20, 6, stride);
    TtupleVector v(2, data);
    for (int i = 0; i < 3; ++i) v[i] = vectorOf({10.0 * i, 10.0 * i + 1});
    EXPECT_THAT(list(data), ElementsAre(0, 1, 10, 11, 20, 21));
    EXPECT_THAT(list(v.component(1)), ElementsAre(1, 11, 21));
    v.component(0) = 7.0;
    v.point(2)(1) = 8.0;
    EXPECT_THAT(list(v.lPoints(1, 2).data()), ElementsAre(7, 11, 7, 8));
    v.lPoints(0, 0) = TtupleVector(2, 1, 5.0);
    EXPECT_THAT(list(data), ElementsAre(5, 5, 7, 11, 7, 8));
    EXPECT_EQ(34U, all.countValue(99.0, 0.0));
  }
}

TEST(TtupleVector, ConstructorsRaiseSizesBelowOneButForRows) {
  const double values[] = {1, 2, 3, 4, 5, 6};
  const double* rows[] = {values, values + 2, values + 1};
  struct {
    TtupleVector v;
    int size;
    std::vector<double> elements;
  } const cases[] = {
      {{}, 0, {}},
      {{2, 2, 0}, 2, {0, 0, 0, 0}},
      {{0, 5, 1.0}, 1, {}},
      {{-3, -2, values}, 1, {}},
      {{2, 2, values}, 2, {1, 2, 3, 4}},
      {{-1, counting<double>(2)}, 1, {0, 1}},
      {{2, 3, rows}, 2, {2, 4, 3, 0, 0, 0}},
      {{0, 3, rows}, 0, {}},
      {{-1, 3, rows}, -1, {}},
  };
  for (const auto& [v, size, elements] : cases) {
    EXPECT_EQ(size, v.size());
    EXPECT_EQ(elements, list(v.data()));
    EXPECT_EQ(size < 1 ? 0 : static_cast<int>(elements.size()) / size, v.points());
  }
  kilntest::RecordedMathErrors errors;
  EXPECT_EQ(0, TtupleVector(65536, 65536, 0.0).points());
  TtupleVector v = pairs(1);
  v.resize(INT_MAX);
  EXPECT_EQ(1, v.points());
  EXPECT_EQ(2U, errors.takeAll().size());
}

TEST(TtupleVector, CopiesShareAndAssignmentCopies) {
  TtupleVector v = pairs(2);
  TtupleVector shared = v, assigned, deep = v, referenced;
  assigned = v;
  deep.deepenShallowCopy();
  referenced.reference(v);
  const TtupleVector copy = v.copy();
  v[0] = 9.0;
  for (const TtupleVector& view : {shared, referenced}) EXPECT_THAT(list(view[0]), Each(9.0));
  for (const TtupleVector& own : {assigned, deep, copy})
    EXPECT_THAT(list(own[0]), ElementsAre(0, 1));
  shared.resize(3);
  EXPECT_THAT(list(shared.data()), ElementsAre(9, 9, 2, 3, 0, 0));
  shared[0] = 1.0;
  EXPECT_EQ(9.0, v[0](0));
  v = TtupleVector(1, 4, 5.0);  // as many elements, but other points
  EXPECT_EQ(4, v.points());
  swap(v, shared);
  EXPECT_EQ(2, v.size());
  EXPECT_EQ(5.0, shared[3](0));
}

TEST(TtupleVector, RangesIncludeTheirEnds) {
  const TtupleVector v(3, counting<double>(13));  // four points, and an element too many
  const struct {
    TtupleVector chosen;
    int size;
    std::vector<double> elements;
  } cases[] = {
      {v.rPoints(1, 2), 3, {3, 4, 5, 6, 7, 8}},
      {v.rPoints(2, 1), 3, {}},
      {v.lPoints(3, -9), 3, {}},
      {v.rPoints(vectorOf({3, 0, 3})), 3, {9, 10, 11, 0, 1, 2, 9, 10, 11}},
      {v.rPoints(IntVec()), 3, {}},
      {v.components(1, 2), 2, {1, 2, 4, 5, 7, 8, 10, 11}},
      {v.components(vectorOf({2, 0, 2})), 3, {2, 0, 2, 5, 3, 5, 8, 6, 8, 11, 9, 11}},
      {v.components(2, 1), 0, {}},
  };
  for (const auto& [chosen, size, elements] : cases) {
    EXPECT_EQ(size, chosen.size());
    EXPECT_EQ(elements, list(chosen.data()));
  }
  v.rPoints(0, 3)[0] = 50.0;
  EXPECT_EQ(0.0, v[0](0));
  EXPECT_THAT(list(TtupleVector(2, vectorOf({3.0, 4.0, 5.0, 12.0})).vecLen()), ElementsAre(5, 13));
}

TEST(TtupleVector, SettingPointsCopiesAlsoWithinOneSequence) {
  TtupleVector v = pairs(4);
  EXPECT_EQ(1, v.setPoints(1, 3, v.lPoints(0, 2)));
  EXPECT_THAT(list(v.data()), ElementsAre(0, 1, 0, 1, 2, 3, 4, 5));
  EXPECT_EQ(1, v.setPoints(vectorOf({3, 0}), v.lPoints(2, 3)));
  EXPECT_THAT(list(v.data()), ElementsAre(4, 5, 0, 1, 2, 3, 2, 3));
  const std::vector<double> before = list(v.data());
  EXPECT_EQ(0, v.setPoints(0, 1, pairs(1)));
  EXPECT_EQ(0, v.setPoints(vectorOf({0, 1}), pairs(1)));
  EXPECT_EQ(0, v.setPoints(0, 1, TtupleVector(3, 2, 0.0)));
  EXPECT_EQ(0, v.setPoints(vectorOf({0}), TtupleVector(1, 1, 0.0)));
  EXPECT_EQ(before, list(v.data()));
}

TEST(TtupleVectorDeathTest, WrongPointsAreReportedAndWrongComponentsAreEmpty) {
  const auto text = [](const char* index) {
    return std::string("^\\*\\*\\*\\* Bounds checking \\( bad index, ") + index +
           " \\) in FILE auto/containers/TtupleVector LINE 36\n";
  };
  TtupleVector v = pairs(4);
  EXPECT_DEATH(v[4], text("4"));
  EXPECT_DEATH(v(-1), text("-1"));
  EXPECT_DEATH(v.lPoints(0, 4), text("4"));
  EXPECT_DEATH(v.rPoints(-1, 2), text("-1"));
  EXPECT_DEATH(v.rPoints(vectorOf({0, 4})), text("4"));
  EXPECT_DEATH(v.setPoints(vectorOf({0, 5}), pairs(2)), text("5"));
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0U, v.component(2).length()), "correctTuple");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0, v.components(0, 2).points()), "inside");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0, v.components(vectorOf({0, -1})).points()), "correctTuple");
}
