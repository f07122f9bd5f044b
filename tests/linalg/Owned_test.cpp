// Vectors and matrices in the hands of the standard library: exchanging, sorting, containers.
#include <algorithm>
#include <gtest/gtest.h>
#include <random>
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
static_assert(!Multiplied<DoubleVec, DoubleGenMat>);
static_assert(!Multiplied<IntGenMat, DoubleVec>);
static_assert(Multiplied<IntGenMat, DoubleGenMat>);
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
int key(int i) {
  return i;
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
  using View = TypeParam;
  using Swap = void (*)(View&, View&);
  const Swap ways[] = {[](View& a, View& b) { std::swap(a, b); },
                       [](View& a, View& b) { swap(a, b); },
                       [](View& a, View& b) { std::ranges::swap(a, b); }};
  for (const Swap way : ways) {
    View a = sample<View>(3), b = sample<View>(7), viewOfA = a;
    way(a, b);
    EXPECT_EQ(sample<View>(7), a);
    viewOfA *= 2.0;  // b has the elements, not a copy of them
    EXPECT_EQ(sample<View>(3) * 2.0, b);
    way(a, a);
    EXPECT_EQ(sample<View>(7), a);
  }
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
  std::ranges::stable_sort(views, std::ranges::greater(), [](const View& v) { return key(v); });
  std::ranges::sort(expected, std::ranges::greater());
  this->expectSamples(expected, views);
  std::sort(views.begin(), views.end(), [](auto& a, auto& b) { return key(a) < key(b); });
  std::ranges::sort(expected);
  this->expectSamples(expected, views);
}

TYPED_TEST(Views, OwnedOnesDoWhateverNumbersDo) {
  using View = TypeParam;
  std::mt19937 random(8);
  std::vector<Owned<View>> owned;
  std::vector<int> expected;
  const auto both = [&](auto step) {
    step(owned, [](int i) { return Owned<View>(sample<View>(i)); });
    step(expected, [](int i) { return i; });
  };
  const auto remainder = [](const auto& x) { return key(x) % 3; };
  for (int i = 0; i < 500; ++i) {
    const auto step = random() % 8;
    const auto place = [at = random()](auto& list) {
      return list.begin() + static_cast<int>(at % (list.size() + 1));
    };
    both([&](auto& list, auto make) {
      if (step < 5) list.insert(place(list), make(i));
      if (step == 5 && place(list) != list.end()) list.erase(place(list));
      if (step == 6) std::ranges::rotate(list, place(list));
      if (step == 7) std::ranges::stable_sort(list, {}, remainder);
      if (list.size() > 40) {
        std::erase_if(list, [&](const auto& x) { return remainder(x) == 1; });
        list = std::vector(list);
      }
    });
    this->expectSamples(expected, owned);
  }
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
