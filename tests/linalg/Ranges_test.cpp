// Vectors and matrices as ranges, from lists and from contiguous memory.
#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>
#include <ranges>
#include <span>
#include <type_traits>
#include <vector>

#include <kilnbase/linalg/DoubleChDecomp.h>
#include <kilnbase/linalg/DoubleGenFact.h>
#include <kilnbase/linalg/DoubleLeastSqQR.h>
#include <kilnbase/linalg/DoubleSymMat.h>
#include <kilnbase/linalg/DoubleUpperTriMat.h>
#include <kilnbase/linalg/IntGenMat.h>
#include <kilnbase/linalg/Owned.h>
#include <kilnbase/linalg/vecmath.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using namespace kilntest;
using testing::ElementsAre;
using testing::ElementsAreArray;
using namespace vxKilnBase;

namespace {

template <class Range>
constexpr bool kRandomAccess =
    std::ranges::random_access_range<Range>&& std::ranges::sized_range<Range>;
static_assert(kRandomAccess<DoubleVec> && kRandomAccess<const SCharVec>);
static_assert(kRandomAccess<VecPick<int>> && kRandomAccess<const VecPick<int>>);
static_assert(kRandomAccess<DoubleSymMat> && kRandomAccess<const DoubleGenMat>);
static_assert(kRandomAccess<decltype(DoubleGenMat().eachRow())>);
static_assert(std::is_convertible_v<DoubleVec::iterator, DoubleVec::const_iterator>);
static_assert(!std::is_convertible_v<DoubleVec::const_iterator, DoubleVec::iterator>);
static_assert(std::same_as<std::ranges::range_reference_t<const DoubleVec>, const double&>);
static_assert(std::same_as<std::ranges::range_reference_t<const VecPick<int>>, const int&>);
static_assert(!std::sortable<decltype(DoubleGenMat().eachRow().begin())>);

// What makes a vector or matrix, and what does not.
template <class V, class... Arguments>
constexpr bool kMakes = std::is_constructible_v<V, Arguments...>;
static_assert(kMakes<DoubleVec, std::vector<double>> && kMakes<IntVec, std::span<const int>>);
static_assert(kMakes<DoubleVec, const std::array<double, 3>&> && kMakes<DoubleVec, double (&)[3]>);
static_assert(!kMakes<DoubleVec, std::vector<float>> && !kMakes<SCharVec, std::string>);
static_assert(!kMakes<DoubleVec, std::vector<DoubleVec>> && !kMakes<DoubleGenMat, DoubleVec>);
static_assert(!std::is_convertible_v<std::vector<double>, DoubleVec>);
static_assert(!std::is_convertible_v<double, DoubleVec> && !std::is_convertible_v<int, IntVec>);
static_assert(!kMakes<DoubleSymMat, std::initializer_list<double>>);

DoubleVec defaulted(const DoubleVec& v = {}) {
  return v;
}

}  // namespace

TEST(Ranges, IteratorsWalkEveryStrideAsLoopsDo) {
  for (const int stride : {1, 2, -1, -3, 0}) {
    DoubleVec v = counting<double>(13).slice(stride < 0 ? 12 : 0, 5, stride);
    std::vector<double> looped;
    for (int i = 0; i < 5; ++i) looped.push_back(v(i));
    EXPECT_THAT(v, ElementsAreArray(looped)) << stride;
    EXPECT_EQ(&v(3), &*(v.end() - 2));
    EXPECT_EQ(looped[3], v.cend()[-2]);
    EXPECT_THAT(std::vector<double>(v.crbegin(), v.crend()),
                ElementsAreArray(looped.rbegin(), looped.rend()));
    std::ptrdiff_t i = 0;
    for (auto at = v.cbegin(); at <= v.cend(); at++, ++i) {
      EXPECT_EQ(i, at - v.begin());
      EXPECT_EQ(i < 3, at < v.begin() + 3);
    }
    EXPECT_EQ(6, i);
    auto last = v.end();
    EXPECT_EQ(v.end(), last--);
    EXPECT_EQ(4 + v.begin(), last);
    EXPECT_FALSE(v.end() == last);
  }
}

