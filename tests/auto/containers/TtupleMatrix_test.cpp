#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <vector>

#include <kilnbase/auto/containers/TtupleMatrix.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using kilntest::counting;
using kilntest::list;
using kilntest::vectorOf;
using testing::ElementsAre;

namespace {

// Three rows of two points; point (r, c) is (6c + 2r, 6c + 2r + 1).
TtupleMatrix grid() {
  return TtupleMatrix(2, 3, 2, counting<double>(12));
}

}  // namespace

TEST(TtupleMatrix, StandsColumnByColumn) {
  TtupleMatrix m(2, 3, 4, 0.0);
  m(1, 2) = vectorOf({5.0, 6.0});
  EXPECT_EQ(5.0, m.data()(14));
  EXPECT_EQ(6.0, m.component(1)(1, 2));
  m.component(0)(2, 3) = 7.0;
  EXPECT_THAT(list(m.point(2, 3)), ElementsAre(7, 0));
  EXPECT_EQ(21U, m.data().countZero(0.0));
}

TEST(TtupleMatrix, RowsColumnsAndSubGridsAreNew) {
  const TtupleMatrix m = grid();
  const struct {
    std::vector<double> chosen;
    std::vector<double> elements;
  } cases[] = {
      {list(m.row(1)), {2, 3, 8, 9}},
      {list(m.column(1)), {6, 7, 8, 9, 10, 11}},
      {list(m.rowVector(2).data()), {4, 5, 10, 11}},
      {list(m.columnVector(0).data()), {0, 1, 2, 3, 4, 5}},
      {list(m.rows(vectorOf({2, 2, 0})).data()), {4, 5, 4, 5, 0, 1, 10, 11, 10, 11, 6, 7}},
      {list(m.cols(vectorOf({1})).data()), {6, 7, 8, 9, 10, 11}},
      {list(m.component(1)), {1, 3, 5, 7, 9, 11}},
  };
  for (const auto& [chosen, elements] : cases) EXPECT_EQ(elements, chosen);
  for (const TtupleVector& points : {m.rowVector(0), m.columnVector(0)}) {
    EXPECT_EQ(2, points.size());
    points[0] = 50.0;
  }
  const TtupleMatrix sub = m.rows(vectorOf({1, 2}));
  EXPECT_THAT((std::vector{sub.size(), sub.rows(), sub.cols()}), ElementsAre(2, 2, 2));
  EXPECT_EQ(0.0, m(0, 0)(0));
  EXPECT_EQ(3U, m.vecLen().rows());
  EXPECT_EQ(m(2, 1).vecLen(), m.vecLen()(2, 1));
}

TEST(TtupleMatrix, SetsComponentsOfItsSizeOnly) {
  TtupleMatrix m = grid();
  EXPECT_EQ(1, m.setComponent(0, m.component(1)));
  EXPECT_THAT(list(m.data()), ElementsAre(1, 1, 3, 3, 5, 5, 7, 7, 9, 9, 11, 11));
  for (const int k : {-1, 2}) EXPECT_EQ(0, m.setComponent(k, DoubleGenMat(3, 2, 0.0)));
  EXPECT_EQ(0, m.setComponent(0, DoubleGenMat(2, 3, 0.0)));
  EXPECT_EQ(0U, m.data().countZero(0.0));
}

TEST(TtupleMatrix, CopiesShareAndAssignmentCopies) {
  TtupleMatrix m = grid();
  TtupleMatrix shared = m, assigned, deep = m, referenced;
  assigned = m;
  deep.deepenShallowCopy();
  referenced.reference(m);
  const TtupleMatrix copy = m.copy();
  m(2, 1) = 9.0;
  for (const TtupleMatrix& view : {shared, referenced}) EXPECT_EQ(9.0, view(2, 1)(0));
  for (const TtupleMatrix& own : {assigned, deep, copy}) EXPECT_EQ(10.0, own(2, 1)(0));
  shared = copy;  // of one size: written through
  EXPECT_EQ(10.0, m(2, 1)(0));
  m = TtupleMatrix(2, 2, 3, 1.0);
  EXPECT_EQ(2, m.rows());
  EXPECT_EQ(10.0, shared(2, 1)(0));
  swap(m, shared);
  EXPECT_EQ(3, m.rows());
  EXPECT_EQ(1.0, shared(1, 2)(0));
}

TEST(TtupleMatrix, SizesThatMakeNoSenseGiveFewerPoints) {
  kilntest::RecordedMathErrors errors;
  const DoubleVec few(7, 1.0);
  const std::tuple<TtupleMatrix, int, int, int> cases[] = {
      {{}, 0, 0, 0},
      {{0, 2, 2, 0.0}, 1, 2, 2},
      {{2, -1, 3, 0.0}, 2, 0, 3},
      {{2, 3, -1, 0.0}, 2, 3, 0},
      {{2, 1, 3, few}, 2, 1, 3},
      {{2, 3, 2, few}, 2, 3, 1},
      {{65536, 65536, INT_MAX, 0.0}, 65536, 65536, 0},
  };
  EXPECT_THAT(errors.takeTexts().front(),
              "[VNMATCH: DoubleVec]: Vector lengths do not match (7 vs 12)");
  for (const auto& [m, size, rows, cols] : cases) {
    EXPECT_EQ(size, m.size());
    EXPECT_EQ(rows, m.rows());
    EXPECT_EQ(cols, m.cols());
    EXPECT_EQ(static_cast<unsigned>(rows * cols), m.vecLen().length());
  }
}

TEST(TtupleMatrixDeathTest, WrongRowsAndColumnsAreReportedRowsFirst) {
  const auto text = [](const std::string& failure) {
    return "^\\*\\*\\*\\* Bounds checking \\( bad " + failure + "\n";
  };
  const std::string inRow = " \\) in FILE auto/containers/TtupleMatrix LINE 37";
  const std::string inColumn = " \\) in FILE auto/containers/TtupleMatrix LINE 41";
  const TtupleMatrix m = grid();
  EXPECT_DEATH(m(3, 9), text("row, 3" + inRow));
  EXPECT_DEATH(m(-1, 0), text("row, -1" + inRow));
  EXPECT_DEATH(m(2, 2), text("column, 2" + inColumn));
  EXPECT_DEATH(m.row(3), text("row, 3" + inRow));
  EXPECT_DEATH(m.columnVector(-1), text("column, -1" + inColumn));
  EXPECT_DEATH(m.rows(vectorOf({0, 3})), text("row, 3" + inRow));
  EXPECT_DEATH(m.cols(vectorOf({2})), text("column, 2" + inColumn));
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0U, m.component(2).length()), "correctTuple");
}
