// Vectors and matrices in the hands of the standard library: exchanging, sorting, containers.
#include <algorithm>
#include <gtest/gtest.h>
#include <ranges>
#include <utility>
#include <vector>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntGenMat.h>
#include <kilnbase/linalg/Owned.h>

using vxKilnBase::Owned;

namespace {

template <class A, class B>
concept Multiplied = requires(const A& a, const B& b) {
  a* b;
};
static_assert(!Multiplied<DoubleGenMat, DoubleVec>);
static_assert(Multiplied<IntVec, DoubleVec>);

// Vectors and matrices of different sizes, one for each number.
template <class View>
View sample(int i) {
  const auto number = static_cast<unsigned>(i);
  if constexpr (std::is_same_v<View, DoubleVec>)
    return DoubleVec(1 + number % 5, i);
  else
    return DoubleGenMat(1 + number % 3, 1 + number % 4, i);
}

// The number of a sample.
int key(const DoubleVec& v) {
  return static_cast<int>(v(0));
}

template <class View>
class Views : public testing::Test {
 protected:
  static void expectSamples(const auto& expected, const auto& views) {
    ASSERT_EQ(expected.size(), views.size());
    for (std::size_t i = 0; i < views.size(); ++i) {
      EXPECT_EQ(sample<View>(expected[i]), views[i]) << i;
    }
  }
};
using Kinds = testing::Types<DoubleVec, DoubleGenMat>;
TYPED_TEST_SUITE(Views, Kinds);

}  // namespace

TYPED_TEST(Views, EveryWayOfSwappingExchangesEverything) {
  TypeParam a = sample<TypeParam>(3), b = sample<TypeParam>(7), viewOfA = a;
  std::swap(a, b);
  viewOfA *= 2.0;  // b has the elements, not a copy of them
  EXPECT_EQ(sample<TypeParam>(7), a);
  EXPECT_EQ(sample<TypeParam>(3) * 2.0, b);
  swap(a, b);
  EXPECT_EQ(sample<TypeParam>(7), b);
  std::ranges::swap(a, b);
  swap(a, a);
  EXPECT_EQ(sample<TypeParam>(7), a);
}

TYPED_TEST(Views, MovedViewsTakeAnyAssignmentOthersCopyElements) {
  using View = TypeParam;
  View a = sample<View>(3), view = a;
  const View c = sample<View>(7);
  a = sample<View>(3) * 2.0;  // a temporary
  EXPECT_EQ(a, view);
  const View b = std::move(a);
  EXPECT_EQ(View(), a);  // NOLINT(bugprone-use-after-move): what the test is about
  a = c;
  a *= 2.0;
  EXPECT_EQ(sample<View>(7), c);
  EXPECT_EQ(sample<View>(7) * 2.0, a);
  EXPECT_EQ(view, b);
}

TYPED_TEST(Views, SortAndInsertInPlainContainers) {
  using View = TypeParam;
  std::vector<View> views;
  std::vector<int> expected;
  for (int i = 0; i < 100; ++i) {
    views.insert(views.begin() + i / 2, sample<View>(i * 37 % 100));
    expected.insert(expected.begin() + i / 2, i * 37 % 100);
  }
  this->expectSamples(expected, views);
  std::ranges::stable_sort(views, {}, [](const View& v) { return key(v); });
  std::ranges::sort(expected);
  this->expectSamples(expected, views);
  // Views copy elements into the place of an erased one. Owned ones change places.
  std::vector<Owned<View>> owned(views.begin(), views.end());
  owned.erase(owned.begin() + 3);
  expected.erase(expected.begin() + 3);
  std::ranges::rotate(owned, owned.begin() + 40);
  std::ranges::rotate(expected, expected.begin() + 40);
  this->expectSamples(expected, owned);
}

TYPED_TEST(Views, OwnedElementsAreTheirOwn) {
  using View = TypeParam;
  View shared = sample<View>(3);
  const double* before = shared.data();
  Owned<View> a = shared, b = a, taken = sample<View>(4);
  shared *= 2.0;
  a *= 3.0;
  EXPECT_EQ(sample<View>(3) * 3.0, a);
  EXPECT_EQ(sample<View>(3), b);
  const View view = b;
  b = sample<View>(7);
  b = *&b;
  EXPECT_EQ(sample<View>(7), b);
  EXPECT_EQ(sample<View>(3), view);
  const double* elements = b.data();
  taken = std::move(b);
  EXPECT_EQ(sample<View>(7), taken);
  EXPECT_EQ(elements, taken.data());      // not copied
  Owned<View> moved = std::move(shared);  // alone: not copied
  EXPECT_EQ(before, moved.data());
}
