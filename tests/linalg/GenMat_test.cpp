#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntGenMat.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using namespace kilntest;
using testing::ElementsAre;
using namespace vxKilnBase;

namespace {

template <class T>
class GenMatFamily : public testing::Test {
 protected:
  const std::string name_ = GenMat<T>::className;
  GenMat<T> a_{counting<T>(6), 2, 3};  // 0 2 4 / 1 3 5
};
using Elements = testing::Types<double, int>;
TYPED_TEST_SUITE(GenMatFamily, Elements);

static_assert(sizeof(DoubleGenMat) == 32);
static_assert(!std::is_convertible_v<DoubleGenMat, IntGenMat>);

}  // namespace

TYPED_TEST(GenMatFamily, ViewsShareAssignmentCopiesResizeKeepsTheCorner) {
  auto& a = this->a_;
  EXPECT_THAT(list(a.row(1)), ElementsAre(1, 3, 5));
  EXPECT_THAT(list(a.diagonal(1)), ElementsAre(2, 5));
  EXPECT_EQ(0U, a.diagonal(7).length() + a.diagonal(-7).length());

  // A matrix over every second element of a vector.
  Vec<TypeParam> store = counting<TypeParam>(12);
  GenMat<TypeParam> spread(store.slice(0, 6, 2), 3, 2);
  EXPECT_THAT(list(spread.row(1)), ElementsAre(2, 8));
  EXPECT_THAT(list(spread.diagonal(-1)), ElementsAre(2, 10));
  EXPECT_THAT(list(spread.col(1)), ElementsAre(6, 8, 10));
  spread.bcset(2, 0, 50);
  EXPECT_EQ(50, store(4));

  GenMat<TypeParam> view(a), own = a.copy();
  view = GenMat<TypeParam>(counting<TypeParam>(6), 2, 3);
  own = TypeParam(9);
  EXPECT_THAT(list(a), ElementsAre(0, 1, 2, 3, 4, 5));
  own = a;
  own.resize(3, 3);  // the same number of columns
  EXPECT_THAT(list(own), ElementsAre(0, 1, 0, 2, 3, 0, 4, 5, 0));
  a.resize(2, 6);  // the same number of rows
  EXPECT_THAT(list(a.row(1)), ElementsAre(1, 3, 5, 0, 0, 0));
  a.resize(3, 4);  // the same number of elements
  EXPECT_THAT(list(a), ElementsAre(0, 1, 0, 2, 3, 0, 4, 5, 0, 0, 0, 0));
  own.reference(view);
  own.resize(3, 2);  // the view keeps its elements
  EXPECT_THAT(list(own), ElementsAre(0, 1, 0, 2, 3, 0));
  EXPECT_THAT(list(view), ElementsAre(0, 1, 2, 3, 4, 5));
  own.reshape(4, 5);
  EXPECT_EQ(5U, own.cols());
}

TYPED_TEST(GenMatFamily, ErrorsAndWhatIsDoneAfterThem) {
  using M = GenMat<TypeParam>;
  using V = Vec<TypeParam>;
  const std::string& name = this->name_;
  M& a = this->a_;
  const M square(3U, 3U, TypeParam(1)), ones(2U, 3U, TypeParam(1));
  const std::string noProduct = "inner product not possible ",
                    matrices = noProduct + name + " matrices (2,3) and (",
                    diagonal = " not in " + name + " matrix of size (3x3)",
                    range = "Matrix pick out of range: index ",
                    noElement = " not in matrix of size (2x3)";
  auto pick = a.matPick(vectorOf({0}), vectorOf({0}));
  expectErrors({
      {[&] { a.bcrow(2); }, kRowError, "Row (2) not in matrix with 2 rows"},
      {[&] { a.bccol(-1); }, kColumnError, "Column (-1) not in matrix with 3 columns"},
      {[&] { EXPECT_EQ(V(), square.bcdiagonal(3)); }, kDiagonalError, "Diagonal -3" + diagonal},
      {[&] { square.bcdiagonal(-3); }, kDiagonalError, "Diagonal 3" + diagonal},
      {[&] { a.bcset(-1, 1, 0); }, kElementError, "Element (-1x1)" + noElement},
      {[&] { a.bcval(2, 1); }, kElementError, "Element (2x1)" + noElement},
      {[&] { a.bcref(3, 0); }, kElementError, "Element (3x0)" + noElement},
      {[&] { M(counting<TypeParam>(5), 2, 2); }, kMatrixPointsError,
       "Wrong number of points (5) for 2x2 " + name},
      {[] { EXPECT_EQ(M(), M(70000, 70000)); }, kOutOfMemoryError,
       "[NOMEM: RWBlock]: Out of memory", 0x901A},
      {[&] { M(3, 2) = a; }, kMatrixSizesError, "Matrix sizes don't match (2x3) vs (3x2)"},
      {[&] { pick = M(2U, 1U, TypeParam(0)); }, kMatrixSizesError,
       "Matrix sizes don't match (2x1) vs (1x1)"},
      {[&] { EXPECT_EQ(ones + ones, product(ones, ones)); }, kMatrixProductError,
       matrices + "2x3)"},
      {[&] { EXPECT_EQ(M(2U, 2U, 2), transProduct(ones, M(2U, 2U, 1))); }, kMatrixProductError,
       matrices + "2x2)"},
      {[&] { EXPECT_EQ(ones + ones, transposeProduct(M(3U, 2U, 1), ones)); }, kMatrixProductError,
       matrices + "2x3)"},
      {[&] { EXPECT_EQ(V(2U, 2), product(ones, V(2U, 1))); }, kMatrixVectorProductError,
       noProduct + "between " + name + " (2x3) and vector (2)"},
      {[&] { EXPECT_EQ(V(3U, 2), product(V(3U, 1), ones)); }, kVectorMatrixProductError,
       noProduct + "vector(3) and " + name + " (2x3)"},
      {[&] { return a.matPick(vectorOf({2}), vectorOf({2})); }, kMatrixPickError,
       range + "2 not in 0->1"},
  });
  RecordedMathErrors errors;
  a.bcrow(1), a.bccol(2), a.bcval(1, 2), square.bcdiagonal(2), square.bcdiagonal(-2);
  EXPECT_THAT(errors.takeTexts(), ElementsAre());
  a = square;
  EXPECT_EQ(ones, a);
  EXPECT_THAT(errors.takeTexts(), ElementsAre("Matrix sizes don't match (3x3) vs (2x3)",
                                              std::string("[VNMATCH: ") + VecNames<TypeParam>::vec +
                                                  "]: Vector lengths do not match (6 vs 9)"));
  const IntVec indices = vectorOf({-1, 0, 3});
  const GenMatPick<TypeParam> wrong = a.matPick(indices, indices);
  EXPECT_EQ(3U, wrong.cols());
  EXPECT_THAT(errors.takeTexts(), ElementsAre(range + "3 not in 0->1", range + "-1 not in 0->1",
                                              range + "3 not in 0->2", range + "-1 not in 0->2"));
}

