#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

#include <kilnbase/util/mr_linklist.h>

using testing::ElementsAre;

namespace {

struct Record {
  MR_LinkNode link;
  int key;
};

MR_LinkNode* newNode(int key) {
  return &(new (std::malloc(sizeof(Record))) Record{{}, key})->link;
}

int keyOf(const void* record) {
  return static_cast<const Record*>(record)->key;
}

int comparisons;

// Accepts a null node, which a search passes at the end of a list.
std::int32_t compareKeys(const void* a, const void* b) {
  ++comparisons;
  return b ? keyOf(a) - keyOf(b) : 0;
}

// A list that frees its records.
struct Records : MR_LinkList {
  Records(std::initializer_list<int> keys = {}) : MR_LinkList{nullptr} {
    for (const int key : keys) MR_ll_append(this, newNode(key));
  }
  ~Records() {
    MR_ll_remove_match(this, [](void*) { return 0; });
  }

  MR_LinkNode* take() { return std::exchange(head, nullptr); }
  // All nodes in order. Checks that the links back agree.
  std::vector<MR_LinkNode*> nodes() const {
    std::vector<MR_LinkNode*> all;
    for (MR_LinkNode* node = head; node; node = node->next) {
      EXPECT_EQ(all.empty() ? nullptr : all.back(), MR_ll_prev(node));
      all.push_back(node);
    }
    return all;
  }
  std::vector<int> keys() const {
    std::vector<int> all;
    for (const MR_LinkNode* node : nodes()) all.push_back(keyOf(node));
    return all;
  }
};

}  // namespace

TEST(LinkList, BehavesLikeAVectorOfNodes) {
  std::mt19937 random(12);
  Records list;
  std::vector<MR_LinkNode*> model;
  for (int step = 0; step < 1000; ++step) {
    const Record wanted = {{}, static_cast<int>(random() % 20)};
    auto sortedAt = model.begin();
    for (const int sorted : {0, -1}) {
      sortedAt = std::ranges::find_if(model, [&](const void* each) {
        return keyOf(each) == wanted.key || (sorted && keyOf(each) > wanted.key);
      });
      const bool found = sortedAt != model.end() && keyOf(*sortedAt) == wanted.key;
      comparisons = model.empty() ? 1 : 0;
      EXPECT_EQ(found ? *sortedAt : nullptr, MR_ll_find(list.head, &wanted, compareKeys, sorted));
      EXPECT_EQ(sortedAt - model.begin() + 1, comparisons) << "one of them at the end";
    }
    const auto at = model.begin() + static_cast<std::ptrdiff_t>(random() % (model.size() + 1));
    MR_LinkNode* const there = at != model.end() ? *at : nullptr;
    const auto kind = random() % 9;
    if (kind < 2) {
      MR_ll_insert(&list, there, *model.insert(at, newNode(wanted.key)));
    } else if (kind < 4) {
      comparisons = sortedAt == model.end() ? 1 : 0;
      const auto expected = sortedAt - model.begin() + 1;
      MR_ll_insert_sorted(&list, *model.insert(sortedAt, newNode(wanted.key)), compareKeys);
      EXPECT_EQ(expected, comparisons);
    } else if (there) {
      if (kind == 4) MR_ll_replace(&list, there, *at = newNode(wanted.key));
      if (kind > 4) MR_ll_remove(&list, there);
      if (kind > 4) model.erase(at);
      EXPECT_EQ(nullptr, there->prev);
      std::free(there);
    }
    MR_LinkNode* const any = model.empty() ? nullptr : model.back();
    MR_ll_insert(&list, any, any);  // this and the two calls that follow change nothing
    MR_ll_replace(&list, any, any);
    MR_ll_merge(&list, nullptr);
    ASSERT_EQ(model, list.nodes()) << step;
    EXPECT_EQ(any, MR_ll_nth(list.head, MR_ll_find_item_number(list.head, any)));
  }
  EXPECT_EQ(list.head, MR_ll_nth(list.head, -3));
  EXPECT_EQ(nullptr, MR_ll_find(list.head, nullptr, compareKeys, 0));
  EXPECT_EQ(0, MR_ll_present(list.head, nullptr));
}

TEST(LinkList, MergesChainsWithTheirCompanions) {
  Records list, list2;
  MR_ll_merge(&list, Records({1, 5, 9}).take());
  MR_ll_insert(&list2, list.head, newNode(10));  // appends, since list2 is empty
  MR_ll_merge(&list2, Records({50}).take());
  MR_ll_merge_sorted(&list, Records({5, 20, 0}).take(), &list2, Records({55, 200}).take(),
                     compareKeys);
  Record lost = {};  // list2 is too short for its position
  MR_ll_insert_sorted2(&list, newNode(7), &list2, &lost.link, compareKeys);
  EXPECT_THAT(list.keys(), ElementsAre(0, 1, 5, 5, 7, 9, 20));
  EXPECT_THAT(list2.keys(), ElementsAre(10, 55, 50, 200));
  MR_ll_merge(&list2, Records({400, 300, 500, 600}).take());  // longer than list
  MR_ll_insert_sorted2(&list, newNode(30), &list2, newNode(700), compareKeys);
  MR_ll_insert_sorted2(nullptr, &lost.link, &list2, nullptr, compareKeys);
  EXPECT_THAT(list2.keys(), ElementsAre(10, 55, 50, 200, 400, 300, 500, 600, 700));
}

TEST(LinkList, RemovesDuplicatesAmongNeighboursWithTheirCompanions) {
  Records list = {1, 1, 2, 2, 2, 3, 1, 5, 4}, companions = {10, 11, 12, 13};
  const auto within = [](const void* node, const void* kept, double tolerance) -> std::int32_t {
    return keyOf(node) - keyOf(kept) != tolerance;
  };
  EXPECT_EQ(3, MR_ll_remove_duplicates(&list, &companions, 0.0, within));
  EXPECT_THAT(companions.keys(), ElementsAre(10, 12));
  EXPECT_EQ(1, MR_ll_remove_duplicates(&list, nullptr, -1.0, within));
  EXPECT_EQ(2, MR_ll_remove_match(&list, [](void* node) { return std::int32_t{keyOf(node) - 1}; }));
  EXPECT_THAT(list.keys(), ElementsAre(2, 3, 5));
}

// Only the first node of the tail's chain is attached.
TEST(LinkList, CopiesAChainAndLeavesTheHeadsOfOtherLists) {
  const Records list = {1, 2};
  Records tail = {4, 5}, copy;
  MR_LinkNode* const cutOff = tail.head->next;
  copy.head = MR_ll_copy_and_append(list.head, tail.take(), sizeof(Record));
  EXPECT_THAT(copy.keys(), ElementsAre(1, 2, 4));
  EXPECT_EQ(cutOff, tail.head = MR_ll_copy_and_append(nullptr, cutOff, 24));
  EXPECT_EQ(nullptr, MR_ll_copy_and_append(list.head, cutOff, 0));
  MR_LinkNode* const first = copy.head;
  MR_LinkList inner = {first->next->next};
  MR_ll_insert_sorted(&inner, newNode(3), compareKeys);
  MR_ll_remove(&inner, first);
  EXPECT_EQ(3, keyOf(inner.head));
  EXPECT_EQ(first, std::exchange(copy.head, MR_ll_first(inner.head)));
  EXPECT_THAT(copy.keys(), ElementsAre(2, 3, 4));
  std::free(first);
}
