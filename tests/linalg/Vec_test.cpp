#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <sstream>
#include <type_traits>

#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using namespace kilntest;
using testing::ElementsAre;
using testing::IsEmpty;
using vxKilnBase::VecNames;

namespace {

// The members that only one family has.
template <class V>
constexpr bool kHasApply = requires(V v) {
  v.apply(nullptr);
};
template <class V>
constexpr bool kHasDoubleMembers = requires(V v) {
  v.clampZero(0);
  v.countZero(0);
  v.isZero(0);
  v.zeroIndex(0);
  v.nonZeroIndex(0);
  v.normalise();
  v.vecLen();
};
static_assert(kHasApply<DoubleVec> && !kHasApply<IntVec> && !kHasApply<SCharVec>);
static_assert(kHasDoubleMembers<DoubleVec> && !kHasDoubleMembers<IntVec>);
static_assert(std::is_constructible_v<DoubleVec, unsigned, double, double>);
static_assert(!std::is_constructible_v<IntVec, unsigned, int, int>);
static_assert(std::is_convertible_v<IntVec, DoubleVec> && std::is_convertible_v<SCharVec, IntVec>);
static_assert(!std::is_convertible_v<DoubleVec, IntVec> &&
              !std::is_convertible_v<SCharVec, DoubleVec>);
static_assert(sizeof(DoubleVec) == 24 && sizeof(SCharVec) == 24);

template <class T>
class VecFamily : public testing::Test {};
using Elements = testing::Types<double, int, signed char>;
TYPED_TEST_SUITE(VecFamily, Elements);

}  // namespace

TYPED_TEST(VecFamily, CopiesShareAndAssignmentCopies) {
  using V = vxKilnBase::Vec<TypeParam>;
  V v = counting<TypeParam>(5);
  V view(v);
  V own = v.copy();
  view(1) = 9;
  EXPECT_EQ(9, v(1));
  EXPECT_EQ(1, own(1));
  view.deepenShallowCopy();
  view(1) = 4;
  EXPECT_EQ(9, v(1));

  v = counting<TypeParam>(5);
  v.slice(1, 4) = v.slice(0, 4);  // overlapping views of one block
  EXPECT_THAT(list(v), ElementsAre(0, 0, 1, 2, 3));
  v.slice(0, 5, 1) = reverse(v);
  EXPECT_THAT(list(v), ElementsAre(3, 2, 1, 0, 0));
  v.slice(0, 3, 2) += v.slice(2, 3);  // 3 1 0 += 1 0 0
  EXPECT_THAT(list(v), ElementsAre(4, 2, 1, 0, 0));
  V other;
  other.reference(v.slice(0, 2));
  other = TypeParam(7);
  EXPECT_THAT(list(v), ElementsAre(7, 7, 1, 0, 0));
}

TYPED_TEST(VecFamily, ResizeKeepsAndReshapeRenews) {
  using V = vxKilnBase::Vec<TypeParam>;
  V v = counting<TypeParam>(6);
  V odd = v.slice(1, 3, 2);
  odd.resize(3);  // same length: stays a view
  EXPECT_EQ(2, odd.stride());
  odd.resize(5);
  EXPECT_THAT(list(odd), ElementsAre(1, 3, 5, 0, 0));
  EXPECT_EQ(1, odd.stride());
  odd.resize(2);
  EXPECT_THAT(list(odd), ElementsAre(1, 3));
  odd.reshape(4);
  EXPECT_EQ(4U, odd.length());
  EXPECT_THAT(list(v), ElementsAre(0, 1, 2, 3, 4, 5));
  V reversed = reverse(v);
  reversed.deepenShallowCopy();
  EXPECT_EQ(1, reversed.stride());
  EXPECT_EQ(2, v.slice(4, 3, -1).sub(-2));  // counts storage, not strides
  v.resize(0);
  EXPECT_EQ(0U, v.length());
}

