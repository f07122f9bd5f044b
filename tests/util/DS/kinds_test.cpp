// The behaviour that the four kinds of structures share.

#include <algorithm>
#include <cstddef>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <utility>

#include <kilnbase/util/DS/ds_structures.h>

#include "tests/util/DS/Structures.h"

using namespace kilntest;
using testing::ElementsAre;

namespace {

int byDifference(const void* a, const void* b) {
  return static_cast<int>(numberAt(a) / 10 - numberAt(b) / 10);
}

// A structure and the numbers that must be in it, changed side by side.
struct Model {
  void add(std::intptr_t n) {
    const StatusCode before = n % 5 == 0 ? MR_CANNOT_SORT : MR_ITEM_NOT_FOUND;
    const StatusCode added = s->comparator == nullptr ? MR_CANNOT_SORT : before;
    StatusCode status = before;
    s->ordered = 1;
    EXPECT_EQ(shows(n), m.add(s.get(), item(n), n % 3 == 0 ? nullptr : &status));
    EXPECT_EQ(n % 3 == 0 ? before : shows(n) ? added : MR_ITEM_FILTERED, status);
    const auto place = std::ranges::find_if(
        numbers, [&](auto other) { return s->comparator && compare(n, other) != 1; });
    if (!shows(n)) return;
    numbers.insert(place, n);
    EXPECT_EQ(n % 3 != 0 && status != MR_CANNOT_SORT, s->ordered) << "after adding " << n;
  }

  void remove(std::intptr_t n) {
    m.remove(s.get(), item(n), nullptr, nullptr, nullptr);
    const auto found = std::ranges::find(numbers, n);
    if (shows(n) && found != numbers.end()) numbers.erase(found);
  }

  void replace(std::intptr_t n, std::intptr_t by) {
    DS_Position position = m.find(s.get(), nullptr, item(n), nullptr);
    if (position == nullptr) return;
    m.set_data(position, item(by), nullptr);
    *std::ranges::find(numbers, n) = by;
  }

  void sort() {
    if (numbers.empty()) return;
    s->ordered = 0;
    EXPECT_EQ(1, m.sort(s.get(), nullptr));
    EXPECT_EQ(1, s->ordered);
    const DS_Filter filter = std::exchange(s->filter, nullptr);
    const Numbers before = std::exchange(numbers, contents(s));
    s->filter = filter;
    EXPECT_TRUE(std::ranges::is_sorted(numbers, [&](auto a, auto b) { return compare(a, b) < 0; }));
    EXPECT_THAT(numbers, testing::UnorderedElementsAreArray(before));
  }

  void check() const {
    Numbers shown = numbers, backward;
    std::erase_if(shown, [&](auto n) { return !shows(n); });
    ASSERT_EQ(shown, contents(s));
    ASSERT_EQ(std::ssize(shown), m.enumerate(s.get(), nullptr));
    DS_Position at = m.tail(s.get(), nullptr);
    for (; at; at = m.prev(s.get(), at, nullptr)) backward.push_back(numberAt(at));
    std::ranges::reverse(shown);
    ASSERT_EQ(shown, backward);
  }

  int compare(std::intptr_t a, std::intptr_t b) const {
    const Slot left{item(a)}, right{item(b)};
    return s->comparator(&left, &right);
  }

  bool shows(std::intptr_t n) const { return !s->filter || s->filter(item(n)) != 0; }

