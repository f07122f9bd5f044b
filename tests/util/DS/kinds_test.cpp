// What the four kinds of structures have in common.

#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <random>

#include <kilnbase/util/DS/ds_structures.h>

#include "tests/util/DS/Structures.h"

using kilntest::contents;
using kilntest::isEven;
using kilntest::isSmall;
using kilntest::item;
using kilntest::longForm;
using kilntest::makeStructure;
using kilntest::number;
using kilntest::numberAt;
using kilntest::Numbers;
using kilntest::Owned;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

bool memoryIsShort = false;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return memoryIsShort ? nullptr : ::operator new(size);
}
[[gnu::noinline]] void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return memoryIsShort ? nullptr : ::operator new[](size);
}

namespace {

int byNumber(const void* a, const void* b) {
  return Ds_default_comparator(a, b);
}

int byTens(const void* a, const void* b) {
  const std::intptr_t left = numberAt(a) / 10, right = numberAt(b) / 10;
  return static_cast<int>(left > right) - static_cast<int>(left < right);
}

int byTensDownwards(const void* a, const void* b) {
  return byTens(b, a);
}

int byDifference(const void* a, const void* b) {
  return static_cast<int>(numberAt(a) / 10 - numberAt(b) / 10);
}

int byWhim(const void* a, const void* b) {
  return static_cast<int>((numberAt(a) * 31 + numberAt(b) * 17) % 3) - 1;
}

int byTwo(const void*, const void*) {
  return 2;
}

int isEqualTo(const void* item, const void* wanted) {
  return item == wanted ? 1 : 0;
}

class Kinds : public testing::TestWithParam<int> {
 protected:
  Owned make(const Numbers& numbers = {}, DS_Comparator comparator = Ds_fifo_comparator) const {
    return makeStructure(GetParam(), numbers, comparator);
  }

  // The code that an operation leaves, 0 before.
  StatusCode codeOf(const std::function<void(StatusCode*)>& operation) {
    StatusCode status = MR_NO_ERROR;
    operation(&status);
    return status;
  }

  StatusCode status_ = MR_NO_ERROR;
};

bool ordersItems(DS_Comparator comparator) {
  return comparator == byNumber || comparator == byTens || comparator == byTensDownwards ||
         comparator == byDifference;
}

// A structure and what must be in it, changed side by side.
class Model {
 public:
  explicit Model(int kind) : structure_(makeStructure(kind)) {}

  const DS_Structure* structure() const { return structure_.get(); }

  void use(DS_Comparator comparator) { structure_->comparator = comparator; }
  void use(DS_Filter filter) { structure_->filter = filter; }

  void add(std::intptr_t n) {
    const bool shown = shows(n);
    StatusCode status = MR_NO_ERROR;
    EXPECT_EQ(shown, methods().add(structure_.get(), item(n), &status));
    EXPECT_EQ(!shown                              ? MR_ITEM_FILTERED
              : structure_->comparator == nullptr ? MR_CANNOT_SORT
                                                  : MR_NO_ERROR,
              status);
    if (shown) numbers_.insert(place(n), n);
  }

  void remove(std::intptr_t n) {
    const auto found =
        std::find_if(numbers_.begin(), numbers_.end(), [&](auto m) { return m == n && shows(m); });
    StatusCode status = MR_NO_ERROR;
    DS_Position next = methods().remove(structure_.get(), item(n), nullptr, nullptr, &status);
    ASSERT_EQ(found == numbers_.end() ? MR_ITEM_NOT_FOUND : MR_NO_ERROR, status);
    if (found == numbers_.end()) return;
    const auto behind = numbers_.erase(found);
    const auto later = std::find_if(behind, numbers_.end(), [&](auto m) { return shows(m); });
    ASSERT_EQ(later == numbers_.end(), next == nullptr);
    EXPECT_TRUE(next == nullptr || numberAt(next) == *later);
  }

  void replace(std::intptr_t n, std::intptr_t by) {
    DS_Position position = methods().find(structure(), nullptr, item(n), nullptr);
    if (position == nullptr) return;
    methods().set_data(position, item(by), nullptr);
    *std::find(numbers_.begin(), numbers_.end(), n) = by;
  }