TYPED_TEST(VecFamily, ChecksNameTheirClassAndNumbers) {
  using V = vxKilnBase::Vec<TypeParam>;
  const std::string name = VecNames<TypeParam>::vec;
  V v = counting<TypeParam>(5);
  RecordedMathErrors errors;
  v.boundsCheck(-1);
  V().boundsCheck(0);
  v.lengthCheck(3);
  v.strideCheck();
  reverse(v).strideCheck();
  v.sliceCheck(2, 3, -1);
  v.sliceCheck(5, 0, 9);
  v.sliceCheck(0, 3, 2);
  v.sliceCheck(1, 3, -1);
  v.sliceCheck(5, 1, 1);
  v.sliceCheck(0, 2, std::numeric_limits<int>::max());
  EXPECT_EQ(-1, maxIndex(V()));
  EXPECT_THAT(
      errors.takeTexts(),
      ElementsAre("[INDEX: " + name + "]: Index (-1) out of range [0->4]",
                  "[INDEX: " + name + "]: Index (0) out of range [0->4294967295]",
                  "[VNMATCH: " + name + "]: Vector lengths do not match (5 vs 3)",
                  "[STRIDE: " + name + "]: Stride must be 1",
                  "[SLICE: " + name + "]: slice (1, 3, -1) cannot be made from vector (5)",
                  "[SLICE: " + name + "]: slice (5, 1, 1) cannot be made from vector (5)",
                  "[SLICE: " + name + "]: slice (0, 2, 2147483647) cannot be made from vector (5)",
                  "[ZEROVEC: " + name + "]: maxIndex: vector is empty"));
  v.lengthCheck(1);
  EXPECT_EQ(VecNames<TypeParam>::vecTag, errors.takeAll()[0].classTag);
  // After a handler that returns, nothing outside either vector is touched.
  V shortOne(2U, TypeParam(1));
  v = shortOne;
  EXPECT_THAT(list(v), ElementsAre(1, 1, 2, 3, 4));
  EXPECT_THAT(list(v + shortOne), ElementsAre(2, 2, 0, 0, 0));
  EXPECT_EQ(2, dot(v, shortOne));
  EXPECT_EQ(3U, errors.takeAll().size());
}

TYPED_TEST(VecFamily, TextFormRoundTripsAndSurvivesJunk) {
  using V = vxKilnBase::Vec<TypeParam>;
  const auto printed = [](const V& v) {
    std::ostringstream stream;
    stream << v;
    return stream.str();
  };
  const auto scanned = [](const std::string& text, V v = V()) {
    std::istringstream stream(text);
    stream >> v;
    return list(v);
  };
  EXPECT_EQ("[  ]", printed(V()));
  EXPECT_EQ("[ 0 1 2 ]", printed(counting<TypeParam>(3)));
  EXPECT_EQ("[\n0 1 2 3 4\n5 6\n]", printed(counting<TypeParam>(7)));
  EXPECT_EQ(5, V::setFormatting(-3));
  EXPECT_EQ("[ 0 1 2 3 4 ]", printed(counting<TypeParam>(5)));
  EXPECT_EQ(5, V::numberPerLine);
  const V many = counting<TypeParam>(100);
  EXPECT_EQ(list(many), scanned(printed(many)));
  EXPECT_EQ(list(many), scanned(printed(many), V(100)));
  EXPECT_THAT(scanned(" [ 1\n2  3]4"), ElementsAre(1, 2, 3));
  EXPECT_THAT(scanned("1 2 word"), ElementsAre(1, 2));
  EXPECT_THAT(scanned("[1 2", counting<TypeParam>(4)), ElementsAre(1, 2));
  EXPECT_THAT(scanned("[1 x 3]"), ElementsAre(1));
  EXPECT_THAT(scanned("", counting<TypeParam>(4)), IsEmpty());
  V v = counting<TypeParam>(4);
  std::istringstream stream("[7 8]");
  v.slice(0, 2, 2).scanFrom(stream);  // into the elements of the view
  EXPECT_THAT(list(v), ElementsAre(7, 1, 8, 3));
}

