#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <random>
#include <sstream>
#include <type_traits>

#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using namespace kilntest;
using testing::ElementsAre;
using namespace vxKilnBase;

namespace {

static_assert(!std::is_constructible_v<IntVec, unsigned, int, int>);
static_assert(!std::is_convertible_v<DoubleVec, IntVec>);
static_assert(!std::is_convertible_v<SCharVec, DoubleVec>);
static_assert(sizeof(DoubleVec) == 24);

template <class T>
class VecFamily : public testing::Test {};
using Elements = testing::Types<double, int, signed char>;
TYPED_TEST_SUITE(VecFamily, Elements);

}  // namespace

TYPED_TEST(VecFamily, CopiesShareAssignmentCopiesResizeKeeps) {
  using V = Vec<TypeParam>;
  V v = counting<TypeParam>(5), view(v), own = v.copy();
  view(1) = 9;
  own(1) = 8;
  view.deepenShallowCopy();
  view(1) = 4;
  EXPECT_THAT(list(v), ElementsAre(0, 9, 2, 3, 4));
  v.slice(1, 4) = v.slice(0, 4);  // overlapping views of one block
  EXPECT_THAT(list(v), ElementsAre(0, 0, 9, 2, 3));
  v = reverse(v);
  v.slice(0, 3, 2) += v.slice(0, 3);  // 3 9 0 += 3 2 9
  EXPECT_THAT(list(v), ElementsAre(6, 2, 11, 0, 9));

  v.reference(counting<TypeParam>(6));
  V odd = v.slice(1, 3, 2);
  odd.resize(3);  // same length: stays a view
  EXPECT_EQ(2, odd.stride());
  odd.resize(5);
  EXPECT_THAT(list(odd), ElementsAre(1, 3, 5, 0, 0));
  odd.resize(2);
  odd.reshape(4);
  EXPECT_THAT(list(v), ElementsAre(0, 1, 2, 3, 4, 5));
  odd.reference(counting<TypeParam>(6).slice(0, 3, 2));
  odd.deepenShallowCopy();
  odd.reference(odd);  // alone
  EXPECT_EQ(1, odd.stride());
  EXPECT_EQ(2, v.slice(4, 3, -1).sub(-2));  // sub() ignores the stride
}

TYPED_TEST(VecFamily, ErrorsNameTheirClassAndNumbers) {
  using Names = vxKilnBase::VecNames<TypeParam>;
  const std::string vec = std::string(": ") + Names::vec + "]: ",
                    pickClass = std::string(": ") + Names::pick + "]: ",
                    outside = " cannot be made from vector (5)";
  const Vec<TypeParam> v = counting<TypeParam>(6).slice(0, 5), none;  // v[5] is in the storage
  auto pick = v.vecPick(vectorOf({0, 1, 1, 0}));
  std::vector<FailingCall> calls = {
      {[&] { v.boundsCheck(-1); }, kIndexError, "[INDEX" + vec + "Index (-1) out of range [0->4]"},
      {[&] { (void)v[5]; }, kIndexError, "[INDEX" + vec + "Index (5) out of range [0->4]"},
      {[&] { none.boundsCheck(0); }, kIndexError,
       "[INDEX" + vec + "Index (0) out of range [0->4294967295]"},
      {[&] { v + v.slice(0, 3); }, kVectorLengthsError,
       "[VNMATCH" + vec + "Vector lengths do not match (5 vs 3)"},
      {[&] { reverse(v).strideCheck(); }, kStrideError, "[STRIDE" + vec + "Stride must be 1"},
      {[&] { v.sliceCheck(1, 3, -1); }, kSliceError, "[SLICE" + vec + "slice (1, 3, -1)" + outside},
      {[&] { v.sliceCheck(5, 1, 1); }, kSliceError, "[SLICE" + vec + "slice (5, 1, 1)" + outside},
      {[&] { v.sliceCheck(0, 2, 0x7FFFFFFF); }, kSliceError,
       "[SLICE" + vec + "slice (0, 2, 2147483647)" + outside},
      {[&] { EXPECT_EQ(-1, maxIndex(none)); }, kEmptyVectorError,
       "[ZEROVEC" + vec + "maxIndex: vector is empty"},
      {[&] { EXPECT_EQ(0, minValue(none)); }, kEmptyVectorError,
       "[ZEROVEC" + vec + "minIndex: vector is empty"}};
  for (FailingCall& row : calls) row.classTag = Names::vecTag;
  expectErrors(calls);
  expectErrors(
      {{[&] {
          return v.vecPick(IntVec{0, 5, 1});
        },
        kIndexError, "[INDEX" + pickClass + "Index (5) out of range [0->4]", Names::pickTag},
       {[&] { return v.vecPick(vectorOf({-1})); }, kIndexError,
        "[INDEX" + pickClass + "Index (-1) out of range [0->4]", Names::pickTag},
       {[&] { pick = v.slice(0, 3); }, kVectorLengthsError,
        "[VNMATCH" + pickClass + "Vector lengths do not match (4 vs 3)", Names::pickTag}});
  RecordedMathErrors errors;
  v.strideCheck();
  v.sliceCheck(2, 3, -1);
  v.sliceCheck(5, 0, 9);
  v.sliceCheck(0, 3, 2);
  EXPECT_EQ(0U, errors.takeAll().size());
}