  void sort() {
    if (numbers_.empty() || !ordersItems(structure_->comparator)) return;
    structure_->ordered = 0;
    EXPECT_EQ(1, methods().sort(structure_.get(), nullptr));
    EXPECT_EQ(1, structure_->ordered);
    const DS_Filter filter = std::exchange(structure_->filter, nullptr);
    Numbers sorted = contents(structure_);
    structure_->filter = filter;
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), [&](std::intptr_t a, std::intptr_t b) {
      return compare(a, b) < 0;
    }));
    EXPECT_TRUE(std::is_permutation(sorted.begin(), sorted.end(), numbers_.begin()));
    numbers_ = sorted;
  }

  void clear() {
    EXPECT_EQ(1, DS_empty_list(structure_.get(), nullptr, nullptr, nullptr));
    numbers_.clear();
  }

  void check() const {
    Numbers shown;
    std::copy_if(numbers_.begin(), numbers_.end(), std::back_inserter(shown),
                 [&](std::intptr_t n) { return shows(n); });
    ASSERT_EQ(shown, contents(structure_));
    ASSERT_EQ(static_cast<int>(shown.size()), methods().enumerate(structure(), nullptr));
    Numbers backward;
    for (DS_Position position = methods().tail(structure(), nullptr); position != nullptr;
         position = methods().prev(structure(), position, nullptr)) {
      backward.insert(backward.begin(), numberAt(position));
    }
    ASSERT_EQ(shown, backward);
  }

 private:
  const DS_Methods& methods() const { return *structure_->methods; }
  int compare(std::intptr_t a, std::intptr_t b) const {
    const kilntest::Slot left{item(a)}, right{item(b)};
    return structure_->comparator(&left, &right);
  }

  bool shows(std::intptr_t n) const {
    return structure_->filter == nullptr || structure_->filter(item(n)) != 0;
  }

  Numbers::const_iterator place(std::intptr_t n) const {
    if (structure_->comparator == nullptr) return numbers_.end();
    return std::find_if(numbers_.begin(), numbers_.end(),
                        [&](std::intptr_t other) { return compare(n, other) != 1; });
  }

  Owned structure_;
  Numbers numbers_;
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(All, Kinds, testing::Values(DS_DLIST, DS_SLIST, DS_BINTREE, DS_ARRAY));

TEST_P(Kinds, ItemsGoWhereTheComparatorSays) {
  EXPECT_THAT(contents(make({3, 1, 2}, Ds_fifo_comparator)), ElementsAre(3, 1, 2));
  EXPECT_THAT(contents(make({3, 1, 2}, Ds_filo_comparator)), ElementsAre(2, 1, 3));
  EXPECT_THAT(contents(make({3, 1, 2}, Ds_default_comparator)), ElementsAre(1, 2, 3));
  EXPECT_THAT(contents(make({21, 11, 22, 12}, byTens)), ElementsAre(12, 11, 22, 21));
  EXPECT_THAT(contents(make({10, 20, 30, 40}, byDifference)), ElementsAre(30, 40, 10, 20));
  EXPECT_THAT(contents(make({3, 1, 2}, nullptr)), ElementsAre(3, 1, 2));
}

TEST_P(Kinds, BehaveLikeASequenceUnderRandomOperations) {
  const DS_Comparator comparators[] = {nullptr, Ds_fifo_comparator, Ds_filo_comparator, byNumber,
                                       byTens,  byTensDownwards,    byDifference,       byWhim,
                                       byTwo};
  const DS_Filter filters[] = {nullptr, nullptr, isEven, isSmall};
  std::mt19937 random(1);
  const auto below = [&](std::size_t n) { return random() % n; };
  std::size_t range = 200;
  const auto anyNumber = [&] { return static_cast<std::intptr_t>(1 + below(range)); };
  Model model(GetParam());
  for (int round = 0; round < 1000; ++round) {
    if (below(8) == 0) model.clear();
    if (below(4) == 0) range = below(2) == 0 ? 40 : 1000;
    if (below(3) == 0) model.use(comparators[below(std::size(comparators))]);
    if (below(4) == 0) model.use(filters[below(std::size(filters))]);
    if (below(4) == 0) model.sort();
    for (std::size_t i = below(40); i > 30; --i) model.replace(anyNumber(), anyNumber());
    for (std::size_t i = below(80); i > 0; --i) model.add(anyNumber());
    for (std::size_t i = below(60); i > 0; --i) model.remove(anyNumber());
    model.check();
    if (HasFailure()) FAIL() << "in round " << round;
  }
}

