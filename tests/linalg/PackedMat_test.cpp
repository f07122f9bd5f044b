#include <algorithm>
#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/DoubleLowerTriMat.h>
#include <kilnbase/linalg/DoubleSymMat.h>
#include <kilnbase/linalg/DoubleUpperTriMat.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

namespace {

using namespace kilntest;
using testing::ElementsAre;
using testing::IsEmpty;
using vxKilnBase::LowerPacking;
using vxKilnBase::PackedMat;
using vxKilnBase::UpperPacking;

constexpr int kOrder = 5;
constexpr unsigned kElements = 15;

template <class Packing>
class PackedFamily : public testing::Test {
 protected:
  static constexpr bool kLower = std::is_same_v<Packing, LowerPacking>;
  static constexpr bool kUpper = std::is_same_v<Packing, UpperPacking>;

  static bool isOutside(int i, int j) { return (kLower && i < j) || (kUpper && i > j); }
  static PackedMat<Packing> counted() {
    return PackedMat<Packing>(counting<double>(kElements) + 1.0, kOrder, kOrder);
  }
  // The matrix that `counted` must be: 1, 2 3, 4 5 6, ... row by row, or that transposed.
  static DoubleGenMat countedInFull() {
    DoubleGenMat full(kOrder, kOrder, 0.0);
    double next = 1.0;
    for (int i = 0; i < kOrder; ++i) {
      for (int j = 0; j <= i; ++j, ++next) {
        if (!kUpper) full(i, j) = next;
        if (!kLower) full(j, i) = next;
      }
    }
    return full;
  }
};
using Packings = testing::Types<vxKilnBase::SymmetricPacking, LowerPacking, UpperPacking>;
TYPED_TEST_SUITE(PackedFamily, Packings);

}  // namespace

TYPED_TEST(PackedFamily, StoresOneTriangleAndReadsAsTheFullMatrix) {
  auto a = this->counted();
  const auto& constant = a;
  const DoubleGenMat full = this->countedInFull();
  EXPECT_EQ(full, DoubleGenMat(a));
  for (int i = 0; i < kOrder; ++i) {
    for (int j = 0; j < kOrder; ++j) {
      SCOPED_TRACE(testing::Message() << i << ", " << j);
      for (const double value : {constant(i, j), double(a(i, j)), a.val(i, j), double(a.ref(i, j)),
                                 a.bcval(i, j), double(a.bcref(i, j))}) {
        EXPECT_EQ(full(i, j), value);
      }
    }
  }
}

TYPED_TEST(PackedFamily, WritesThroughEveryDoor) {
  auto a = this->counted();
  const int i = this->kUpper ? 1 : 3, j = this->kUpper ? 3 : 1;
  a(i, j) = 20.0;
  a.ref(i, j) += 1.0;
  a.bcref(i, j) -= 2.0;
  a(i, j) *= 4.0;
  a(i, j) /= 2.0;
  EXPECT_EQ(38.0, a.dataVec()(7));
  a(i, j) = a(0, 0);  // the value, not the place
  a(0, 0) = 9.0;
  EXPECT_EQ(1.0, a(i, j));
  EXPECT_EQ(5.0, a.set(i, j, 5.0));
  EXPECT_EQ(6.0, a.bcset(1, 1, 6.0));
  EXPECT_THAT(list(a), ElementsAre(9, 2, 6, 4, 5, 6, 7, 5, 9, 10, 11, 12, 13, 14, 15));
}

