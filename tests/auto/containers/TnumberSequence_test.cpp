#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <set>
#include <tuple>
#include <vector>

#include <kilnbase/auto/containers/TnumberSequence.h>

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <class T>
std::vector<T> listed(const vxKilnBase::Vec<T>& v) {
  std::vector<T> values(v.length());
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = v(static_cast<int>(i));
  return values;
}

std::vector<double> listed(const TnumberSequence& s) {
  return listed(s.data());
}

DoubleVec vec(const std::vector<double>& values) {
  return DoubleVec(values.data(), static_cast<unsigned>(values.size()));
}

}  // namespace

// Without left: the last value <= t. With it: from there back to the end of the interval before.
TEST(TnumberSequence, FindsIntervals) {
  const TnumberSequence s = vec({0, 0, 0, 1, 1, 2, kNaN, kNaN});
  const std::tuple<double, int, int> cases[] = {
      {-kInfinity, -1, -1}, {0, 2, 0}, {0.5, 2, 0}, {1, 4, 2},
      {1.5, 4, 2},          {2, 5, 4}, {9, 5, 4},   {kNaN, 7, 5}};
  for (const auto& [t, right, left] : cases) {
    EXPECT_EQ(right, s.findInterval(t, 0)) << t;
    EXPECT_EQ(left, s.findInterval(t, -1)) << t;
  }
  EXPECT_EQ(-1, TnumberSequence().findInterval(0, 1));
  EXPECT_EQ(0, TnumberSequence(vec({1})).findInterval(2, 1));
}

TEST(TnumberSequence, EditsKeepTheOrder) {
  std::mt19937 random(20);
  const auto next = [&random] { return static_cast<double>(random() % 40); };
  TnumberSequence s;
  std::multiset<double> model;
  for (int step = 0; step < 1000; ++step) {
    const double t = next();
    const std::vector<double> several = {next(), next(), next()};
    s.add(t, 2);
    s.add(vec(several));
    model.insert({t, t, several[0], several[1], several[2]});
    for (int i = s.length() - 1; i >= 0; i -= 1 + static_cast<int>(next())) {
      model.erase(model.find(s(i)));
      ASSERT_EQ(1, s.remove(i));
    }
    ASSERT_THAT(listed(s), ElementsAreArray(model));
  }
  EXPECT_EQ(0, s.remove(s.length()));
  EXPECT_EQ(0, s.remove(-1));
}

TEST(TnumberSequence, NewCopiesComeAfterEqualValues) {
  TnumberSequence s = vec({-1.0, 0.0, 1.0});
  s.add(-0.0, 2);
  s.add(vec({0.0, -0.0}));
  const std::vector<double> values = listed(s);
  EXPECT_THAT(values, ElementsAre(-1, 0, 0, 0, 0, 0, 1));
  for (const int i : {2, 3, 5}) EXPECT_TRUE(std::signbit(s(i))) << i;
  for (const int i : {1, 4}) EXPECT_FALSE(std::signbit(s(i))) << i;
  s.add(5.0, 0);
  s.add(s.data());
  EXPECT_EQ(14, s.length());
}

TEST(TnumberSequence, CopiesAreIndependentAndReferencesDetachOnEdits) {
  TnumberSequence s(0.5, 0.25, 3);
  const auto edits = {+[](TnumberSequence& t) { t.add(0, 1); },
                      +[](TnumberSequence& t) { t.remove(0); },
                      +[](TnumberSequence& t) { t.deepenShallowCopy(); },
                      +[](TnumberSequence& t) { t = TnumberSequence(t); }};
  for (const auto& edit : edits) {
    TnumberSequence shared;
    shared.reference(s);
    EXPECT_EQ(s.data().data(), shared.data().data());
    edit(shared);
    EXPECT_NE(s.data().data(), shared.data().data());
    EXPECT_THAT(listed(s), ElementsAre(0.5, 0.75, 1.0));
  }
}

TEST(TnumberSequence, BreakpointsAndTheirMultiplicities) {
  const TnumberSequence s = vec({0, 0, 0, 1, 1, 2});
  EXPECT_THAT(listed(s.breakpoints()), ElementsAre(0, 1, 2));
  EXPECT_THAT(listed(s.multiplicities()), ElementsAre(3, 2, 1));
  const int expected[] = {-1, 0, 0, 0, 1, 1, 2, -1};
  for (int i = -1; i <= 6; ++i) EXPECT_EQ(expected[i + 1], s.whichBreakpoint(i)) << i;
}

TEST(TnumberSequence, ExtraValuesAreThoseThatTheOtherLacks) {
  using List = std::vector<double>;
  const std::tuple<List, List, double, List> cases[] = {
      {{}, {1, 2}, 0.1, {1, 2}},
      {{0, 1, 1, 3}, {0, 0, 1, 1, 1, 2, 4}, 0, {0, 1, 2, 4}},
      {{1, 2, 3}, {1.25, 1.5, 2.5, 3.5}, 0.25, {1.5, 2.5, 3.5}},
      {{-kInfinity, kInfinity}, {-kInfinity, kInfinity, kInfinity}, 1, {kInfinity}},
  };
  for (const auto& [a, b, tol, lacking] : cases) {
    EXPECT_EQ(lacking, listed(TnumberSequence::extra(vec(a), vec(b), tol)));
  }
}

TEST(TnumberSequence, SortingAViewTouchesItsElementsOnlyAndIsStable) {
  for (const int stride : {1, 3, -2}) {
    DoubleVec doubles(30, 99.0);
    const int start = stride < 0 ? 20 : 2;
    doubles.slice(start, 6, stride) = vec({kNaN, 3, 0.0, -0.0, 0.0, -1});
    DoubleVec view = doubles.slice(start, 6, stride);
    TnumberSequence::sortDoubleVecInPlace(doubles.slice(start, 6, stride));
    EXPECT_THAT(listed(view), ElementsAre(-1, 0, 0, 0, 3, testing::IsNan()));
    EXPECT_TRUE(std::signbit(view(2)));
    EXPECT_EQ(24U, doubles.slice(0, 30).countValue(99.0, 0.0));
  }
}

TEST(TnumberSequence, MisuseIsCaughtInDebugBuildsAndHarmlessInOthers) {
  TnumberSequence s(0, 1, 3);
  EXPECT_DEBUG_DEATH(s.add(1.0, std::numeric_limits<int>::max()), "hasRoom");
  EXPECT_EQ(3, s.length());
  EXPECT_DEBUG_DEATH(EXPECT_EQ(1, TnumberSequence(3, -1, 3)(0)), "step");
}