TEST_P(Kinds, OrderedIsClearedByAddsThatCannotTellTheirStatus) {
  const Owned s = make({1});
  const auto orderedAfter = [&](StatusCode* status) {
    s->ordered = 1;
    EXPECT_EQ(1, s->methods->add(s.get(), item(2), status));
    return s->ordered;
  };
  EXPECT_EQ(1, orderedAfter(&status_));
  EXPECT_EQ(0, orderedAfter(nullptr));
  status_ = MR_ITEM_NOT_FOUND;
  EXPECT_EQ(1, orderedAfter(&status_));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status_);
  status_ = MR_CANNOT_SORT;
  EXPECT_EQ(0, orderedAfter(&status_));
  s->comparator = nullptr;
  status_ = MR_NO_ERROR;
  EXPECT_EQ(0, orderedAfter(&status_));
  EXPECT_EQ(MR_CANNOT_SORT, status_);
  s->filter = isEven;
  s->ordered = 1;
  EXPECT_EQ(0, s->methods->add(s.get(), item(3), nullptr));
  EXPECT_EQ(1, s->ordered);
}

TEST_P(Kinds, WalksVisitEveryItemWhateverTheCallbackReturns) {
  struct Visits {
    Numbers numbers;
    std::intptr_t failing;
  };
  const DS_WalkFn visit = [](void* it, void* user, StatusCode*) {
    auto& visits = *static_cast<Visits*>(user);
    visits.numbers.push_back(number(it));
    return number(it) == visits.failing ? 0 : 1;
  };
  const Owned s = make({4, 6, 7, 8, 10});
  s->filter = isEven;
  const auto walk = [&](std::intptr_t failing, int limit, int direction, int result,
                        StatusCode code) {
    Visits visits{{}, failing};
    status_ = MR_NO_ERROR;
    EXPECT_EQ(result, s->methods->walk(s.get(), visit, &visits, limit, direction, &status_));
    EXPECT_EQ(code, status_);
    return visits.numbers;
  };
  EXPECT_THAT(walk(0, -1, 0, 1, MR_NO_ERROR), ElementsAre(4, 6, 8, 10));
  EXPECT_THAT(walk(6, -1, 0, 0, MR_WALK_TERMINATED), ElementsAre(4, 6, 8, 10));
  EXPECT_THAT(walk(6, -1, 1, 0, MR_WALK_TERMINATED), ElementsAre(10, 8, 6, 4));
  EXPECT_THAT(walk(8, 2, 0, 1, MR_NO_ERROR), ElementsAre(4, 6));
  EXPECT_THAT(walk(0, 0, 0, 1, MR_NO_ERROR), IsEmpty());
  EXPECT_THAT(walk(0, 2, 1, 0, MR_ARGUMENT_ERROR), IsEmpty());
  EXPECT_THAT(walk(0, -1, 2, 0, MR_ARGUMENT_ERROR), IsEmpty());
  s->methods->destructor(s.get(), nullptr, nullptr, nullptr);
  EXPECT_THAT(walk(0, -1, 0, 0, MR_ARGUMENT_ERROR), IsEmpty());
}

TEST_P(Kinds, CallbacksGetOneArgumentLessWithoutAUser) {
  const Owned s = make({1, 2});
  const DS_Methods& methods = *s->methods;
  const auto walkFn = longForm<DS_WalkFn>(+[](void* it, StatusCode* status) {
    *status += static_cast<StatusCode>(100 * number(it));
    return 1;
  });
  EXPECT_EQ(1, methods.walk(s.get(), walkFn, nullptr, -1, 0, &status_));
  EXPECT_EQ(300, status_);
  const auto matchFn =
      longForm<DS_MatchFn>(+[](const void* it) { return number(it) == 2 ? 1 : 0; });
  EXPECT_EQ(methods.tail(s.get(), nullptr), methods.find(s.get(), matchFn, nullptr, nullptr));
  const auto copyFn = longForm<DS_CopyFn>(+[](void* it) { return item(number(it) + 10); });
  EXPECT_THAT(contents(Owned(DS_duplicate(s.get(), copyFn, nullptr, nullptr))),
              ElementsAre(11, 12));
  static Numbers freed;
  freed.clear();
  const auto freeFn = longForm<DS_FreeFn>(+[](DS_Position position) {
    freed.push_back(numberAt(position));
    return 1;
  });
  methods.remove(s.get(), item(1), freeFn, nullptr, nullptr);
  methods.destructor(s.get(), freeFn, nullptr, nullptr);
  EXPECT_THAT(freed, ElementsAre(1, 2));
}