TYPED_TEST(VecFamily, ArithmeticOfAllStridesAndLengthsFollowsTheElements) {
  using T = TypeParam;
  std::mt19937 random(1);
  std::uniform_int_distribution<int> small(1, 9);
  for (unsigned n : {0U, 1U, 3U, 8U, 17U, 64U, 101U, 1000U}) {
    for (int stride : {1, 2, -1, -3}) {
      vxKilnBase::Vec<T> store(3 * n + 1);
      for (int i = 0; i < static_cast<int>(store.length()); ++i)
        store(i) = static_cast<T>(small(random));
      const auto a = store.slice(stride < 0 ? static_cast<int>(3 * n) : 0, n, stride);
      const auto b = counting<T>(n) + T(1);
      const auto expect = [&](const vxKilnBase::Vec<T>& result, auto element) {
        ASSERT_EQ(n, result.length());
        for (int i = 0; i < static_cast<int>(n); ++i) {
          ASSERT_EQ(static_cast<T>(element(a(i), b(i))), result(i))
              << n << ' ' << stride << ' ' << i;
        }
      };
      expect(a + b, [](T x, T y) { return x + y; });
      expect(a - b, [](T x, T y) { return x - y; });
      expect(a * b, [](T x, T y) { return x * y; });
      expect(b / a, [](T x, T y) { return y / x; });
      expect(a + T(2), [](T x, T) { return x + 2; });
      expect(T(2) - a, [](T x, T) { return 2 - x; });
      expect(T(90) / a, [](T x, T) { return 90 / x; });
      expect(-a, [](T x, T) { return -x; });
      auto c = store.copy().slice(stride < 0 ? static_cast<int>(3 * n) : 0, n, stride);
      c *= b;
      ++c;
      c -= T(3);
      expect(c, [](T x, T y) { return x * y - 2; });
      EXPECT_EQ(n == 0, a == a + T(1));
      EXPECT_TRUE(a == a.copy() && a != store.slice(0, n + 1));

      using Sum = vxKilnBase::SumOf<T>;
      Sum total = 0, products = 0;
      for (int i = 0; i < static_cast<int>(n); ++i) {
        total = static_cast<Sum>(total + a(i));
        products = static_cast<Sum>(products + static_cast<Sum>(a(i)) * b(i));
      }
      EXPECT_EQ(total, sum(a));
      EXPECT_EQ(products, dot(a, b));
      int best = -1, worst = -1;
      for (int i = 0; i < static_cast<int>(n); ++i) {
        if (best < 0 || a(i) > a(best)) best = i;
        if (worst < 0 || a(i) < a(worst)) worst = i;
      }
      if (n == 0) continue;
      EXPECT_EQ(best, maxIndex(a));
      EXPECT_EQ(worst, minIndex(a));
    }
  }
}

TYPED_TEST(VecFamily, QueriesAndPicks) {
  using T = TypeParam;
  auto v = vectorOf<T>({5, 2, 7, 2, 9, 4});
  EXPECT_EQ(3U, v.countValue(3, 1));
  EXPECT_THAT(list(v.valueIndex(3, 1)), ElementsAre(1, 3, 5));
  EXPECT_THAT(list(v.nonValueIndex(3, 1)), ElementsAre(0, 2, 4));
  EXPECT_THAT(list(reverse(v).lessIndex(5)), ElementsAre(0, 2, 4));
  EXPECT_EQ(1, v.isEqual(5, 4));
  EXPECT_EQ(0, v.isEqual(5, 3));
  EXPECT_THAT(list(cumsum(v)), ElementsAre(5, 7, 14, 16, 25, 29));
  EXPECT_THAT(list(delta(v)), ElementsAre(5, -3, 5, -5, 7, -5));
  EXPECT_THAT(list(abs(delta(v))), ElementsAre(5, 3, 5, 5, 7, 5));
  EXPECT_EQ(5040, prod(v));
  EXPECT_EQ(9, maxValue(v));
  EXPECT_EQ(2, minValue(v));

  auto pick = v.vecPick(vectorOf({4, 0, 0}));
  EXPECT_THAT(list(vxKilnBase::Vec<T>(pick)), ElementsAre(9, 5, 5));
  pick = reverse(v).slice(0, 3);
  EXPECT_THAT(list(v), ElementsAre(2, 2, 7, 2, 4, 4));
  pick(0) = 1;
  pick = v.vecPick(IntVec(3, 2));
  EXPECT_THAT(list(v), ElementsAre(7, 2, 7, 2, 7, 4));
  pick = T(0);
  v.slice(1, 3) = pick;
  EXPECT_THAT(list(v), ElementsAre(0, 0, 0, 0, 0, 4));

  RecordedMathErrors errors;
  v.vecPick(vectorOf({0, 9, -1, 1})).lengthCheck(3);
  const std::string name = VecNames<T>::pick;
  const auto raised = errors.takeAll();
  ASSERT_EQ(3U, raised.size());
  EXPECT_EQ("[INDEX: " + name + "]: Index (9) out of range [0->5]", raised[0].text);
  EXPECT_EQ("[INDEX: " + name + "]: Index (-1) out of range [0->5]", raised[1].text);
  EXPECT_EQ("[VNMATCH: " + name + "]: Vector lengths do not match (4 vs 3)", raised[2].text);
  EXPECT_EQ(VecNames<T>::pickTag, raised[0].classTag);
}

