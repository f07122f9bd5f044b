#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
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

TnumberSequence sequence(const std::vector<double>& values) {
  return vec(values);
}

}  // namespace

// Without left: the last value <= t. With it: from there back to the end of the interval before.
TEST(TnumberSequence, FindsIntervals) {
  const TnumberSequence s = sequence({0, 0, 0, 1, 1, 2, kNaN, kNaN});
  struct Case {
    double t;
    int right, left;
  };
  const Case cases[] = {{-kInfinity, -1, -1}, {0, 2, 0}, {0.5, 2, 0}, {1, 4, 2},
                        {1.5, 4, 2},          {2, 5, 4}, {9, 5, 4},   {kNaN, 7, 5}};
  for (const Case& c : cases) {
    EXPECT_EQ(c.right, s.findInterval(c.t, 0)) << c.t;
    EXPECT_EQ(c.left, s.findInterval(c.t, -1)) << c.t;
  }
  EXPECT_EQ(-1, TnumberSequence().findInterval(0, 1));
  EXPECT_EQ(0, sequence({1}).findInterval(2, 1));
}

TEST(TnumberSequence, EditsKeepTheOrder) {
  std::mt19937 random(20);
  const auto next = [&random] { return static_cast<double>(random() % 40); };
  TnumberSequence s;
  std::vector<double> model;
  for (int step = 0; step < 2000; ++step) {
    const int count = static_cast<int>(random() % 4);
    const int i = static_cast<int>(random() % 200) - 20;
    if (random() % 2 == 0) {
      const double t = next();
      s.add(t, count);
      model.insert(model.end(), static_cast<std::size_t>(count), t);
    } else if (random() % 8 == 0) {
      const std::vector<double> several = {next(), next(), next()};
      s.add(vec(several));
      model.insert(model.end(), several.begin(), several.end());
    } else {
      const bool exists = i >= 0 && i < static_cast<int>(model.size());
      ASSERT_EQ(exists ? 1 : 0, s.remove(i));
      if (exists) model.erase(model.begin() + i);
    }
    std::sort(model.begin(), model.end());
    ASSERT_EQ(model, listed(s));
  }
}

TEST(TnumberSequence, NewCopiesComeAfterEqualValues) {
  TnumberSequence s = sequence({-1.0, 0.0, 1.0});
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
  const TnumberSequence s = sequence({0, 0, 0, 1, 1, 2});
  EXPECT_THAT(listed(s.breakpoints()), ElementsAre(0, 1, 2));
  EXPECT_THAT(listed(s.multiplicities()), ElementsAre(3, 2, 1));
  const int expected[] = {-1, 0, 0, 0, 1, 1, 2, -1};
  for (int i = -1; i <= 6; ++i) EXPECT_EQ(expected[i + 1], s.whichBreakpoint(i)) << i;
  EXPECT_EQ(0U, TnumberSequence().multiplicities().length());
}

TEST(TnumberSequence, ExtraValuesAreThoseThatTheOtherLacks) {
  struct Case {
    std::vector<double> a, b;
    double tol;
    std::vector<double> extra;
  };
  const Case cases[] = {
      {{}, {1, 2}, 0.1, {1, 2}},
      {{0, 1, 1, 3}, {0, 0, 1, 1, 1, 2, 4}, 0, {0, 1, 2, 4}},
      {{1, 2, 3}, {1.25, 1.5, 2.5, 3.5}, 0.25, {1.5, 2.5, 3.5}},
      {{0, 0.5, 1}, {0.75, 0.75, 0.75}, 0.25, {0.75}},
      {{-kInfinity, kInfinity}, {-kInfinity, kInfinity, kInfinity}, 1, {kInfinity}},
  };
  for (const Case& c : cases) {
    EXPECT_THAT(listed(TnumberSequence::extra(sequence(c.a), sequence(c.b), c.tol)),
                ElementsAreArray(c.extra));
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
    EXPECT_TRUE(!std::signbit(view(1)) && std::signbit(view(2)) && !std::signbit(view(3)));
    EXPECT_EQ(24U, doubles.slice(0, 30).countValue(99.0, 0.0));
  }
  IntVec ints = TnumberSequence(vec({0, 0, 0, 1, 2, 2})).multiplicities();
  TnumberSequence::sortIntVecInPlace(ints);
  EXPECT_THAT(listed(ints), ElementsAre(1, 2, 3));
}

TEST(TnumberSequence, MisuseIsCaughtInDebugBuildsAndHarmlessInOthers) {
  TnumberSequence s(0, 1, 3);
  EXPECT_DEBUG_DEATH(s.add(1.0, std::numeric_limits<int>::max()), "hasRoom");
  EXPECT_EQ(3, s.length());
  EXPECT_DEBUG_DEATH(EXPECT_EQ(1, TnumberSequence(3, -1, 3)(0)), "step");
}