TYPED_TEST(PackedFamily, ViewsShareAssignmentCopies) {
  using Mat = PackedMat<TypeParam>;
  auto a = this->counted();
  DoubleVec store(2 * kElements, 0.0);
  Mat spread(store.slice(0, kElements, 2), kOrder, kOrder);  // every second element
  spread = a;
  EXPECT_EQ(this->countedInFull(), DoubleGenMat(spread));
  EXPECT_EQ(0.0, sum(store.slice(1, kElements, 2)));
  Mat leading = spread.leadingSubmatrix(3), apart(a), other;
  leading(1, 1) = 50.0;
  EXPECT_EQ(50.0, store(4));
  EXPECT_EQ(3U, leading.rows());
  EXPECT_EQ(Mat(), a.leadingSubmatrix(0));

  apart.deepenShallowCopy();
  other.reference(a);
  a.zero();
  EXPECT_EQ(a, other);
  apart.resize(7, 7);
  EXPECT_EQ(120.0, sum(apart));
  EXPECT_EQ(this->countedInFull(), DoubleGenMat(apart.leadingSubmatrix(kOrder)));
  apart.resize(2, 2);
  EXPECT_THAT(list(apart), ElementsAre(1, 2, 3));
  other.reshape(6, 6);
  swap(other, apart);
  EXPECT_EQ(6U, apart.cols());
  EXPECT_EQ(3U, other.copy().length());
}

TYPED_TEST(PackedFamily, ArithmeticKeepsTheZeros) {
  const auto a = this->counted();
  const DoubleGenMat full = this->countedInFull();
  EXPECT_EQ(full * full * 3.0 - full, DoubleGenMat(3.0 * (a * a) + -a));
  EXPECT_EQ(a, abs(-a / (a / a)));
  EXPECT_EQ(full * 0.5, DoubleGenMat(a.apply([](double x) { return x / 2; })));
  EXPECT_NE(a, a.leadingSubmatrix(4));
}

TYPED_TEST(PackedFamily, ProductsAreThoseOfTheFullMatrix) {
  using Mat = PackedMat<TypeParam>;
  for (const unsigned n : {0U, 1U, 2U, 7U, 8U, 9U, 17U, 40U}) {
    const unsigned count = n * (n + 1) / 2;
    const Mat a(randomVector(2 * count, n).slice(0, count, 2), n, n);
    const DoubleVec every = randomVector(2 * n, 99).slice(0, n, 2);
    const DoubleGenMat full(a);
    const double tolerance = n * kEpsilon * norm2(full);
    for (const DoubleVec& x : {every, every.copy()}) {
      for (const Mat& packed : {a, a.copy()}) {
        EXPECT_LE(norm2(product(packed, x) - product(full, x)), tolerance);
        EXPECT_LE(norm2(product(x, packed) - product(x, full)), tolerance);
      }
    }
  }
}

TYPED_TEST(PackedFamily, TextIsThatOfTheFullMatrix) {
  using Mat = PackedMat<TypeParam>;
  const auto a = this->counted();
  std::stringstream text, textOfFull;
  text << a;
  textOfFull << this->countedInFull();
  EXPECT_EQ(textOfFull.str(), text.str());
  Mat back(2);
  text >> back;
  EXPECT_EQ(a, back);

  RecordedMathErrors errors;
  const std::string name = Mat::className, count = "wrong number of elements (";
  for (const char* wrong : {"2x2 [1 2 3 ]", "2x2 [1 2 3 4", "2x3 [1 2 3 4 5 6]"}) {
    std::istringstream(wrong) >> back;
    EXPECT_EQ(a, back) << wrong;
  }
  EXPECT_THAT(errors.takeTexts(),
              ElementsAre(count + "3) for " + name + " (2x2)", count + "4) for " + name + " (2x2)",
                          "2x3 matrix not square"));
  std::istringstream("2x2 [1 2 3 4]") >> back;
  if (this->kLower || this->kUpper) {
    EXPECT_EQ(a, back);
    EXPECT_THAT(errors.takeTexts(), ElementsAre(std::string("Can't change element (") +
                                                (this->kLower ? "0,1" : "1,0") + ") of " + name));
  } else {
    EXPECT_THAT(list(back), ElementsAre(1, 3, 4));
  }
}

