#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

#include <kilnbase/auto/containers/TnumberSequence.h>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

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

// Swaps neighbours, from the back, until the smallest of the rest stands at each place in turn.
template <class T>
void exchangeSort(std::vector<T>& v) {
  for (std::size_t p = 0; p < v.size(); ++p) {
    for (std::size_t i = v.size() - 1; i > p; --i) {
      if (v[i - 1] > v[i]) std::swap(v[i - 1], v[i]);
    }
  }
}

// The interval search, value by value.
int searchedInterval(const std::vector<double>& values, double t, int left) {
  const int n = static_cast<int>(values.size());
  const auto value = [&](int i) { return values[static_cast<std::size_t>(i)]; };
  int k = 0;
  while (k < n && !(value(k) > t)) ++k;
  int r = k - 1;
  if (left == 0 || r < 1) return r;
  do {
    --r;
  } while (!(value(r + 1) > value(r) || r < 1));
  return r;
}

}  // namespace

TEST(TnumberSequence, FindsIntervals) {
  const std::vector<double> cases[] = {{},
                                       {1},
                                       {0, 1, 2, 3},
                                       {0, 0, 0, 1, 1, 2},
                                       {0, 0, 0},
                                       {0, 1, 1, 1},
                                       {-kInfinity, 0, kInfinity}};
  for (const std::vector<double>& values : cases) {
    for (const double t : {-kInfinity, -1.0, 0.0, 0.5, 1.0, 1.5, 2.0, 3.0, 5.0, kInfinity, kNaN}) {
      for (const int left : {0, 1, -1}) {
        EXPECT_EQ(searchedInterval(values, t, left), sequence(values).findInterval(t, left))
            << t << " in " << testing::PrintToString(values) << ", left " << left;
      }
    }
  }
  EXPECT_EQ(4, sequence(cases[3]).findInterval(1.5, 0));
  EXPECT_EQ(2, sequence(cases[3]).findInterval(1.0, 1));
  EXPECT_EQ(0, sequence(cases[2]).findInterval(1.0, 1));
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
  s.add(5.0, -3);
  EXPECT_EQ(values, listed(s));
  s.add(s.data());
  EXPECT_EQ(14, s.length());
}

TEST(TnumberSequence, CopiesAreIndependentAndReferencesDetachOnEdits) {
  const DoubleVec source = vec({3, 1, 2});
  TnumberSequence s = source;
  EXPECT_THAT(listed(s), ElementsAre(1, 2, 3));
  EXPECT_THAT(listed(source), ElementsAre(3, 1, 2));
  TnumberSequence shared;
  shared.reference(s);
  EXPECT_EQ(s.data().data(), shared.data().data());
  const TnumberSequence copy = s;
  EXPECT_NE(s.data().data(), copy.data().data());
  shared.add(0, 1);
  EXPECT_THAT(listed(s), ElementsAre(1, 2, 3));
  shared.reference(s);
  shared.remove(0);
  EXPECT_THAT(listed(s), ElementsAre(1, 2, 3));
  shared.reference(s);
  shared.deepenShallowCopy();
  EXPECT_NE(s.data().data(), shared.data().data());
  shared = TnumberSequence(0.5, 0.25, 4);
  EXPECT_THAT(listed(shared), ElementsAre(0.5, 0.75, 1.0, 1.25));
  shared = *&shared;
  EXPECT_EQ(4, shared.length());
  shared = TnumberSequence();
  EXPECT_EQ(0, shared.length());
}

TEST(TnumberSequence, BreakpointsAndTheirMultiplicities) {
  const TnumberSequence s = sequence({0, 0, 0, 1, 1, 2});
  EXPECT_THAT(listed(s.breakpoints()), ElementsAre(0, 1, 2));
  EXPECT_THAT(listed(s.multiplicities()), ElementsAre(3, 2, 1));
  const int expected[] = {-1, 0, 0, 0, 1, 1, 2, -1};
  for (int i = -1; i <= 6; ++i) EXPECT_EQ(expected[i + 1], s.whichBreakpoint(i)) << i;
  EXPECT_THAT(listed(TnumberSequence().breakpoints()), IsEmpty());
  EXPECT_THAT(listed(TnumberSequence().multiplicities()), IsEmpty());
}