TEST_P(Kinds, LookupsTellAMissAndSeeNoHiddenItem) {
  const Owned s = make({1, 2, 4, 6});
  s->filter = isEven;
  const DS_Methods& m = *s->methods;
  DS_Position four = m.find(s.get(), isEqualTo, item(4), &status_);
  EXPECT_EQ(four, m.find(s.get(), nullptr, item(4), &status_));
  EXPECT_EQ(4, number(m.get_data(four, &status_)));
  EXPECT_EQ(1, m.contains_item(s.get(), item(4), &status_));
  EXPECT_EQ(MR_NO_ERROR, status_);
  EXPECT_EQ(MR_ITEM_NOT_FOUND, codeOf([&](StatusCode* status) {
              EXPECT_EQ(nullptr, m.find(s.get(), nullptr, item(1), status));
            }));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, codeOf([&](StatusCode* status) {
              EXPECT_EQ(0, m.contains_item(s.get(), item(1), status));
            }));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, codeOf([&](StatusCode* status) {
              EXPECT_EQ(nullptr, m.remove(s.get(), item(1), nullptr, nullptr, status));
            }));
  s->filter = nullptr;
  EXPECT_THAT(contents(s), ElementsAre(1, 2, 4, 6));
}

TEST_P(Kinds, RemovalHandsOverTheItemThenReturnsTheNextVisiblePosition) {
  const Owned s = make({2, 3, 4, 5, 6});
  s->filter = isEven;
  const DS_FreeFn zero = [](DS_Position position, void* user) {
    static_cast<Numbers*>(user)->push_back(numberAt(position));
    static_cast<kilntest::Slot*>(position)->item = nullptr;
    return 1;
  };
  Numbers freed;
  DS_Position next = s->methods->remove(s.get(), item(2), zero, &freed, &status_);
  EXPECT_EQ(4, number(s->methods->get_data(next, &status_)));
  EXPECT_EQ(nullptr, s->methods->remove(s.get(), item(6), zero, &freed, &status_));
  EXPECT_EQ(MR_NO_ERROR, status_);
  s->methods->destructor(s.get(), zero, &freed, nullptr);
  EXPECT_THAT(freed, ElementsAre(2, 6, 3, 4, 5));
  EXPECT_THAT(contents(s), IsEmpty());
}

