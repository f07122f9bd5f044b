#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <random>
#include <vector>

#include <kilnbase/util/mr_linklist.h>

using testing::ElementsAre;

namespace {

struct Record {
  MR_LinkNode link;
  int key;
};

Record* newRecord(int key) {
  auto* const record = static_cast<Record*>(std::malloc(sizeof(Record)));
  *record = {{}, key};
  return record;
}

int keyOf(const void* record) {
  return static_cast<const Record*>(record)->key;
}

// The keys that the comparator met in the list, without a value for a null node.
std::vector<std::optional<int>> compared;

std::int32_t compareKeys(const void* a, const void* b) {
  compared.push_back(b ? std::optional(keyOf(b)) : std::nullopt);
  return b ? keyOf(a) - keyOf(b) : 0;
}

// A list that frees its records.
struct Records : MR_LinkList {
  Records(std::initializer_list<int> keys = {}) : MR_LinkList{nullptr} {
    for (const int key : keys) MR_ll_append(this, &newRecord(key)->link);
  }
  Records(const Records&) = delete;
  Records& operator=(const Records&) = delete;
  ~Records() {
    while (head) take(0);
  }

  void take(int n) {
    MR_LinkNode* const node = MR_ll_nth(head, n);
    MR_ll_remove(this, node);
    std::free(node);
  }

  // In order, once it is sure that the links back agree.
  std::vector<const void*> records() const {
    std::vector<const void*> all;
    const MR_LinkNode* prev = nullptr;
    for (const MR_LinkNode* node = head; node; prev = node, node = node->next) {
      EXPECT_EQ(prev, node->prev);
      all.push_back(node);
    }
    return all;
  }

  std::vector<int> keys() const {
    std::vector<int> all;
    for (const void* record : records()) all.push_back(keyOf(record));
    return all;
  }
};

// What the sorted insertion promises, on vectors. A companion without a place is freed.
struct PairModel {
  void insertSorted(Record* record, Record* companion) {
    const auto place = std::find_if(first.begin(), first.end(),
                                    [&](const void* each) { return record->key <= keyOf(each); });
    const auto position = std::distance(first.begin(), place);
    const bool atEnd = place == first.end();
    comparisons += static_cast<std::size_t>(position) + (atEnd ? 0 : 1);
    first.insert(place, record);
    if (!companion) return;
    if (atEnd || position < std::ssize(second)) {
      second.insert(atEnd ? second.end() : second.begin() + position, companion);
    } else {
      unplaced.push_back(companion);
    }
  }

  std::vector<const void*> first;
  std::vector<const void*> second;
  std::vector<Record*> unplaced;
  std::size_t comparisons = 0;
};

// Two lists and their model go through the same random operations.
class RandomOperations {
 public:
  ~RandomOperations() {
    for (Record* record : model_.unplaced) std::free(record);
  }

  void insertBefore() {
    Record* const record = newRecord(below(20));
    const int n = below(size() + 1);  // at the size: append
    model_.first.insert(model_.first.begin() + n, record);
    MR_ll_insert(&list_, n == size() ? nullptr : MR_ll_nth(list_.head, n), &record->link);
  }

  void insertSorted() {
    Record* const record = newRecord(below(20));
    Record* const companion = newRecord(-record->key);
    model_.insertSorted(record, companion);
    MR_ll_insert_sorted2(&list_, &record->link, &companions_, &companion->link, compareKeys);
  }

  void mergeSorted() {
    MR_LinkList chain = {};
    MR_LinkList chain2 = {};
    for (int left = below(4), left2 = below(4); left > 0 || left2 > 0; --left, --left2) {
      Record* const record = left > 0 ? newRecord(below(20)) : nullptr;
      Record* const companion = left2 > 0 ? newRecord(99) : nullptr;
      if (record) MR_ll_append(&chain, &record->link);
      if (companion) MR_ll_append(&chain2, &companion->link);
      if (record) model_.insertSorted(record, companion);
      if (!record) model_.unplaced.push_back(companion);
    }
    MR_ll_merge_sorted(&list_, chain.head, &companions_, chain2.head, compareKeys);
  }

