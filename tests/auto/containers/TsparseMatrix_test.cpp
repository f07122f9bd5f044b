#include <algorithm>
#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include <kilnbase/auto/containers/TsparseMatrix.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using kilntest::kNaN;
using kilntest::list;
using kilntest::vectorOf;
using testing::ElementsAre;

namespace {

// Rows and values of a column as they were given; of equal rows the first one counts.
using Column = std::vector<std::pair<int, double>>;
using Model = std::vector<Column>;

constexpr int kRows = 6;

int append(TsparseMatrix& a, const Column& column, int grow) {
  IntVec rows(static_cast<unsigned>(column.size()));
  DoubleVec values(rows.length());
  for (int k = 0; const auto& [row, value] : column) {
    rows(k) = row;
    values(k++) = value;
  }
  return a.addCol(rows, values, grow);
}

Column storedIn(const TsparseMatrix& a, int c) {
  DoubleVec values;
  IntVec rows;
  EXPECT_EQ(1, a.storedCol(c, values, rows));
  Column column;
  for (int k = 0; k < static_cast<int>(rows.length()); ++k) column.emplace_back(rows(k), values(k));
  return column;
}

void expectColumn(const Column& model, const TsparseMatrix& a, int c) {
  const std::map<int, double> first(model.begin(), model.end());
  for (int r = -1; r <= kRows; ++r) {
    const bool isStored = r >= 0 && r < kRows && first.contains(r);
    EXPECT_EQ(isStored ? first.at(r) : 0.0, a(r, c)) << r << ", " << c;
    EXPECT_EQ(a(r, c), a.row(r)(c));
  }
  EXPECT_EQ(model, storedIn(a, c));
  for (int r = 0; r < kRows; ++r) EXPECT_EQ(a(r, c), a.col(c)(r));
}

// Products are exact: all elements are small integers.
void expectMatrix(const Model& model, const TsparseMatrix& a) {
  ASSERT_EQ(static_cast<int>(model.size()), a.cols());
  int elements = 0;
  for (int c = 0; c < a.cols(); ++c) {
    const Column& column = model[static_cast<std::size_t>(c)];
    expectColumn(column, a, c);
    EXPECT_EQ(elements, a.beginnings()(c));
    elements += static_cast<int>(column.size());
  }
  EXPECT_EQ(elements, a.numberOfElements());
  const DoubleGenMat dense = a.convert();
  for (int c = 0; c < a.cols(); ++c) EXPECT_EQ(a.col(c), dense.col(c));
  const DoubleVec v(dense.cols(), 1.0, 1.0), w(kRows, 2.0, 1.0);
  EXPECT_EQ(product(dense, v), product(a, v));
  EXPECT_EQ(product(w, dense), product(w, a));
  EXPECT_EQ(product(reverse(w), dense), product(reverse(w), a));
}

class RandomEdits {
 public:
  // Appends, removes or changes something in both.
  void edit() {
    const TsparseMatrix shared = a_;
    const Model before = model_;
    const bool isLong = model_.size() > 8;
    if (isLong || next(4) == 0) {
      select();
    } else if (next(4) == 0) {
      a_.removeZeros();
      for (Column& column : model_) std::erase_if(column, [](auto& e) { return e.second == 0.0; });
    } else if (next(8) == 0) {
      EXPECT_EQ(1, a_.add(a_, 1));
      model_.insert(model_.end(), before.begin(), before.end());
    } else {
      model_.push_back(randomColumn());
      EXPECT_EQ(1, append(a_, model_.back(), 1));
    }
    expectMatrix(model_, a_);
    expectMatrix(before, shared);
  }

