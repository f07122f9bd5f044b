#include <algorithm>
#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <kilnbase/auto/containers/TtupleMatrix.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using kilntest::counting;
using kilntest::list;
using kilntest::vectorOf;
using testing::Each;
using testing::ElementsAre;

namespace {

using Numbers = std::vector<double>;

// The points (0, 1), (2, 3), ...
TtupleVector pairs(unsigned points) {
  return TtupleVector(2, counting<double>(2 * points));
}

// Three rows of two such points, column by column.
TtupleMatrix grid() {
  return TtupleMatrix(2, 3, 2, counting<double>(12));
}

template <class Tuples>
void expectCopiesToShareAndAssignmentToCopy(Tuples tuples, const Tuples& ofOtherShape) {
  Tuples shared = tuples, assigned, deep = tuples, referenced;
  assigned = tuples;
  deep.deepenShallowCopy();
  referenced.reference(tuples);
  const Tuples copy = tuples.copy();
  tuples.component(1) = 9.0;
  for (const Tuples& view : {shared, referenced}) EXPECT_THAT(list(view.component(1)), Each(9.0));
  for (const Tuples& own : {assigned, deep, copy}) EXPECT_EQ(1.0, own.data()(1));
  shared = copy;  // of one shape: written through
  EXPECT_EQ(1.0, tuples.data()(1));
  tuples = ofOtherShape;
  EXPECT_EQ(1.0, shared.data()(1));
  const Tuples moved = std::move(tuples);
  EXPECT_EQ(0U, tuples.data().length());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(list(ofOtherShape.data()), list(moved.data()));
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
  }
}

TEST(TtupleVector, IsARangeOfViewsOfItsPoints) {
  TtupleVector curve(2, {0, 1, 2, 3, 4});
  for (DoubleVec point : curve) point(1) *= 10.0;
  EXPECT_THAT(curve.data(), ElementsAre(0, 10, 2, 30, 4));
  auto at = curve.end();
  at = pairs(3).begin() + 2;  // rebinds, and keeps the points
  EXPECT_THAT(*at, ElementsAre(4, 5));
}

TEST(TtupleVector, ConstructorsRaiseSizesBelowOneButForRows) {
  const double values[] = {1, 2, 3, 4, 5, 6};
  const double* rows[] = {values, values + 2, values + 1};
  const std::tuple<TtupleVector, int, Numbers> cases[] = {
      {{0, 5, 1.0}, 1, {}},
      {{-1, counting<double>(2)}, 1, {0, 1}},
      {{2, 2, values}, 2, {1, 2, 3, 4}},
      {{2, 3, rows}, 2, {2, 4, 3, 0, 0, 0}},
      {{-1, 3, rows}, -1, {}},
  };
  for (const auto& [v, size, elements] : cases) {
    EXPECT_EQ(size, v.size());
    EXPECT_EQ(elements, list(v.data()));
    EXPECT_EQ(size < 1 ? 0 : static_cast<int>(elements.size()) / size, v.points());
  }
}

TEST(TtupleVector, RangesIncludeTheirEnds) {
  const TtupleVector v(3, counting<double>(13));  // four points, and an element too many
  const std::tuple<TtupleVector, int, Numbers> cases[] = {
      {v.rPoints(1, 2), 3, {3, 4, 5, 6, 7, 8}},
      {v.lPoints(3, -9), 3, {}},
      {v.rPoints(vectorOf({3, 0, 3})), 3, {9, 10, 11, 0, 1, 2, 9, 10, 11}},
      {v.components(1, 2), 2, {1, 2, 4, 5, 7, 8, 10, 11}},
      {v.components(vectorOf({2, 0, 2})), 3, {2, 0, 2, 5, 3, 5, 8, 6, 8, 11, 9, 11}},
      {v.components(2, 1), 0, {}},
  };
  for (const auto& [chosen, size, elements] : cases) {
    EXPECT_EQ(size, chosen.size());
    EXPECT_EQ(elements, list(chosen.data()));
  }
  EXPECT_THAT(list(TtupleVector(2, vectorOf({3.0, 4.0, 5.0, 12.0})).vecLen()), ElementsAre(5, 13));
}

TEST(TtupleVector, SettingPointsCopiesAlsoWithinOneSequence) {
  TtupleVector v = pairs(4);
  EXPECT_EQ(1, v.setPoints(1, 3, v.lPoints(0, 2)));
  EXPECT_THAT(list(v.data()), ElementsAre(0, 1, 0, 1, 2, 3, 4, 5));
  EXPECT_EQ(1, v.setPoints(vectorOf({3, 0}), v.lPoints(2, 3)));
  const Numbers set = {4, 5, 0, 1, 2, 3, 2, 3};
  EXPECT_EQ(0, v.setPoints(0, 1, pairs(1)));
  EXPECT_EQ(0, v.setPoints(0, 1, TtupleVector(3, 2, 0.0)));
  EXPECT_EQ(0, v.setPoints(vectorOf({0}), TtupleVector(1, 1, 0.0)));
  EXPECT_EQ(set, list(v.data()));
}