TYPED_TEST(VecFamily, WhatLengthsHaveInCommonIsWorkedOnWhenTheHandlerReturns) {
  using V = Vec<TypeParam>;
  RecordedMathErrors errors;
  const V shortOne(2U, TypeParam(1));
  V v = counting<TypeParam>(5);
  v = shortOne;
  EXPECT_THAT(list(v), ElementsAre(1, 1, 2, 3, 4));
  EXPECT_THAT(list(v + shortOne), ElementsAre(2, 2, 0, 0, 0));
  EXPECT_EQ(2, dot(v, shortOne));
  v += shortOne;
  v.vecPick(vectorOf({2, 3, 4})) = shortOne;
  EXPECT_THAT(list(v), ElementsAre(2, 2, 1, 1, 4));
  EXPECT_EQ(5U, errors.takeAll().size());
}

TYPED_TEST(VecFamily, TextFormRoundTripsAndSurvivesJunk) {
  using V = Vec<TypeParam>;
  const auto printed = [](unsigned n) {
    return (std::ostringstream() << counting<TypeParam>(n)).str();
  };
  const auto scanned = [](const std::string& text, V v = counting<TypeParam>(4)) {
    std::istringstream(text) >> v;
    return list(v);
  };
  EXPECT_EQ(5, V::setFormatting(-3));
  EXPECT_EQ("[  ][ 0 1 2 3 4 ][\n0 1 2 3 4\n5 6\n]", printed(0) + printed(5) + printed(7));
  EXPECT_EQ(list(counting<TypeParam>(100)), scanned(printed(100)));
  EXPECT_THAT(scanned(" [ 1\n2  3]4", V()), ElementsAre(1, 2, 3));
  for (const char* text : {"1 2 word", "[1 2"}) EXPECT_THAT(scanned(text), ElementsAre(1, 2));
  EXPECT_THAT(scanned("[1 x 3]"), ElementsAre(1));
  EXPECT_THAT(scanned(""), ElementsAre());
  const V v = counting<TypeParam>(4);
  scanned("[7 8]", v.slice(0, 2, 2));  // into the elements of the view
  EXPECT_THAT(list(v), ElementsAre(7, 1, 8, 3));
}

TYPED_TEST(VecFamily, ArithmeticOfAllStridesAndLengthsFollowsTheElements) {
  using T = TypeParam;
  using Sum = vxKilnBase::SumOf<T>;
  std::mt19937 random(1);
  for (unsigned n : {0U, 1U, 3U, 8U, 15U, 17U, 64U, 101U, 1000U}) {
    for (int stride : {1, 2, -1, -3}) {
      Vec<T> store(3 * n + 1);
      for (unsigned i = 0; i <= 3 * n; ++i) store.data()[i] = static_cast<T>(1 + random() % 9);
      const int start = stride < 0 ? static_cast<int>(3 * n) : 0;
      const Vec<T> a = store.slice(start, n, stride), b = counting<T>(n) + T(1);
      const auto expect = [&](auto operation, const Vec<T>& result) {
        ASSERT_EQ(n, result.length());
        for (int i = 0; i < static_cast<int>(n); ++i) {
          ASSERT_EQ(static_cast<T>(operation(a(i), b(i))), result(i)) << n << ' ' << stride;
        }
      };
      const auto formula = [](const auto& x, const auto& y) {
        return x * y - x + -y + y / x + T(90) / x - (T(2) - (x + T(3)));
      };
      expect(formula, formula(a, b));
      Vec<T> c = store.copy().slice(start, n, stride);
      c *= b;
      expect([](T x, T y) { return x * y - 2; }, (++c) -= T(3));
      EXPECT_EQ(a.copy(), a);
      EXPECT_EQ(n == 0, a == a + T(1));
      const std::vector<T> x = list(a), y = list(b);
      EXPECT_EQ(std::accumulate(x.begin(), x.end(), Sum(0)), sum(a));
      EXPECT_EQ(std::inner_product(x.begin(), x.end(), y.begin(), Sum(0)), dot(a, b));
      if (n == 0) continue;
      EXPECT_EQ(std::ranges::max_element(x) - x.begin(), maxIndex(a));
    }
  }
  for (const int stride : {5, 0, -1}) {
    Vec<T> none = Vec<T>().slice(0, 0, stride);  // no storage: nothing may be read
    EXPECT_EQ(0, sum(none) + dot(none, none));
    EXPECT_EQ(Vec<T>(), none * Vec<T>(0, T(5)) + none / none);
    EXPECT_EQ(Vec<T>(), none = Vec<T>().slice(0, 0, 3));
    EXPECT_EQ(Vec<T>(), none.copy());
  }
}