 private:
  int next(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

  // Up to three runs of ascending rows, some outside the matrix.
  Column randomColumn() {
    Column column;
    for (int n = 1 + next(12), row = next(3) - 1; n > 0; --n) {
      column.emplace_back(row, next(5) - 2);
      row = next(8) != 0 ? row + 1 : next(kRows + 2) - 1;
    }
    return column;
  }

  // Keeps or removes some columns, named in any order and twice.
  void select() {
    std::vector<int> named;
    for (int c = 0; c < a_.cols(); ++c)
      named.insert(named.end(), static_cast<std::size_t>(next(3)), c);
    std::ranges::shuffle(named, random_);
    const bool keeps = next(2) != 0;
    const IntVec columns(named.data(), static_cast<unsigned>(named.size()));
    EXPECT_EQ(1, keeps ? a_.keepCols(columns) : a_.removeCols(columns));
    int c = 0;
    std::erase_if(model_,
                  [&](const Column&) { return (std::ranges::count(named, c++) != 0) != keeps; });
  }

  std::mt19937 random_{29};
  TsparseMatrix a_{DoubleGenMat(kRows, 0)};
  Model model_;
};

std::vector<int> sizes(const TsparseMatrix& a) {
  return {a.rows(),
          a.cols(),
          a.numberOfElements(),
          a.maxNumberOfRows(),
          a.maxNumberOfCols(),
          a.maxNumberOfElements()};
}

}  // namespace

TEST(TsparseMatrix, EditsFollowAModelAndLeaveCopiesAlone) {
  RandomEdits edits;
  for (int step = 0; step < 400 && !testing::Test::HasFailure(); ++step) edits.edit();
}

TEST(TsparseMatrix, AppendingGrowsToWhatIsNeededAndOnlyWhenAllowed) {
  TsparseMatrix a(3, 2);
  EXPECT_THAT(sizes(a), ElementsAre(0, 0, 0, 3, 2, 6));
  EXPECT_EQ(0, a.setElement(0, 0, 1.0));
  EXPECT_EQ(1, append(a, {{2, 5}, {0, 7}}, 0));
  EXPECT_EQ(0.0, a(0, 0));  // no row is in use yet
  a.rows() = 3;
  EXPECT_EQ(0, a.setElement(1, 0, 3));
  EXPECT_EQ(1, a.setElement(2, 0, 3));
  EXPECT_THAT(list(a.col(0)), ElementsAre(7, 0, 3));
  EXPECT_EQ(0, append(a, {}, 1));
  EXPECT_EQ(0, a.addCol(IntVec(2, 0), DoubleVec(1, 0.0), 1));
  EXPECT_EQ(1, append(a, {{0, 1}, {1, 1}}, 0));
  EXPECT_EQ(0, append(a, {{0, 1}}, 0));
  EXPECT_EQ(0, a.addCol(DoubleVec(3, 1.0), 0));
  EXPECT_EQ(0, a.add(a, 0));
  EXPECT_EQ(0, a.add(DoubleGenMat(3, 1, 1.0), 0));
  EXPECT_THAT(sizes(a), ElementsAre(3, 2, 4, 3, 2, 6));
  EXPECT_EQ(1, append(a, {{0, 1}, {1, 2}, {2, 3}}, 1));
  EXPECT_THAT(sizes(a), ElementsAre(3, 3, 7, 3, 3, 7));
  a.resizeMax(5, 1);
  a.resizeMax(1, 4, 2);
  EXPECT_THAT(sizes(a), ElementsAre(3, 3, 7, 5, 4, 7));
  a.resizeMax(0, 0, 9);
  EXPECT_EQ(9U, a.data().length());
  EXPECT_EQ(4U, a.counts().length());
  EXPECT_EQ(0, a.removeCol(3));
  EXPECT_EQ(0, a.removeCols(vectorOf({0, -1})));
  EXPECT_EQ(0, a.keepCols(vectorOf({0, 3})));
  EXPECT_EQ(1, a.removeCol(0));
  EXPECT_THAT(sizes(a), ElementsAre(3, 2, 5, 5, 4, 9));
}

TEST(TsparseMatrix, DenseColumnsLoseTheirZerosOnly) {
  DoubleGenMat dense(2, 3, 0.0);
  dense(1, 0) = kNaN;
  dense(0, 2) = 4.0;
  dense(1, 2) = -0.0;
  TsparseMatrix a = dense;
  EXPECT_THAT(sizes(a), ElementsAre(2, 3, 2, 2, 3, 2));
  EXPECT_THAT(list(a.counts()), ElementsAre(1, 0, 1));
  EXPECT_THAT(storedIn(a, 2), ElementsAre(std::pair(0, 4.0)));
  EXPECT_EQ(1, a.addCol(dense.row(0), 1));
  EXPECT_THAT(storedIn(a, 3), ElementsAre(std::pair(2, 4.0)));
  EXPECT_EQ(1, a.addCol(DoubleVec(2, 0.0), 1));
  EXPECT_THAT(sizes(a), ElementsAre(2, 5, 3, 2, 5, 3));
  EXPECT_EQ(1, a.set(dense, 4, 0));
  EXPECT_THAT(sizes(a), ElementsAre(2, 3, 2, 4, 3, 12));
}

TEST(TsparseMatrix, CopiesShareElementsUntilTheyAreDeepened) {
  TsparseMatrix a = DoubleGenMat(1, 1, 1.0);
  TsparseMatrix assigned, referenced, deep = a;
  assigned = a;
  referenced.reference(a);
  deep.deepenShallowCopy();
  a.data()(0) = 2.0;
  EXPECT_EQ(1, referenced.setElement(0, 0, referenced(0, 0) + 1.0));
  EXPECT_EQ(3.0, a(0, 0));
  EXPECT_EQ(1.0, assigned(0, 0));
  EXPECT_EQ(1.0, deep(0, 0));
}

TEST(TsparseMatrix, SurvivesSizesAndVectorsThatMakeNoSense) {
  EXPECT_THAT(sizes(TsparseMatrix(-1, -2, -3)), ElementsAre(0, 0, 0, 0, 0, 0));
  EXPECT_THAT(sizes(TsparseMatrix(65536, 65536)), ElementsAre(0, 0, 0, 65536, 65536, 0));
  TsparseMatrix a = DoubleGenMat(2, 2, 1.0);
  for (const int cols : {-1, INT_MAX}) {
    a.cols() = cols;
    EXPECT_EQ(0, a.addCol(DoubleVec(2, 1.0), 1)) << cols;
    EXPECT_EQ(0.0, a(0, 2)) << cols;
    EXPECT_EQ(1, TsparseMatrix().add(a, 1)) << cols;
  }
  a.cols() = 2;
  a.rows() = -1;
  EXPECT_EQ(0U, a.convert().length());
  a.rows() = 2;
  for (const auto& [beginning, count] : {std::pair(0, 5), std::pair(-1, 1), std::pair(5, 0),
                                         std::pair(2, INT_MAX), std::pair(0, -1)}) {
    a.beginnings()(1) = beginning;
    a.counts()(1) = count;
    EXPECT_EQ(0.0, a(0, 1)) << beginning;
    EXPECT_THAT(list(product(DoubleVec(2, 1.0), a)), ElementsAre(2, 0)) << beginning;
  }
  a.beginnings()(1) = 0;
  a.counts()(1) = 4;
  EXPECT_EQ(0, a.keepCols(vectorOf({0, 1})));  // both at once have more elements than there is room
  EXPECT_THAT(sizes(a), ElementsAre(2, 2, 4, 2, 2, 4));
}

TEST(TsparseMatrix, ProductsTellMismatchesAndGoOnWithWhatBothHave) {
  kilntest::RecordedMathErrors errors;
  const TsparseMatrix a = DoubleGenMat(vectorOf({1.0, 2.0, 3.0, 4.0}), 2, 2);
  EXPECT_THAT(list(product(a, DoubleVec(1, 1.0))), ElementsAre(1, 2));
  EXPECT_THAT(list(product(a, DoubleVec(3, 1.0))), ElementsAre(4, 6));
  EXPECT_THAT(list(product(DoubleVec(1, 1.0), a)), ElementsAre(1, 3));
  EXPECT_THAT(list(product(DoubleVec(3, 1.0), a)), ElementsAre(3, 7));
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre("inner product not possible between TsparseMatrix (2x2) and vector (1)",
                          "inner product not possible between TsparseMatrix (2x2) and vector (3)",
                          "inner product not possible vector(1) and TsparseMatrix (2x2)",
                          "inner product not possible vector(3) and TsparseMatrix (2x2)"));
}