TEST_P(Kinds, MisuseIsTold) {
  const Owned s = make();
  const DS_Methods& m = *s->methods;
  using Misuse = std::function<void(StatusCode*)>;
  const Misuse arguments[] = {
      [&](StatusCode* status) { EXPECT_EQ(-1, m.enumerate(nullptr, status)); },
      [&](StatusCode* status) { EXPECT_EQ(0, m.add(nullptr, item(1), status)); },
      [&](StatusCode* status) { m.remove(nullptr, item(1), nullptr, nullptr, status); },
      [&](StatusCode* status) { EXPECT_EQ(0, m.sort(nullptr, status)); },
      [&](StatusCode* status) { EXPECT_EQ(0, m.sort(s.get(), status)); },
      [&](StatusCode* status) { EXPECT_EQ(nullptr, m.merge(nullptr, nullptr, status)); },
      [&](StatusCode* status) { m.find(nullptr, nullptr, item(1), status); },
      [&](StatusCode* status) { m.find(s.get(), nullptr, nullptr, status); },
      [&](StatusCode* status) { m.contains_item(nullptr, item(1), status); },
      [&](StatusCode* status) { m.difference(s.get(), nullptr, status); },
      [&](StatusCode* status) { m.intersect(nullptr, s.get(), status); },
      [&](StatusCode* status) { m.duplicate(nullptr, nullptr, nullptr, status); },
      [&](StatusCode* status) { m.head(nullptr, status); },
      [&](StatusCode* status) { m.tail(nullptr, status); },
      [&](StatusCode* status) { m.next(s.get(), nullptr, status); },
      [&](StatusCode* status) { m.prev(s.get(), nullptr, status); },
      [&](StatusCode* status) { m.get_data(nullptr, status); },
      [&](StatusCode* status) { m.set_data(nullptr, item(1), status); },
      [&](StatusCode* status) { m.destructor(nullptr, nullptr, nullptr, status); }};
  for (const Misuse& misuse : arguments) {
    EXPECT_EQ(MR_ARGUMENT_ERROR, codeOf(misuse)) << "misuse " << &misuse - arguments;
    misuse(nullptr);
  }
  EXPECT_EQ(MR_UNEXPECTED_NULL_STRUCTURE,
            codeOf([&](StatusCode* status) { EXPECT_EQ(nullptr, m.tail(s.get(), status)); }));
  EXPECT_EQ(MR_NO_ERROR,
            codeOf([&](StatusCode* status) { EXPECT_EQ(nullptr, m.head(s.get(), status)); }));
  const Owned unsortable = make({2, 1}, nullptr);
  EXPECT_EQ(MR_CANNOT_SORT,
            codeOf([&](StatusCode* status) { EXPECT_EQ(0, m.sort(unsortable.get(), status)); }));
}

TEST_P(Kinds, WithoutMemoryNothingChanges) {
  memoryIsShort = true;
  const Owned probe = make({1});
  memoryIsShort = false;
  if (!contents(probe).empty()) GTEST_SKIP() << "the library's allocator is not replaceable here";
  const Owned s = make();
  Numbers added;
  for (std::intptr_t n = 1; n < 100; ++n) {
    memoryIsShort = n > 3;
    if (s->methods->add(s.get(), item(n), &status_) != 0) added.push_back(n);
  }
  EXPECT_EQ(nullptr, DS_duplicate(s.get(), nullptr, nullptr, &status_));
  EXPECT_EQ(MR_MEMORY_FAULT, status_);
  s->comparator = byNumber;
  EXPECT_EQ(GetParam() == DS_ARRAY, s->methods->sort(s.get(), &status_));
  memoryIsShort = false;
  EXPECT_EQ(GetParam() == DS_ARRAY, added.size() == 99);
  EXPECT_EQ(added, contents(s));
}

TEST_P(Kinds, TablesHoldTheMethodsOfTheirKind) {
  const Owned s = make();
  EXPECT_EQ(GetParam(), s->methods->get_type());
  EXPECT_EQ(GetParam() == DS_ARRAY, s->methods->allocate != nullptr);
  EXPECT_EQ(GetParam() == DS_ARRAY, s->data != nullptr);
  EXPECT_THAT(s->methods->unused, testing::Each(testing::IsNull()));
}

// Counts the questions: items that come in order must not be compared with all others.
TEST(BinaryTree, AsksFewItemsWhateverTheOrderOfAdding) {
  static std::int64_t questions;
  const DS_Comparator counting = [](const void* a, const void* b) {
    ++questions;
    return Ds_default_comparator(a, b);
  };
  const std::intptr_t n = 100000;
  for (const bool upward : {true, false}) {
    const Owned s = makeStructure(DS_BINTREE);
    s->comparator = counting;
    questions = 0;
    for (std::intptr_t i = 1; i <= n; ++i) {
      s->methods->add(s.get(), item(upward ? i : n + 1 - i), nullptr);
    }
    EXPECT_LT(questions, n * 60);
    const Numbers numbers = contents(s);
    EXPECT_EQ(static_cast<std::size_t>(n), numbers.size());
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    s->comparator = Ds_fifo_comparator;
    s->methods->add(s.get(), item(1), nullptr);
    s->comparator = counting;
    EXPECT_EQ(1, s->methods->sort(s.get(), nullptr));
    s->methods->add(s.get(), item(5), nullptr);
    questions = 0;
    for (std::intptr_t i = 1; i <= 100; ++i) s->methods->add(s.get(), item(n + i), nullptr);
    EXPECT_LT(questions, 100 * 60) << "sorting makes a tree quick again";
  }
}