TEST(Ranges, AlgorithmsWorkThroughViewsAndTemporaries) {
  DoubleGenMat a{{9, 8, 7}, {2, 6, 4}};
  std::ranges::sort(a.row(1));
  std::sort(a.row(0).rbegin(), a.row(0).rend());
  for (double& x : a.col(2)) x = -x;
  EXPECT_THAT(a, ElementsAre(9, 2, 8, 4, -7, -6));  // column by column
  EXPECT_EQ(9, *std::ranges::max_element(a));
  EXPECT_EQ(10, std::accumulate(a.begin(), a.end(), 0.0));
  const DoubleVec column = a.col(0);
  std::ranges::transform(column, a.row(0).begin(), [](double x) { return 2 * x; });
  EXPECT_THAT(a.row(0), ElementsAre(18, 4, -7));
  for (int& x : IntVec{1, 2, 3}.vecPick({2, 2, 0})) x += 1;

  IntVec v{5, 6, 7, 8};
  VecPick<int> pick = v.vecPick({3, 0, 1});
  EXPECT_THAT(pick, ElementsAre(8, 5, 6));
  std::ranges::sort(pick);
  EXPECT_THAT(v, ElementsAre(6, 8, 7, 5));
  EXPECT_EQ(3, pick.cend() - pick.cbegin());
  const VecPick<int>::const_iterator first = pick.begin();
  EXPECT_EQ(pick(0), *first);
  EXPECT_THAT(DoubleSymMat({1, 2, 3}, 2, 2), ElementsAre(1, 2, 3));  // what is stored
}

TEST(Ranges, RowsAndColumnsAreViewsThatKeepTheMatrix) {
  DoubleGenMat a{{1, 2}, {3, 4}, {5, 6}};
  for (DoubleVec row : a.eachRow()) row *= 10.0;
  for (DoubleVec col : a.eachCol()) col(0) += 1;
  EXPECT_THAT(a, ElementsAre(11, 30, 50, 21, 40, 60));
  const auto sumOf = [](const DoubleVec& row) { return sum(row); };
  auto longest = std::ranges::max_element(a.copy().eachRow(), {}, sumOf);  // nobody else's matrix
  auto other = a.eachRow().begin();
  EXPECT_THAT(*longest, ElementsAre(50, 60));
  other = longest;  // rebinds
  EXPECT_THAT(other[-2], ElementsAre(11, 21));
  other = DoubleGenMat{{7, 8}}.eachRow().begin();
  EXPECT_THAT(*other, ElementsAre(7, 8));
  EXPECT_THAT(a.row(0), ElementsAre(11, 21));
  EXPECT_EQ(3, std::ranges::ssize(a.eachRow()));
  EXPECT_EQ(2, std::ranges::ssize(a.eachCol()));
}