TEST(TnumberSequence, ExtraValuesAreThoseThatTheOtherLacks) {
  struct Case {
    std::vector<double> a, b;
    double tol;
    std::vector<double> extra;
  };
  const Case cases[] = {
      {{}, {1, 2}, 0.1, {1, 2}},
      {{1, 2}, {}, 0.1, {}},
      {{0, 1, 1, 3}, {0, 0, 1, 1, 1, 2, 4}, 0, {0, 1, 2, 4}},
      {{1, 2, 3}, {1.25, 1.5, 2.5, 3.5}, 0.25, {1.5, 2.5, 3.5}},
      {{0, 1}, {-0.5, 0.5}, 0.5, {}},
      {{0, 0.5, 1}, {0.75, 0.75, 0.75}, 0.25, {0.75}},
      {{-kInfinity, kInfinity}, {-kInfinity, kInfinity, kInfinity}, 1, {kInfinity}},
  };
  for (const Case& c : cases) {
    EXPECT_THAT(listed(TnumberSequence::extra(sequence(c.a), sequence(c.b), c.tol)),
                ElementsAreArray(c.extra));
  }
}

TEST(TnumberSequence, SortingAViewTouchesItsElementsOnly) {
  std::mt19937 random(21);
  for (const int stride : {1, 3, -2}) {
    for (const unsigned n : {0U, 1U, 2U, 50U}) {
      IntVec ints(200, 99);
      DoubleVec doubles(200, 99.0);
      IntVec intView = ints.slice(stride < 0 ? 150 : 10, n, stride);
      DoubleVec view = doubles.slice(stride < 0 ? 150 : 10, n, stride);
      std::vector<int> expectedInts;
      std::vector<double> expected;
      for (int i = 0; i < static_cast<int>(n); ++i) {
        intView(i) = static_cast<int>(random() % 9) - 4;
        view(i) = random() % 2 == 0 ? intView(i) : -0.0;
        expectedInts.push_back(intView(i));
        expected.push_back(view(i));
      }
      TnumberSequence::sortIntVecInPlace(intView);
      TnumberSequence::sortDoubleVecInPlace(view);
      exchangeSort(expectedInts);
      exchangeSort(expected);
      EXPECT_EQ(expectedInts, listed(intView));
      for (int i = 0; i < static_cast<int>(n); ++i) {
        const double value = expected[static_cast<std::size_t>(i)];
        EXPECT_TRUE(view(i) == value && std::signbit(view(i)) == std::signbit(value));
      }
      EXPECT_EQ(200 - n, doubles.slice(0, 200).countValue(99.0, 0.0));
    }
  }
}

TEST(TnumberSequence, NaNsComeLast) {
  std::vector<double> values(300);
  for (std::size_t i = 0; i < 300; ++i) values[i] = i % 3 == 0 ? kNaN : 300.0 - double(i);
  TnumberSequence s = sequence(values);
  for (int i = 0; i < 300; ++i) EXPECT_EQ(i >= 200, std::isnan(s(i)));
  EXPECT_EQ(199, s.findInterval(1e9, 0));
  s.add(kNaN, 2);
  s.add(1e9, 1);
  EXPECT_EQ(1e9, s(200));
  EXPECT_EQ(303, s.length());
  EXPECT_EQ(303U, TnumberSequence::extra(TnumberSequence(), s, 1.0).length());
}

TEST(TnumberSequence, HasNoTextForm) {
  TnumberSequence s(0, 1, 3);
  std::stringstream stream("1 2");
  s.printOn(stream);
  s.printRaw(stream);
  EXPECT_EQ(0, s.readRaw(stream));
  EXPECT_EQ("1 2", stream.str());
  EXPECT_EQ(0, stream.tellg());
}