TYPED_TEST(VecFamily, QueriesAndPicks) {
  using T = TypeParam;
  Vec<T> v = vectorOf<T>({5, 2, 7, 2, 9, 4});
  EXPECT_THAT(list(v.valueIndex(3, 1)), ElementsAre(1, 3, 5));
  EXPECT_THAT(list(v.nonValueIndex(3, 1)), ElementsAre(0, 2, 4));
  EXPECT_THAT(list(reverse(v).lessIndex(5)), ElementsAre(0, 2, 4));
  EXPECT_EQ(1, v.isEqual(5, 4));
  EXPECT_EQ(0, v.isEqual(5, 3));
  EXPECT_THAT(list(cumsum(v)), ElementsAre(5, 7, 14, 16, 25, 29));
  EXPECT_THAT(list(abs(delta(v))), ElementsAre(5, 3, 5, 5, 7, 5));
  EXPECT_EQ(5040, prod(v));
  EXPECT_EQ(1, maxIndex(reverse(v)));
  EXPECT_EQ(1, minIndex(v));

  auto pick = v.vecPick(vectorOf({4, 0, 0}));
  EXPECT_THAT(list(Vec<T>(pick)), ElementsAre(9, 5, 5));
  pick = reverse(v).slice(0, 3);
  EXPECT_THAT(list(v), ElementsAre(2, 2, 7, 2, 4, 4));
  pick = v.vecPick(IntVec(3, 2));
  EXPECT_THAT(list(v), ElementsAre(7, 2, 7, 2, 7, 4));
  pick = T(0);
  EXPECT_THAT(list(v), ElementsAre(0, 2, 7, 2, 0, 4));
}

TEST(IntVec, WrapsAroundGuardsDivisionAndConverts) {
  const int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
  const IntVec v = vectorOf({most, least, 7}), wide = vectorOf({300, -1, 128});
  EXPECT_THAT(list(v + 1), ElementsAre(least, least + 1, 8));
  EXPECT_THAT(list(v / -1), ElementsAre(-most, least, -7));
  EXPECT_EQ(least, abs(v)(1));
  EXPECT_EQ(2U, v.countValue(-1, most) + v.countValue(0, 6));  // no overflow in |x - value|
  RecordedMathErrors errors;
  EXPECT_THAT(list(v / (v - 7)), ElementsAre(1, -1, 0));
  ((v / 0 + 7 / (v - v)) /= IntVec(3U, 0)) /= 0;
  EXPECT_EQ(std::vector<std::string>(5, "[DIVZERO: IntVec]: Divide by zero."), errors.takeTexts());

  EXPECT_THAT(list(toInt(vectorOf({-2.7, 2.9, 3e9, kNaN, -2147483648.5}))),
              ElementsAre(-2, 2, least, least, least));
  SCharVec narrow = toChar(reverse(wide));
  EXPECT_THAT(list<int>(narrow), ElementsAre(-128, -1, 44));
  EXPECT_THAT(list<double>(reverse(wide)), ElementsAre(128.0, -1.0, 300.0));
  std::istringstream("[5 300 6]") >> narrow;
  EXPECT_THAT(list(narrow), ElementsAre(5));
}