  void remove() {
    const int n = below(size());
    if (size() > 0) model_.first.erase(model_.first.begin() + n);
    list_.take(n);
    if (below(2) == 0 || model_.second.empty()) return;
    model_.second.pop_back();
    companions_.take(static_cast<int>(model_.second.size()));
  }

  void replace() {
    if (size() == 0) return;
    const int n = below(size());
    MR_LinkNode* const old = MR_ll_nth(list_.head, n);
    Record* const record = newRecord(below(20));
    model_.first[static_cast<std::size_t>(n)] = record;
    MR_ll_replace(&list_, old, &record->link);
    EXPECT_TRUE(!old->prev && !old->next);
    std::free(old);
  }

  void check() const {
    ASSERT_EQ(model_.first, list_.records());
    ASSERT_EQ(model_.second, companions_.records());
    ASSERT_EQ(model_.comparisons, compared.size());
    ASSERT_EQ(model_.first.size(), MR_ll_length(list_.head));
    for (std::size_t i = 0; i < model_.first.size(); ++i) {
      const auto* const node = static_cast<const MR_LinkNode*>(model_.first[i]);
      ASSERT_EQ(static_cast<int>(i), MR_ll_find_item_number(list_.head, node));
    }
  }

  int below(int limit) { return limit > 0 ? static_cast<int>(random_() % unsigned(limit)) : 0; }

 private:
  int size() const { return static_cast<int>(model_.first.size()); }

  std::mt19937 random_{12};
  Records list_;
  Records companions_;
  PairModel model_;
};

}  // namespace

TEST(LinkList, BehavesLikeAVectorOfNodes) {
  compared.clear();
  RandomOperations operations;
  void (RandomOperations::*const kinds[])() = {
      &RandomOperations::insertBefore, &RandomOperations::insertSorted,
      &RandomOperations::mergeSorted,  &RandomOperations::remove,
      &RandomOperations::remove,       &RandomOperations::replace};
  for (int step = 0; step < 2000; ++step) {
    (operations.*kinds[operations.below(6)])();
    ASSERT_NO_FATAL_FAILURE(operations.check()) << step;
  }
}

// The last comparison is with no node at all.
TEST(LinkList, FindsByTheComparatorAndAsksItOnceMoreAtTheEnd) {
  const Records list = {1, 3, 3, 2};
  const auto find = [&](int key, int sorted) {
    compared.clear();
    const Record wanted = {{}, key};
    return MR_ll_find(list.head, &wanted, compareKeys, sorted);
  };
  EXPECT_EQ(MR_ll_nth(list.head, 3), find(2, 0));
  EXPECT_THAT(compared, ElementsAre(1, 3, 3, 2));
  EXPECT_EQ(nullptr, find(2, 1));
  EXPECT_THAT(compared, ElementsAre(1, 3));
  EXPECT_EQ(MR_ll_nth(list.head, 1), find(3, -1));
  for (const int sorted : {0, 1}) {
    EXPECT_EQ(nullptr, find(4, sorted));
    EXPECT_THAT(compared, ElementsAre(1, 3, 3, 2, std::nullopt));
  }
}

TEST(LinkList, RemovesDuplicatesAmongNeighboursWithTheirCompanions) {
  Records list = {1, 1, 2, 2, 2, 3, 1, 5, 4};
  Records companions = {10, 11, 12, 13};
  const auto within = [](const void* node, const void* kept, double tolerance) -> std::int32_t {
    return keyOf(node) - keyOf(kept) == tolerance ? 0 : keyOf(node) - keyOf(kept);
  };
  EXPECT_EQ(3, MR_ll_remove_duplicates(&list, &companions, 0.0, within));
  EXPECT_THAT(list.keys(), ElementsAre(1, 2, 3, 1, 5, 4));
  EXPECT_THAT(companions.keys(), ElementsAre(10, 12));
  EXPECT_EQ(1, MR_ll_remove_duplicates(&list, nullptr, -1.0, within));
  EXPECT_THAT(list.keys(), ElementsAre(1, 2, 3, 1, 5));
}