TYPED_TEST(VecFamily, EmptyOperandsOfAnyStrideAreNotRead) {
  using V = vxKilnBase::Vec<TypeParam>;
  const V none = V().slice(0, 0, 0);
  EXPECT_EQ(V(), none * V() + none / none - TypeParam(1));
  EXPECT_EQ(0, sum(none) + dot(none, none));
  RecordedMathErrors errors;
  EXPECT_EQ(0, minValue(V()));
  EXPECT_THAT(errors.takeTexts()[0], testing::EndsWith(": minIndex: vector is empty"));
}

TYPED_TEST(VecFamily, LengthZeroIsALengthAndViewsAreExchanged) {
  using V = vxKilnBase::Vec<TypeParam>;
  EXPECT_EQ(V(), V(0, TypeParam(5)));
  EXPECT_EQ(V(), V(0, 5U));
  V a = counting<TypeParam>(3), b = reverse(counting<TypeParam>(2));
  swap(a, b);
  EXPECT_THAT(list(a), ElementsAre(1, 0));
  EXPECT_THAT(list(b), ElementsAre(0, 1, 2));
}

TEST(IntVec, WrapsAroundAndGuardsDivision) {
  const int extremes[] = {std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), 7};
  const IntVec v(extremes, 3);
  EXPECT_THAT(list(v + 1), ElementsAre(extremes[1], extremes[1] + 1, 8));
  EXPECT_THAT(list(v / -1), ElementsAre(-extremes[0], extremes[1], -7));
  EXPECT_EQ(extremes[1], abs(v)(1));
  EXPECT_EQ(2U, v.countValue(-1, extremes[0]) + v.countValue(0, 6));  // no overflow in |x - value|
  RecordedMathErrors errors;
  EXPECT_THAT(list(v / (v - 7)), ElementsAre(1, -1, 0));
  EXPECT_THAT(errors.takeTexts(), ElementsAre("[DIVZERO: IntVec]: Divide by zero."));
}

TEST(Vec, Conversions) {
  const int least = std::numeric_limits<int>::min();
  EXPECT_THAT(list(toInt(vectorOf({-2.7, 2.9, 3e9, kNaN, -2147483648.5}))),
              ElementsAre(-2, 2, least, least, least));
  const IntVec wide = vectorOf({300, -1, 128});
  const SCharVec narrow = toChar(reverse(wide));
  EXPECT_THAT(list(narrow), ElementsAre(-128, -1, 44));
  EXPECT_THAT(list<int>(narrow), ElementsAre(-128, -1, 44));
  EXPECT_THAT(list<double>(reverse(wide)), ElementsAre(128.0, -1.0, 300.0));
  SCharVec tooWide(1U, 1);
  std::istringstream text("[5 300 6]");
  text >> tooWide;
  EXPECT_THAT(list(tooWide), ElementsAre(5));
}