TEST(DoubleVec, RunningSumConstructorAndFunctions) {
  namespace kb = vxKilnBase;
  EXPECT_EQ(0.9999999999999999, DoubleVec(11U, 0.0, 0.1)(10));  // added up, not multiplied
  const DoubleVec x(4U, 1.0, 1.0);
  EXPECT_EQ(1.25, variance(x));
  EXPECT_EQ(2.5, mean(x));
  EXPECT_TRUE(std::isnan(mean(DoubleVec())));
  EXPECT_EQ(2, maxIndex(DoubleVec{1, NAN, 3, 2}));
  EXPECT_EQ(0, minIndex(DoubleVec{NAN, 1, 3}));
  EXPECT_THAT(list(pow(x, reverse(x))), ElementsAre(1, 8, 9, 4));
  EXPECT_EQ(std::atan2(1.0, 4.0), atan2(x, reverse(x))(0));
  using Function = DoubleVec (*)(const DoubleVec&);
  const std::pair<Function, double (*)(double)> table[] = {
      {kb::acos, std::acos},       {kb::asin, std::asin},   {kb::atan, std::atan},
      {kb::ceil, std::ceil},       {kb::cos, std::cos},     {kb::cosh, std::cosh},
      {kb::exp, std::exp},         {kb::floor, std::floor}, {kb::log, std::log},
      {kb::log10, std::log10},     {kb::sin, std::sin},     {kb::sinh, std::sinh},
      {kb::sqrt, std::sqrt},       {kb::tan, std::tan},     {kb::tanh, std::tanh},
      {kb::abs<double>, std::fabs}};
  for (const auto& [ours, standard] : table) {
    EXPECT_EQ(standard(0.75), ours(DoubleVec(3U, 0.75).slice(2, 2, -1))(1));
  }
  expectErrors({{[] { EXPECT_EQ(0.0, variance(DoubleVec(1U, 3.0))); }, kTooFewElementsError,
                 "[NPOINTS: DoubleVec]: Vector (1) Variance needs minimum of 2"}});
}

TEST(DoubleVec, ReadsBackWhatIsNotFinite) {
  const DoubleVec v = vectorOf({1.5, kInfinity, -kInfinity, kNaN, -kNaN, -2.0});
  std::stringstream text;
  DoubleVec read;
  text << v << std::uppercase << std::showpos << v;
  for (int i = 0; i < 2; ++i) {
    text >> read;
    EXPECT_THAT(list(read),
                ElementsAre(1.5, kInfinity, -kInfinity, testing::IsNan(), testing::IsNan(), -2.0));
  }
  // A word that is no number stays in the stream.
  for (const std::string word : {"north", "inch", "in"}) {
    std::istringstream words("1 nan " + word);
    words >> read;
    words.clear();
    std::string rest;
    words >> rest;
    EXPECT_EQ(word, rest);
  }
}

TEST(DoubleVec, NormIsSafeAtAllScalesAndZeroHasATolerance) {
  const DoubleVec pattern = vectorOf({3.0, 0.0, -4.0, 12.0});  // norm 13
  for (double scale : {1.0, 1e-300, 1e300, 5e-324 * 1e10, 1e-160, 1e155}) {
    EXPECT_NEAR(13.0, reverse(pattern * scale).vecLen() / scale, 13.0 * 4e-10) << scale;
  }
  DoubleVec v = vectorOf({0.0, 1e-200, 1.0, 1e200, 2e200});  // through all four phases
  EXPECT_DOUBLE_EQ(std::sqrt(5.0) * 1e200, v.vecLen());
  EXPECT_TRUE(std::isnan(DoubleVec(3U, kNaN).vecLen()));
  DoubleVec zero(3U, 0.0);
  EXPECT_EQ(1, v.normalise());
  EXPECT_EQ(0, zero.normalise());
  EXPECT_EQ(1, zero.isZero(0.0));
  EXPECT_DOUBLE_EQ(std::sqrt(0.8), v(4));

  v.reference(vectorOf({1e-8, -1e-10, 1e-9, kNaN}));
  EXPECT_EQ(2U, v.countZero(1e-9));
  EXPECT_EQ(0, v.isZero(1.0));
  EXPECT_THAT(list(v.zeroIndex(1e-9)), ElementsAre(1, 2));
  EXPECT_THAT(list(v.nonZeroIndex(1e-9)), ElementsAre(0, 3));
  v.clampZero(1e-9);
  EXPECT_THAT(list(v), ElementsAre(1e-8, 0.0, 0.0, testing::IsNan()));
}