  Owned s;
  const DS_Methods& m = *s->methods;
  Numbers numbers = {};
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(All, Kinds, testing::Values(DS_DLIST, DS_SLIST, DS_BINTREE, DS_ARRAY));

TEST_P(Kinds, BehaveLikeASequenceUnderRandomOperations) {
  const DS_Comparator comparators[] = {
      Ds_default_comparator,
      byDifference,
      [](const void* a, const void* b) { return std::clamp(byDifference(a, b), -1, 1); },
      nullptr,
      Ds_fifo_comparator,
      Ds_filo_comparator};
  const DS_Filter filters[] = {nullptr, nullptr, isEven, isSmall};
  std::mt19937 random(1);
  const auto below = [&](std::size_t n) { return random() % n; };
  std::size_t range = 200, used = 0;
  const auto anyNumber = [&] { return static_cast<std::intptr_t>(1 + below(range)); };
  Model model = {make()};
  for (int round = 0; round < 1000 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    if (below(8) == 0) {
      EXPECT_EQ(1, DS_empty_list(model.s.get(), nullptr, nullptr, nullptr));
      model.numbers.clear();
    }
    if (below(4) == 0) range = below(2) == 0 ? 40 : 1000;
    if (below(3) == 0) used = below(std::size(comparators));
    model.s->comparator = comparators[used];
    if (below(4) == 0) model.s->filter = filters[below(std::size(filters))];
    if (below(4) == 0 && used < 3) model.sort();  // these comparators order
    for (std::size_t i = below(40); i > 30; --i) model.replace(anyNumber(), anyNumber());
    for (std::size_t i = below(80); i > 0; --i) model.add(anyNumber());
    for (std::size_t i = below(60); i > 0; --i) model.remove(anyNumber());
    model.check();
  }
}

TEST_P(Kinds, CallbacksAndLookupsSeeNoHiddenItem) {
  const Owned s = make({2, 3, 4, 5, 6});
  s->filter = isEven;
  const DS_Methods& m = *s->methods;
  const auto walk = [&](int limit, int direction, StatusCode code) {
    const DS_WalkFn visit = [](void* it, void* user, StatusCode*) {
      static_cast<Numbers*>(user)->push_back(number(it));
      return number(it) == 4 ? 0 : 1;
    };
    Numbers visited;
    EXPECT_EQ(code == MR_NO_ERROR, m.walk(s.get(), visit, &visited, limit, direction, &status_));
    EXPECT_EQ(code, std::exchange(status_, MR_NO_ERROR));
    return visited;
  };
  EXPECT_THAT(walk(-1, 0, MR_WALK_TERMINATED), ElementsAre(2, 4, 6));
  EXPECT_THAT(walk(-1, 1, MR_WALK_TERMINATED), ElementsAre(6, 4, 2));
  EXPECT_THAT(walk(1, 0, MR_NO_ERROR), ElementsAre(2));
  EXPECT_THAT(walk(-1, 2, MR_ARGUMENT_ERROR), testing::IsEmpty());
  EXPECT_EQ(1, m.walk(s.get(), Ds_enumerate, nullptr, -1, 0, &status_));
  EXPECT_EQ(3, std::exchange(status_, MR_NO_ERROR)) << "counted in the place of the user";

  const DS_FreeFn zero = [](DS_Position position, void* user) {
    static_cast<Numbers*>(user)->push_back(numberAt(position));
    static_cast<Slot*>(position)->item = nullptr;
    return 1;
  };
  Numbers freed;
  EXPECT_EQ(4, numberAt(m.remove(s.get(), item(2), zero, &freed, &status_)));
  const auto isLarge = longForm<DS_MatchFn>(+[](const void* it) { return number(it) > 4 ? 1 : 0; });
  EXPECT_EQ(m.tail(s.get(), nullptr), m.find(s.get(), isLarge, nullptr, nullptr));
  EXPECT_EQ(nullptr, m.find(s.get(), nullptr, item(3), &status_));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status_);
  EXPECT_EQ(nullptr, m.remove(s.get(), item(6), zero, &freed, &status_)) << "no later one is shown";
  m.destructor(s.get(), zero, &freed, nullptr);
  EXPECT_THAT(freed, ElementsAre(2, 6, 3, 4, 5));
}

TEST(Structures, MisuseIsTold) {
  const Owned s = makeStructure(DS_SLIST), array = makeStructure(DS_ARRAY, {1});
  const DS_Methods& m = *s->methods;
  expectCodes({
      {"enumerate", [&](auto code) { return m.enumerate(nullptr, code) == -1; }},
      {"sort nothing", [&](auto code) { return m.sort(s.get(), code) == 0; }},
      {"next", [&](auto code) { return !m.next(s.get(), nullptr, code); }},
      {"tail", [&](auto code) { return !m.tail(s.get(), code); }, MR_UNEXPECTED_NULL_STRUCTURE},
      {"merge", [&](auto code) { return !m.merge(s.get(), array.get(), code); },
       MR_INCOMPATIBILITY},
  });
}

// The layouts are part of the interface: applications fill in tables and headers themselves.
static_assert(sizeof(DS_Methods) == 24 * sizeof(void*));
static_assert(offsetof(DS_Structure, methods) == 4 * sizeof(void*));

TEST(BinaryTree, AsksOnItsWayDownWhateverTheOrderOfAdding) {
  static std::int64_t questions;
  const DS_Comparator counting = [](const void* a, const void* b) {
    ++questions;
    return Ds_default_comparator(a, b);
  };
  const std::intptr_t n = 100000;
  for (const int direction : {1, -1}) {
    const Owned s = makeStructure(DS_BINTREE, {}, counting);
    const auto add = [&](std::intptr_t k) { s->methods->add(s.get(), item(k), nullptr); };
    questions = 0;
    for (std::intptr_t i = 1; i <= n; ++i) add(n + direction * i + 1);
    EXPECT_LT(questions, n * 30);
    s->comparator = Ds_fifo_comparator;
    add(1);
    s->comparator = counting;
    EXPECT_EQ(1, s->methods->sort(s.get(), nullptr));
    questions = 0;
    for (std::intptr_t i = 1; i <= 100; ++i) add(3 * n + i);
    EXPECT_LT(questions, 100 * 30) << "sorting makes a tree quick again";
  }
}
