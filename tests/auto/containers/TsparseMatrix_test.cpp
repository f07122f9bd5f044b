#include <algorithm>
#include <climits>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
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
using testing::HasSubstr;

namespace {

constexpr int kRows = 6;

// Rows and values as they were given; of equal rows the first one counts.
struct Column {
  std::vector<int> rows;
  std::vector<double> values;
};

int append(TsparseMatrix& a, const Column& column, int grow) {
  const auto n = static_cast<unsigned>(column.rows.size());
  return a.addCol(IntVec(column.rows.data(), n), DoubleVec(column.values.data(), n), grow);
}

// Products are exact: all elements are small integers.
void expectMatrix(const std::vector<Column>& model, const TsparseMatrix& a) {
  ASSERT_EQ(static_cast<int>(model.size()), a.cols());
  DoubleGenMat dense(kRows, static_cast<unsigned>(a.cols()), 0.0);
  int elements = 0;
  for (int c = 0; const auto& [rows, values] : model) {
    for (std::size_t k = rows.size(); k-- > 0;) {
      if (rows[k] >= 0 && rows[k] < kRows) dense(rows[k], c) = values[k];
    }
    for (const int r : {-1, kRows}) EXPECT_EQ(0.0, a(r, c));
    DoubleVec storedValues;
    IntVec storedRows;
    EXPECT_EQ(1, a.storedCol(c, storedValues, storedRows));
    EXPECT_EQ(rows, list(storedRows));
    EXPECT_EQ(values, list(storedValues));
    EXPECT_EQ(dense.col(c), a.col(c));
    EXPECT_EQ(elements, a.beginnings()(c));
    elements += a.counts()(c++);
  }
  EXPECT_EQ(elements, a.numberOfElements());
  EXPECT_EQ(dense, a.convert());
  for (int r = 0; r < kRows; ++r) EXPECT_EQ(dense.row(r), a.row(r));
  const DoubleVec v(dense.cols(), 1.0, 1.0), w(kRows, 2.0, 1.0);
  EXPECT_EQ(product(dense, v), product(a, v));
  EXPECT_EQ(product(reverse(w), dense), product(reverse(w), a));
}

class RandomEdits {
 public:
  // Edits the matrix and its model; a copy that shares the storage stays as it was.
  void edit() {
    const TsparseMatrix shared = a_;
    const std::vector<Column> before = model_;
    const int kind = before.size() > 8 ? 0 : next(8);
    if (kind < 2) {
      select();
    } else if (kind == 2) {
      a_.removeZeros();
      for (auto& [rows, values] : model_) {
        std::size_t k = 0;
        std::erase_if(rows, [&](int) { return values[k++] == 0.0; });
        std::erase(values, 0.0);
      }
    } else if (kind == 3) {
      EXPECT_EQ(1, a_.add(a_, 1));
      model_.insert(model_.end(), before.begin(), before.end());
    } else {
      addRandomColumn();
    }
    expectMatrix(model_, a_);
    expectMatrix(before, shared);
  }