TYPED_TEST(GenMatFamily, ProductsAndElementWiseOperators) {
  using M = GenMat<TypeParam>;
  const M a = this->a_, b(counting<TypeParam>(17).slice(0, 9, 2), 3, 3), k = kronecker(a, b);
  EXPECT_THAT(list(product(a, b)), ElementsAre(20, 26, 56, 80, 92, 134));
  EXPECT_EQ(product(a, transpose(b)), transProduct(a, b));
  EXPECT_EQ(product(transpose(a), a), transposeProduct(a, a));
  EXPECT_THAT(list(product(a.row(0).slice(1, 2), a)), ElementsAre(4, 16, 28));
  ASSERT_EQ(6U, k.rows());
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j < 9; ++j) EXPECT_EQ(a(i / 3, j / 3) * b(i % 3, j % 3), k(i, j));
  }

  const M ones(2U, 3U, TypeParam(1));
  EXPECT_EQ(a * TypeParam(2) + TypeParam(1), a + a + ones);
  EXPECT_EQ(-a, TypeParam(0) - a);
  M c = a.copy();
  ++c;
  c *= c;
  c /= a + ones;
  EXPECT_EQ(a, --c);
  EXPECT_EQ(a * a, a.apply([](TypeParam x) { return x * x; }));
  EXPECT_NE(a, M(a.dataVec(), 3, 2));
}

TYPED_TEST(GenMatFamily, Picks) {
  using M = GenMat<TypeParam>;
  M& a = this->a_;
  const IntVec columns = vectorOf({2, 0});
  auto pick = a.matPick(IntVec(1U, 1), columns);
  EXPECT_THAT(list(M(pick)), ElementsAre(5, 1));
  pick = TypeParam(7);
  EXPECT_THAT(list(a), ElementsAre(0, 7, 2, 3, 4, 7));
  pick = a(IntVec(1U, 0), columns);
  pick(0, 1) = 8;
  EXPECT_THAT(list(a), ElementsAre(0, 8, 2, 3, 4, 4));
  a.matPick(vectorOf({1, 0}), vectorOf({0, 1, 2})) = a;
  EXPECT_THAT(list(a), ElementsAre(8, 0, 3, 2, 4, 4));

  EXPECT_EQ(4.0, DoubleGenMat(IntGenMat(vectorOf({1, 2, 3, 4}), 2, 2))(1, 1));
  M none(3, 0);
  none.row(0) = M(3, 0).row(2);
  EXPECT_EQ(0U, none.row(2).copy().length());
}

TYPED_TEST(GenMatFamily, TextFormRoundTripsAndRejectsBadInput) {
  using M = GenMat<TypeParam>;
  std::ostringstream out;
  out << std::setw(3) << this->a_ << M();
  EXPECT_EQ("2x3 [\n  0   2   4 \n  1   3   5 \n]0x0 [\n]", out.str());

  RecordedMathErrors errors;
  const std::string table[][3] = {{"2x3 [\n0 2 4\n1 3 5]"},
                                  {"2 x3 [0 2 4 1 3 5]"},
                                  {"none", "0", "0x0"},
                                  {"2x3 [0 1 2 3 4]", "5", "2x3"},
                                  {"2x2 [0 1 2 3", "4", "2x2"},
                                  {"2x2 [0 1 # 3]", "2", "2x2"},
                                  {"4294967295x4294967295 [1]", "1", "4294967295x4294967295"},
                                  {"65536x65536 []", "0", "65536x65536"}};
  for (const auto& [text, count, size] : table) {
    M read = size.empty() ? M() : this->a_.copy();  // stays when the text is rejected
    std::istringstream(text) >> read;
    EXPECT_EQ(this->a_, read) << text;
    const std::string error =
        (std::ostringstream() << "wrong number of elements (" << count << ") for " << this->name_
                              << " (" << size << ")")
            .str();
    EXPECT_EQ(std::vector(size.empty() ? 0 : 1, error), errors.takeTexts()) << text;
  }
}
