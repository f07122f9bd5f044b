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

// The keys that the comparator met in the list, -1 for a null node.
std::vector<int> compared;

std::int32_t compareKeys(const void* a, const void* b) {
  compared.push_back(b ? keyOf(b) : -1);
  return b ? keyOf(a) - keyOf(b) : 0;
}

using Nodes = std::vector<MR_LinkNode*>;

// A list that frees its records.
struct Records : MR_LinkList {
  Records(std::initializer_list<int> keys = {}) : MR_LinkList{nullptr} {
    for (const int key : keys) MR_ll_append(this, newNode(key));
  }
  ~Records() {
    MR_ll_remove_match(this, [](void*) { return 0; });
  }

  MR_LinkNode* take() { return std::exchange(head, nullptr); }

  // In order, once it is sure that the links back agree.
  Nodes nodes() const {
    Nodes all;
    for (MR_LinkNode* node = head; node; node = node->next) {
      EXPECT_EQ(all.empty() ? nullptr : all.back(), MR_ll_prev(node));
      all.push_back(node);
    }
    return all;
  }
  std::vector<int> keys() const {
    std::vector<int> all;
    std::ranges::transform(nodes(), std::back_inserter(all), keyOf);
    return all;
  }
};

}  // namespace

TEST(LinkList, BehavesLikeAVectorOfNodes) {
  std::mt19937 random(12);
  Records list;
  Nodes model;
  for (int step = 0; step < 1000; ++step) {
    const int key = static_cast<int>(random() % 20);
    auto at = model.begin() + static_cast<std::ptrdiff_t>(random() % (model.size() + 1));
    MR_LinkNode* const there = at != model.end() ? *at : nullptr;
    const auto kind = random() % 7;
    if (kind < 2) {
      at = model.insert(at, newNode(key));
      MR_ll_insert(&list, there, *at);
    } else if (kind < 4) {
      at = std::ranges::find_if(model, [key](const void* each) { return key <= keyOf(each); });
      const auto comparisons = at - model.begin() + (at != model.end());
      at = model.insert(at, newNode(key));
      compared.clear();
      MR_ll_insert_sorted(&list, *at, compareKeys);
      EXPECT_EQ(comparisons, std::ssize(compared));
    } else if (there) {
      if (kind == 4)
        MR_ll_replace(&list, there, *at = newNode(key));
      else
        MR_ll_remove(&list, there);
      if (kind > 4) model.erase(at);
      EXPECT_TRUE(!there->prev && !there->next);
      std::free(there);
    }
    ASSERT_EQ(model, list.nodes()) << step;
  }
  for (int i = 0; i < std::ssize(model); ++i) {
    EXPECT_EQ(i, MR_ll_find_item_number(list.head, MR_ll_nth(list.head, i)));
    EXPECT_EQ(list.head, MR_ll_first(model[static_cast<std::size_t>(i)]));
  }
}

TEST(LinkList, MergesChainsWithTheirCompanions) {
  Records list, list2 = {10};
  MR_ll_merge(&list, Records({1, 5, 9}).take());
  MR_ll_merge(&list2, Records({50}).take());
  MR_ll_merge_sorted(&list, Records({5, 20, 0}).take(), &list2, Records({55, 200}).take(),
                     compareKeys);
  Record lost = {};  // no companion has its position
  MR_ll_insert_sorted2(&list, newNode(7), &list2, &lost.link, compareKeys);
  EXPECT_THAT(list.keys(), ElementsAre(0, 1, 5, 5, 7, 9, 20));
  EXPECT_THAT(list2.keys(), ElementsAre(10, 55, 50, 200));
}

// The last comparison is with no node at all.
TEST(LinkList, FindsByTheComparatorAndAsksItOnceMoreAtTheEnd) {
  const Records list = {1, 3, 3, 2};
  const auto find = [&](int key, int sorted) {
    compared.clear();
    const Record wanted = {{}, key};
    return MR_ll_find_item_number(list.head, MR_ll_find(list.head, &wanted, compareKeys, sorted));
  };
  EXPECT_EQ(3, find(2, 0));
  EXPECT_EQ(-1, find(2, 1));
  EXPECT_EQ(1, find(3, -1));
  for (const int sorted : {0, 1}) {
    EXPECT_EQ(-1, find(4, sorted));
    EXPECT_THAT(compared, ElementsAre(1, 3, 3, 2, -1));
  }
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

// Of the tail's chain one node is attached, and only that.
TEST(LinkList, CopiesAChainAndAttachesOneNode) {
  const Records list = {1, 2};
  Records tail = {3, 4}, copy;
  MR_LinkNode* const cutOff = tail.head->next;
  copy.head = MR_ll_copy_and_append(list.head, tail.take(), sizeof(Record));
  EXPECT_THAT(copy.keys(), ElementsAre(1, 2, 3));
  EXPECT_NE(list.head, copy.head);
  EXPECT_EQ(cutOff, tail.head = MR_ll_copy_and_append(nullptr, cutOff, 24));
  EXPECT_THAT(tail.keys(), ElementsAre(4));
  EXPECT_EQ(nullptr, MR_ll_copy_and_append(list.head, cutOff, 0));
}

TEST(LinkList, LeavesTheHeadsOfOtherLists) {
  Records chain = {1, 2, 4};
  MR_LinkList inner = {chain.head->next->next};
  MR_ll_insert_sorted(&inner, newNode(3), compareKeys);
  EXPECT_EQ(2, MR_ll_find_item_number(chain.head, inner.head));
  MR_LinkNode* const first = chain.head;
  MR_ll_remove(&inner, first);
  EXPECT_TRUE(chain.head == first && !first->next);
  std::free(first);
  chain.head = MR_ll_first(inner.head);
  EXPECT_THAT(chain.keys(), ElementsAre(2, 3, 4));
}

TEST(LinkList, IgnoresNullsAndANodeInItsOwnPlace) {
  Records list = {1, 2};
  for (MR_LinkNode* const node : list.nodes()) {
    MR_ll_insert(&list, node, node);
    MR_ll_replace(&list, node, node);
  }
  MR_ll_prepend(&list, nullptr);
  MR_ll_insert_sorted(&list, list.head, nullptr);
  MR_ll_merge(&list, nullptr);
  MR_ll_replace(&list, list.head, nullptr);
  EXPECT_THAT(list.keys(), ElementsAre(1, 2));
  EXPECT_EQ(nullptr, MR_ll_find(list.head, nullptr, compareKeys, 0));
  EXPECT_EQ(0, MR_ll_present(list.head, nullptr));
  EXPECT_EQ(list.head, MR_ll_nth(list.head, -3));
  EXPECT_EQ(nullptr, MR_ll_nth(list.head, 2));
}