TYPED_TEST(PackedFamily, ErrorsCarryTheirNumbers) {
  using Mat = PackedMat<TypeParam>;
  const std::string name = Mat::className, inner = "inner product not possible ",
                    size = " not in matrix of size (2x2)", square = " matrix not square",
                    leading = " leading submatrix of order 5 matrix",
                    lengths = "[VNMATCH: DoubleVec]: Vector lengths do not match ";
  auto a = this->counted();
  const auto view = a.leadingSubmatrix(2);  // what it lacks is in the storage all the same
  auto small = view.copy();
  const DoubleVec two(2U, 1.0);
  const std::pair<std::function<void()>, std::vector<std::string>> cases[] = {
      {[&] { view.bcval(2, 0); }, {"Element (2x0)" + size}},
      {[&] { a = small; }, {"Matrix sizes don't match (2x2) vs (5x5)", lengths + "(15 vs 3)"}},
      {[&] { small += a; }, {"Matrix sizes don't match (5x5) vs (2x2)", lengths + "(3 vs 15)"}},
      {[&] { EXPECT_EQ(2U, Mat(two, 3, 2).rows()); },
       {"3x2" + square, "Wrong number of points (2) for 2x2 " + name}},
      {[&] { EXPECT_EQ(0U, a.leadingSubmatrix(-1).rows()); },
       {"cant build order 4294967295" + leading}},
      {[&] { EXPECT_EQ(a, a.leadingSubmatrix(6)); }, {"cant build order 6" + leading}},
      {[&] { small.resize(1, 3); }, {"1x3" + square}},
      {[&] { EXPECT_EQ(5U, product(a, two).length()); },
       {inner + "between " + name + " (5x5) and vector (2)"}},
      {[&] { EXPECT_EQ(5U, product(two, a).length()); },
       {inner + "vector(2) and " + name + " (5x5)"}},
      {[&] { EXPECT_EQ(0U, Mat(100000).rows()); }, {"[NOMEM: RWBlock]: Out of memory"}},
  };
  RecordedMathErrors errors;
  for (const auto& [call, expected] : cases) {
    call();
    EXPECT_EQ(expected, errors.takeTexts());
  }
  EXPECT_EQ(3U, small.rows());
}

TEST(TriangularMat, OutsideTheTriangleIsAConstantZero) {
  DoubleLowerTriMat lower(vectorOf({1.0, 2.0, 3.0}), 2, 2);
  DoubleUpperTriMat upper(vectorOf({1.0, 2.0, 3.0}), 2, 2);
  RecordedMathErrors errors;
  lower(0, 1) = 0.0;
  upper.bcref(1, 0) *= 7.0;
  lower.set(1, 0, 5.0);
  EXPECT_THAT(errors.takeTexts(), IsEmpty());
  upper(1, 0) = 4.0;
  lower.bcref(0, 1) += kInfinity;
  EXPECT_THAT(errors.takeTexts(), ElementsAre("Constant reference was changed from 0 to 4",
                                              "Constant reference was changed from 0 to inf"));
  EXPECT_EQ(0.0, upper(1, 0) + lower(0, 1));

  // When the handler returns, the value goes where the formula of the triangle points.
  lower.bcset(0, 1, 8.0);
  upper.set(1, 0, 9.0);
  EXPECT_THAT(errors.takeTexts(), ElementsAre("Can't change element (0,1) of DoubleLowerTriMat",
                                              "Can't change element (1,0) of DoubleUpperTriMat"));
  EXPECT_THAT(list(lower), ElementsAre(1, 8, 3));
  EXPECT_THAT(list(upper), ElementsAre(1, 9, 3));
}

TEST(PackedConversions, TakeTheTrianglesOfTheLeadingSquare) {
  const DoubleVec elements = vectorOf({1.0, 2.0, 3.0, 4.0, 5.0, 6.0});
  const DoubleGenMat tall(elements, 3, 2), wide(elements, 2, 3);
  EXPECT_THAT(list(toSymMat(tall)), ElementsAre(1, 3, 5));
  EXPECT_THAT(list(toSymMat(wide)), ElementsAre(1, 2.5, 4, 2.5, 3, 0));
  EXPECT_THAT(list(toLowerTriMat(wide)), ElementsAre(1, 2, 4, 0, 0, 0));
  EXPECT_THAT(list(toUpperTriMat(wide)), ElementsAre(1, 3, 4, 5, 6, 0));
}