TEST(DoubleVec, RunningSumConstructorAndFunctions) {
  EXPECT_EQ(0.9999999999999999, DoubleVec(11U, 0.0, 0.1)(10));  // added up, not multiplied
  const DoubleVec x(4U, 1.0, 1.0);
  EXPECT_EQ(1.25, variance(x));
  EXPECT_EQ(2.5, mean(x));
  EXPECT_TRUE(std::isnan(mean(DoubleVec())));
  EXPECT_THAT(list(pow(x, reverse(x))), ElementsAre(1, 8, 9, 4));
  EXPECT_EQ(std::atan2(1.0, 4.0), atan2(x, reverse(x))(0));
  using Function = DoubleVec (*)(const DoubleVec&);
  const std::pair<Function, double (*)(double)> table[] = {
      {vxKilnBase::acos, std::acos}, {vxKilnBase::asin, std::asin},
      {vxKilnBase::atan, std::atan}, {vxKilnBase::ceil, std::ceil},
      {vxKilnBase::cos, std::cos},   {vxKilnBase::cosh, std::cosh},
      {vxKilnBase::exp, std::exp},   {vxKilnBase::floor, std::floor},
      {vxKilnBase::log, std::log},   {vxKilnBase::log10, std::log10},
      {vxKilnBase::sin, std::sin},   {vxKilnBase::sinh, std::sinh},
      {vxKilnBase::sqrt, std::sqrt}, {vxKilnBase::tan, std::tan},
      {vxKilnBase::tanh, std::tanh}, {vxKilnBase::abs<double>, std::fabs}};
  for (const auto& [ours, standard] : table) {
    EXPECT_EQ(standard(0.75), ours(DoubleVec(3U, 0.75).slice(2, 2, -1))(1));
  }
  RecordedMathErrors errors;
  variance(DoubleVec(1U, 3.0));
  const auto raised = errors.takeAll();
  EXPECT_EQ("[NPOINTS: DoubleVec]: Vector (1) Variance needs minimum of 2", raised.at(0).text);
  EXPECT_EQ(0xF000, raised[0].classTag);
}

TEST(DoubleVec, NormIsSafeAtAllScales) {
  const double pattern[] = {3.0, 0.0, -4.0, 12.0};  // norm 13
  for (double scale : {1.0, 1e-300, 1e300, 5e-324 * 1e10, 1e-160, 1e155}) {
    const DoubleVec v = DoubleVec(pattern, 4) * scale;
    EXPECT_NEAR(13.0, v.vecLen() / scale, 13.0 * 4e-10) << scale;
    EXPECT_NEAR(13.0, reverse(v).vecLen() / scale, 13.0 * 4e-10) << scale;
  }
  const double mixed[] = {0.0, 1e-200, 1.0, 1e200, 2e200};  // through all four phases
  EXPECT_DOUBLE_EQ(std::sqrt(5.0) * 1e200, DoubleVec(mixed, 5).vecLen());
  EXPECT_DOUBLE_EQ(1.0, DoubleVec(mixed, 3).vecLen());
  EXPECT_EQ(0.0, DoubleVec().vecLen());
  EXPECT_TRUE(std::isnan(DoubleVec(3U, kNaN).vecLen()));

  DoubleVec v(pattern, 4);
  EXPECT_EQ(1, v.normalise());
  EXPECT_DOUBLE_EQ(12.0 / 13.0, v(3));
  DoubleVec zero(3U, 0.0);
  EXPECT_EQ(0, zero.normalise());
  EXPECT_EQ(1, zero.isZero(0.0));
}

TEST(DoubleVec, ZeroTolerancesAndNaN) {
  DoubleVec v = vectorOf({1e-8, -1e-10, 0.0, 1e-9, kNaN});
  EXPECT_EQ(3U, v.countZero(1e-9));
  EXPECT_THAT(list(v.zeroIndex(1e-9)), ElementsAre(1, 2, 3));
  EXPECT_THAT(list(v.nonZeroIndex(1e-9)), ElementsAre(0, 4));
  EXPECT_EQ(0, v.isZero(1.0));
  EXPECT_EQ(0, v.isEqual(0.0, 1.0));
  EXPECT_EQ(1, v.slice(0, 4).isZero(1e-8));
  v.clampZero(1e-9);
  EXPECT_EQ(1e-8, v(0));
  EXPECT_THAT(list(v.slice(1, 3)), ElementsAre(0.0, 0.0, 0.0));
  EXPECT_TRUE(std::isnan(v(4)));

  DoubleVec many(1000U, 0.0, 0.001);
  many(700) = many(300) = 5.0;
  many(500) = kNaN;
  EXPECT_EQ(300, maxIndex(many));
  EXPECT_EQ(0, minIndex(many));
  many(0) = kNaN;
  EXPECT_EQ(0, maxIndex(many));  // no element is larger than a NaN
}
