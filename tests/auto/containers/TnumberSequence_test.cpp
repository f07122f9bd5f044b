#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <random>
#include <set>
#include <tuple>
#include <vector>

#include <kilnbase/auto/containers/TnumberSequence.h>

#include "tests/support/Matrices.h"

using kilntest::kInfinity;
using kilntest::kNaN;
using kilntest::list;
using testing::ElementsAre;

namespace {

DoubleVec vec(const std::vector<double>& values) {
  return DoubleVec(values.data(), static_cast<unsigned>(values.size()));
}

}  // namespace

TEST(TnumberSequence, FindsIntervalsAndBreakpoints) {
  const TnumberSequence s = vec({0, 0, 0, 1, 1, 2, kNaN, kNaN});
  const std::tuple<double, int, int> cases[] = {
      {-kInfinity, -1, -1}, {0, 2, 0}, {0.5, 2, 0}, {1, 4, 2}, {2, 5, 4}, {kNaN, 7, 5}};
  for (const auto& [t, right, left] : cases) {
    EXPECT_EQ(right, s.findInterval(t, 0)) << t;
    EXPECT_EQ(left, s.findInterval(t, -1)) << t;
  }
  EXPECT_EQ(-1, TnumberSequence().findInterval(0, 1));
  const TnumberSequence finite = vec({0, 0, 1, 2});
  EXPECT_THAT(std::vector(finite.begin(), finite.end()), ElementsAre(0, 0, 1, 2));
  EXPECT_THAT(list(finite.breakpoints()), ElementsAre(0, 1, 2));
  EXPECT_THAT(list(finite.multiplicities()), ElementsAre(2, 1, 1));
  const int expected[] = {-1, 0, 0, 1, 2, -1};
  for (int i = -1; i <= 4; ++i) EXPECT_EQ(expected[i + 1], finite.whichBreakpoint(i)) << i;
}

// Equal values stay in the order of their insertion. The signs of zeros tell them apart.
TEST(TnumberSequence, EditsFollowAModel) {
  std::mt19937 random(20);
  const auto next = [&] { return std::vector{-1.0, -0.0, 0.0, 1.0, 2.0}[random() % 5]; };
  TnumberSequence s;
  std::multiset<double> model;
  for (int step = 0; step < 1000; ++step) {
    const double t = next(), u = next(), v = next();
    s.add(t, 2);
    s.add(vec({u, v, t}));
    model.insert({t, t, u, v, t});
    for (int i = s.length() - 1; i >= 0; i -= 1 + static_cast<int>(random() % 40)) {
      model.erase(std::next(model.begin(), i));
      ASSERT_EQ(1, s.remove(i));
    }
    constexpr auto* bits = std::bit_cast<std::uint64_t, double>;
    ASSERT_TRUE(std::ranges::equal(list(s.data()), model, {}, bits, bits)) << step;
  }
  for (const int i : {-1, s.length()}) EXPECT_EQ(0, s.remove(i));
  s.add(s.data());
  EXPECT_EQ(2 * static_cast<int>(model.size()), s.length());
}

TEST(TnumberSequence, CopiesAreIndependentAndReferencesDetachOnEdits) {
  TnumberSequence s(0.5, 0.25, 3);
  for (const auto edit :
       {+[](TnumberSequence& t) { t.add(0, 1); }, +[](TnumberSequence& t) { t.remove(0); },
        +[](TnumberSequence& t) { t = TnumberSequence(t); }}) {
    TnumberSequence shared;
    shared.reference(s);
    EXPECT_EQ(s.data().data(), shared.data().data());
    edit(shared);
    EXPECT_NE(s.data().data(), shared.data().data());
    EXPECT_THAT(list(s.data()), ElementsAre(0.5, 0.75, 1.0));
  }
}

TEST(TnumberSequence, ExtraValuesAreThoseThatTheOtherLacks) {
  using List = std::vector<double>;
  const std::tuple<List, List, double, List> cases[] = {
      {{0, 1, 1, 3}, {0, 0, 1, 1, 1, 2, 4}, 0, {0, 1, 2, 4}},
      {{1, 2, 3}, {1.25, 1.5, 2.5, 3.5}, 0.25, {1.5, 2.5, 3.5}},
      {{-kInfinity, kInfinity}, {-kInfinity, kInfinity, kInfinity}, 1, {kInfinity}},
  };
  for (const auto& [a, b, tol, lacking] : cases) {
    EXPECT_EQ(lacking, list(TnumberSequence::extra(vec(a), vec(b), tol)));
  }
}

TEST(TnumberSequence, SortingAViewTouchesItsElementsOnlyAndIsStable) {
  for (const int stride : {1, 3, -2}) {
    DoubleVec doubles(40, 99.0);
    DoubleVec view = doubles.slice(20, 6, stride);
    view = vec({kNaN, 3, 0.0, -0.0, 0.0, -1});
    TnumberSequence::sortDoubleVecInPlace(doubles.slice(20, 6, stride));
    EXPECT_THAT(list(view), ElementsAre(-1, 0, 0, 0, 3, testing::IsNan()));
    EXPECT_TRUE(std::signbit(view(2)));
    EXPECT_EQ(34U, doubles.slice(0, 40).countValue(99.0, 0.0));
  }
}

TEST(TnumberSequence, MisuseIsCaughtInDebugBuildsAndHarmlessInOthers) {
  TnumberSequence s(0, 1, 3);
  EXPECT_DEBUG_DEATH(s.add(1.0, std::numeric_limits<int>::max()), "hasRoom");
  EXPECT_EQ(3, s.length());
  EXPECT_DEBUG_DEATH(EXPECT_EQ(1, TnumberSequence(3, -1, 3)(0)), "step");
}