TEST(Ranges, BracesListElementsAndParenthesesKeepTheirMeaning) {
  EXPECT_THAT((DoubleVec{3, 1}), ElementsAre(3, 1));
  EXPECT_THAT((DoubleVec{3, 1, 2}), ElementsAre(3, 1, 2));
  EXPECT_THAT(DoubleVec(3, 1, 2), ElementsAre(1, 3, 5));
  EXPECT_THAT(DoubleVec(2, 7.0), ElementsAre(7, 7));
  EXPECT_THAT(SCharVec{4}, ElementsAre(4));
  EXPECT_EQ(4U, SCharVec(4).length());
  EXPECT_EQ(0U, DoubleVec{}.length());
  EXPECT_EQ(0U, defaulted().length());
  EXPECT_THAT(defaulted({1, 2}), ElementsAre(1, 2));
  DoubleVec v{1, 2}, view{v};
  v = {3, 4};
  EXPECT_THAT(view, ElementsAre(3, 4));
  v = {5};  // as v = 5
  EXPECT_THAT(view, ElementsAre(5, 5));
  v += {1, 2};
  v = {};
  EXPECT_THAT(view, ElementsAre(0, 0));

  EXPECT_EQ(6U, (DoubleGenMat{2, 3}.length()));
  EXPECT_THAT((DoubleGenMat{2, 1, 4.0}), ElementsAre(4, 4));
  EXPECT_THAT((DoubleGenMat{v, 1, 2}), ElementsAre(0, 0));
  EXPECT_THAT((IntGenMat{{1, 2}, {3, 4}}), ElementsAre(1, 3, 2, 4));
  EXPECT_EQ(1U, (IntGenMat{{1, 2}}.rows()));
  EXPECT_EQ(2U, (IntGenMat{{1}, {2}}.rows()));
  EXPECT_EQ(2U, (IntGenMat{{}, {}}.rows()));
  EXPECT_EQ(0U, DoubleGenMat{}.rows());
  DoubleGenMat a(3, 2);
  a = {{1, 2}, {3, 4}, {5, 6}};
  a = a.matPick({2, 1, 0}, {0, 1});
  EXPECT_THAT(a.col(0), ElementsAre(5, 3, 1));
  EXPECT_THAT(toSymMat({{4, 1}, {3, 5}}), ElementsAre(4, 2, 5));
  EXPECT_THAT(toUpperTriMat({{4, 1}, {0, 5}}), ElementsAre(4, 1, 5));
  const std::vector<Owned<DoubleVec>> owned{{1, 2}, {3}};
  EXPECT_THAT(owned[0], ElementsAre(1, 2));
  EXPECT_THAT((Owned<DoubleGenMat>{{1, 2}, {3, 4}}), ElementsAre(1, 3, 2, 4));
  EXPECT_NE(DoubleVec{1}, DoubleVec{});

  const DoubleGenMat diagonal{{4, 0}, {0, 16}};
  EXPECT_THAT(DoubleGenFact(diagonal).solve({4, 32}), ElementsAre(1, 2));
  EXPECT_THAT(DoubleGenFact(diagonal).solve({{4, 8}, {32, 16}}), ElementsAre(1, 2, 2, 1));
  EXPECT_THAT(DoubleChDecomp(diagonal).solve({4, 32}), ElementsAre(1, 2));
  EXPECT_THAT(DoubleQRDecomp(diagonal).solve({4, 32}), ElementsAre(1, 2));
  EXPECT_THAT(DoubleLeastSqQR(diagonal).solve({4, 32}), ElementsAre(1, 2));
}

TEST(Ranges, ContiguousRangesAreCopiedAndUnitStridesAreSpans) {
  const std::vector<double> values = {1, 2, 3};
  DoubleVec v(values);
  v.span()[1] = 9;
  EXPECT_THAT(v, ElementsAre(1, 9, 3));
  EXPECT_THAT(values, ElementsAre(1, 2, 3));
  EXPECT_THAT(DoubleVec(std::span(values).last(2)), ElementsAre(2, 3));
  EXPECT_EQ(0U, DoubleVec(std::vector<double>()).length());
  EXPECT_EQ(0U, DoubleVec().span().size());
  const DoubleVec reversed = reverse(v);
  expectErrors({{[&] { EXPECT_TRUE(reversed.span().empty()); }, kStrideError,
                 "[STRIDE: DoubleVec]: Stride must be 1", 0x900E}});
}

TEST(Ranges, ShortRowsOfListsAreErrorsAndLoseNothing) {
  expectErrors(
      {{[&] {
          EXPECT_THAT((IntGenMat{{1, 2}, {3}, {4, 5}}), ElementsAre(1, 3, 4, 2, 0, 5));
        },
        kVectorLengthsError, "[VNMATCH: IntGenMat]: Vector lengths do not match (2 vs 1)"},
       {[&] {
          EXPECT_THAT((IntGenMat{{1, 2}, {3}}), ElementsAre(1, 3, 2, 0));
        },
        kVectorLengthsError, "[VNMATCH: IntGenMat]: Vector lengths do not match (2 vs 1)"}});
}