TEST(TtupleMatrix, RowsColumnsAndSubGridsAreNew) {
  TtupleMatrix m = grid();
  const std::pair<Numbers, Numbers> cases[] = {
      {list(m(1, 1)), {8, 9}},
      {list(m.rowVector(2).data()), {4, 5, 10, 11}},
      {list(m.rows(vectorOf({2, 2, 0})).data()), {4, 5, 4, 5, 0, 1, 10, 11, 10, 11, 6, 7}},
      {list(m.cols(vectorOf({1})).data()), {6, 7, 8, 9, 10, 11}},
  };
  for (const auto& [chosen, elements] : cases) EXPECT_EQ(elements, chosen);
  m.columnVector(0)[0] = 50.0;
  EXPECT_EQ(0.0, m(0, 0)(0));
  m.point(2, 1)(0) = 60.0;
  EXPECT_EQ(61.0, m.vecLen()(2, 1));
  EXPECT_EQ(0, m.setComponent(2, m.component(1)));
  EXPECT_EQ(0, m.setComponent(0, DoubleGenMat(2, 3, 0.0)));
  EXPECT_EQ(1, m.setComponent(0, m.component(1)));
  EXPECT_THAT(list(m.data()), ElementsAre(1, 1, 3, 3, 5, 5, 7, 7, 9, 9, 11, 11));
}

TEST(Ttuples, CopiesShareAndAssignmentCopies) {
  expectCopiesToShareAndAssignmentToCopy(pairs(4), TtupleVector(1, 8, 5.0));
  expectCopiesToShareAndAssignmentToCopy(grid(), TtupleMatrix(2, 2, 3, 5.0));
  TtupleVector v = pairs(1), own = v;
  own.resize(2);
  own[0] = 5.0;
  EXPECT_THAT(list(own.data()), ElementsAre(5, 5, 0, 0));
  EXPECT_EQ(0.0, v.data()(0));
}

TEST(Ttuples, SizesThatMakeNoSenseGiveFewerPoints) {
  kilntest::RecordedMathErrors errors;
  const DoubleVec few(7, 1.0);
  const std::tuple<TtupleMatrix, int, int, int> cases[] = {
      {{2, -1, 3, 0.0}, 2, 0, 3},
      {{2, 3, 2, few}, 2, 3, 1},
      {{65536, 65536, INT_MAX, 0.0}, 65536, 65536, 0},
  };
  EXPECT_THAT(errors.takeTexts(), testing::SizeIs(2));  // too few elements, and too many
  for (const auto& [m, size, rows, cols] : cases) {
    EXPECT_EQ(size, m.size());
    EXPECT_EQ(rows, m.rows());
    EXPECT_EQ(cols, m.cols());
  }
  TtupleVector v = pairs(1);
  v.resize(INT_MAX);
  EXPECT_EQ(1, v.points());
  EXPECT_EQ(vxKilnBase::kOutOfMemoryError, errors.takeAll().front().number);
}

TEST(TtuplesDeathTest, WrongPointsAreReportedAndWrongComponentsAreEmpty) {
  const auto text = [](const std::string& what, const std::string& where) {
    return "^\\*\\*\\*\\* Bounds checking \\( bad " + what + " \\) in FILE auto/containers/Ttuple" +
           where + "\n";
  };
  TtupleVector v = pairs(4);
  EXPECT_DEATH(v[4], text("index, 4", "Vector LINE 36"));
  EXPECT_DEATH(v.rPoints(-1, 2), text("index, -1", "Vector LINE 36"));
  EXPECT_DEATH(v.setPoints(vectorOf({0, 5}), pairs(2)), text("index, 5", "Vector LINE 36"));
  EXPECT_DEATH(grid()(3, 9), text("row, 3", "Matrix LINE 37"));
  EXPECT_DEATH(grid()(2, 2), text("column, 2", "Matrix LINE 41"));
  EXPECT_DEATH(grid().cols(vectorOf({0, -1})), text("column, -1", "Matrix LINE 41"));
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0U, v.component(2).length()), "correctTuple");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0, v.components(0, 2).points()), "inside");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0, v.components(vectorOf({0, -1})).points()), "correctTuple");
}

TEST(Ttuples, MovingAlgorithmsLeaveViewsAlone) {
  const TtupleVector three(2, 3, 3.0), one(2, 3, 1.0);
  std::vector tuples = {three, one};
  std::ranges::sort(tuples, {}, [](const auto& t) { return t.data()(0); });
  std::swap(tuples[0], tuples[1]);
  EXPECT_EQ(1.0, one.data()(0));
  tuples[0].component(0) = 4.0;
  EXPECT_EQ(4.0, three.data()(0));
}