 private:
  int next(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

  // Of runs of ascending rows, some outside the matrix.
  void addRandomColumn() {
    Column& column = model_.emplace_back();
    for (int n = 1 + next(12), row = next(3) - 1; n > 0; --n) {
      column.rows.push_back(row);
      column.values.push_back(next(5) - 2);
      row = next(8) != 0 ? row + 1 : next(3) != 0 ? row : next(kRows + 2) - 1;
    }
    EXPECT_EQ(1, append(a_, column, 1));
  }

  // Keeps or removes columns that are named in any order, some twice.
  void select() {
    std::vector<int> named;
    for (int c = 0; c < a_.cols(); ++c) named.resize(named.size() + random_() % 3, c);
    std::ranges::shuffle(named, random_);
    const bool keeps = next(2) != 0;
    const IntVec columns(named.data(), static_cast<unsigned>(named.size()));
    EXPECT_EQ(1, keeps ? a_.keepCols(columns) : a_.removeCols(columns));
    int c = 0;
    std::erase_if(model_, [&](auto&) { return (std::ranges::count(named, c++) != 0) != keeps; });
  }

  std::mt19937 random_{29};
  TsparseMatrix a_{DoubleGenMat(kRows, 0)};
  std::vector<Column> model_;
};

// Rows, columns, elements, and the capacity for each.
std::string sizes(const TsparseMatrix& a) {
  std::ostringstream text;
  text << a.rows() << " " << a.cols() << " " << a.numberOfElements() << " of "
       << a.maxNumberOfRows() << " " << a.maxNumberOfCols() << " " << a.maxNumberOfElements();
  return text.str();
}

}  // namespace

TEST(TsparseMatrix, EditsFollowAModelAndLeaveCopiesAlone) {
  RandomEdits edits;
  for (int step = 0; step < 400 && !testing::Test::HasFailure(); ++step) edits.edit();
}

TEST(TsparseMatrix, AppendingGrowsToWhatIsNeededAndOnlyWhenAllowed) {
  TsparseMatrix a(3, 2);
  EXPECT_EQ("0 0 0 of 3 2 6", sizes(a));
  EXPECT_EQ(1, append(a, {{2, 0}, {5, 7}}, 0));
  EXPECT_EQ(0.0, a(0, 0));  // no row is in use yet
  a.rows() = 3;
  EXPECT_EQ(0, a.setElement(1, 0, 3));
  EXPECT_EQ(1, a.setElement(2, 0, 3));
  EXPECT_EQ(3.0, a(2, 0));
  EXPECT_EQ(0, append(a, {}, 1));
  EXPECT_EQ(0, a.addCol(IntVec(2, 0), DoubleVec(1, 0.0), 1));
  EXPECT_EQ(1, append(a, {{0, 1}, {1, 1}}, 0));
  EXPECT_EQ(0, append(a, {{0}, {1}}, 0));
  EXPECT_EQ(0, a.addCol(DoubleVec(3, 1.0), 0));
  EXPECT_EQ(0, a.add(a, 0));
  EXPECT_EQ(0, a.add(DoubleGenMat(3, 1, 1.0), 0));
  EXPECT_EQ(1, append(a, {{0, 1, 2}, {1, 2, 3}}, 1));
  EXPECT_EQ("3 3 7 of 3 3 7", sizes(a));
  a.resizeMax(5, 1);
  a.resizeMax(1, 4, 9);
  a.resizeMax(0, 0, 2);
  DoubleVec values;
  IntVec rows;
  for (const int c : {-1, 3}) {
    EXPECT_EQ(0, a.storedCol(c, values, rows));
    EXPECT_EQ(0, a.keepCols(vectorOf({0, c})));
  }
  EXPECT_EQ(1, a.removeCol(0));
  EXPECT_EQ("3 2 5 of 5 4 9", sizes(a));
}

TEST(TsparseMatrix, DenseColumnsLoseTheirZerosOnly) {
  DoubleGenMat dense(2, 3, 0.0);
  dense(1, 0) = kNaN;
  dense(0, 2) = 4.0;
  dense(1, 2) = -0.0;
  TsparseMatrix a = dense;
  EXPECT_EQ(1, a.addCol(dense.row(0), 1));
  EXPECT_THAT(list(a.indices()), ElementsAre(1, 0, 2));
  EXPECT_EQ("2 4 3 of 2 4 3", sizes(a));
  EXPECT_EQ(1, a.set(dense, 4, 0));
  EXPECT_EQ("2 3 2 of 4 3 12", sizes(a));
}

TEST(TsparseMatrix, CopiesShareElementsUntilTheyGrow) {
  TsparseMatrix a = DoubleGenMat(1, 1, 1.0), b = DoubleGenMat(1, 2, 2.0);
  TsparseMatrix assigned, view, grown = a;
  assigned = a;
  view.reference(a);
  std::swap(a, b);
  EXPECT_EQ("1 2 2 of 1 2 2", sizes(a));
  EXPECT_EQ(1, b.setElement(0, 0, 5.0));
  EXPECT_EQ(5.0, view(0, 0));
  EXPECT_EQ(1.0, assigned(0, 0));
  grown.resizeMax(1, 2);
  EXPECT_EQ(1, grown.setElement(0, 0, 7.0));
  EXPECT_EQ(5.0, view(0, 0));
  TsparseMatrix room(1, 2), copy = room;
  EXPECT_EQ(1, room.addCol(DoubleVec(1, 1.0), 0));
  EXPECT_EQ(1, copy.addCol(DoubleVec(1, 2.0), 0));
  EXPECT_EQ(1.0, room.data()(0));
}

TEST(TsparseMatrix, SurvivesSizesAndVectorsThatMakeNoSense) {
  EXPECT_EQ("0 0 0 of 65536 65537 0", sizes(TsparseMatrix(65536, 65537)));
  TsparseMatrix a = DoubleGenMat(2, 2, 1.0);
  for (const int cols : {-1, INT_MAX}) {
    a.cols() = cols;
    EXPECT_EQ(0, a.addCol(DoubleVec(2, 1.0), 1)) << cols;
    EXPECT_EQ(0.0, a(0, 2)) << cols;
  }
  a.cols() = 2;
  for (const auto& [beginning, count] : {std::pair(0, 5), {-1, 1}, {3, 2}, {2, INT_MAX}}) {
    a.beginnings()(1) = beginning;
    a.counts()(1) = count;
    EXPECT_EQ(0.0, a(0, 1)) << beginning;
    EXPECT_THAT(list(product(DoubleVec(2, 1.0), a)), ElementsAre(2, 0)) << beginning;
  }
  a.beginnings()(1) = 0;
  a.counts()(1) = 4;
  EXPECT_EQ(0, a.keepCols(vectorOf({0, 1})));  // six elements, and room for four
}

TEST(TsparseMatrix, ProductsTellMismatchesAndGoOnWithWhatBothHave) {
  kilntest::RecordedMathErrors errors;
  const TsparseMatrix a = DoubleGenMat(vectorOf({1.0, 2.0, 3.0, 4.0}), 2, 2);
  EXPECT_THAT(list(product(a, DoubleVec(1, 1.0))), ElementsAre(1, 2));
  EXPECT_THAT(list(product(DoubleVec(3, 1.0), a)), ElementsAre(3, 7));
  const std::string texts = testing::PrintToString(errors.takeTexts());
  EXPECT_THAT(texts, HasSubstr("possible between TsparseMatrix (2x2) and vector (1)"));
  EXPECT_THAT(texts, HasSubstr("possible vector(3) and TsparseMatrix (2x2)"));
}