TEST(LinkList, RemovesWhatThePredicateRefuses) {
  Records list = {0, 1, 0, 2, 0};
  EXPECT_EQ(3, MR_ll_remove_match(&list, [](void* node) { return std::int32_t{keyOf(node)}; }));
  EXPECT_THAT(list.keys(), ElementsAre(1, 2));
}

TEST(LinkList, AppendsAWholeChain) {
  Records list = {1};
  Records chain = {2, 3};
  MR_ll_merge(&list, chain.head);
  chain.head = nullptr;
  EXPECT_THAT(list.keys(), ElementsAre(1, 2, 3));
  Records empty;
  MR_ll_merge(&empty, MR_ll_nth(list.head, 1));
  list.head->next = nullptr;
  EXPECT_THAT(empty.keys(), ElementsAre(2, 3));
}

// Of the tail's chain one node is attached, and only that.
TEST(LinkList, CopiesAChainAndAttachesOneNode) {
  const Records list = {1, 2};
  Records tail = {3, 4};
  MR_LinkNode* const cutOff = tail.head->next;
  Records copy;
  copy.head = MR_ll_copy_and_append(list.head, tail.head, sizeof(Record));
  EXPECT_THAT(copy.keys(), ElementsAre(1, 2, 3));
  EXPECT_EQ(tail.head, MR_ll_last(copy.head));
  EXPECT_NE(list.head, copy.head);
  EXPECT_EQ(cutOff, MR_ll_copy_and_append(nullptr, cutOff, 24));
  EXPECT_TRUE(!cutOff->prev && !cutOff->next);
  EXPECT_EQ(nullptr, MR_ll_copy_and_append(list.head, cutOff, 0));
  EXPECT_EQ(nullptr, MR_ll_copy_and_append(nullptr, nullptr, 24));
  tail.head = cutOff;
}

TEST(LinkList, RemovingANodeOfAnotherListLeavesTheHeads) {
  Records list = {1};
  Records other = {2, 3};
  MR_LinkNode* const first = other.head;
  MR_LinkNode* const second = first->next;
  MR_ll_remove(&list, first);
  EXPECT_THAT(list.keys(), ElementsAre(1));
  EXPECT_EQ(first, other.head);
  EXPECT_EQ(nullptr, MR_ll_prev(second));
  other.head = second;
  std::free(first);
}

TEST(LinkList, IgnoresNullArguments) {
  Records list = {1, 2};
  Record spare = {};
  MR_LinkNode* const node = &spare.link;
  MR_ll_append(&list, nullptr);
  MR_ll_append(nullptr, node);
  MR_ll_prepend(nullptr, node);
  MR_ll_insert(&list, list.head, nullptr);
  MR_ll_insert_sorted(&list, node, nullptr);
  MR_ll_merge(&list, nullptr);
  MR_ll_merge_sorted(nullptr, node, nullptr, nullptr, compareKeys);
  MR_ll_remove(nullptr, list.head);
  MR_ll_replace(&list, list.head, nullptr);
  EXPECT_EQ(0, MR_ll_remove_match(&list, nullptr));
  EXPECT_EQ(0, MR_ll_remove_duplicates(&list, nullptr, 0.0, nullptr));
  EXPECT_THAT(list.keys(), ElementsAre(1, 2));
  EXPECT_EQ(nullptr, MR_ll_find(list.head, nullptr, compareKeys, 0));
  EXPECT_EQ(-1, MR_ll_find_item_number(nullptr, nullptr));
  EXPECT_EQ(0, MR_ll_present(list.head, nullptr));
  EXPECT_EQ(list.head, MR_ll_nth(list.head, -3));
  EXPECT_EQ(nullptr, MR_ll_nth(list.head, 2));
}
