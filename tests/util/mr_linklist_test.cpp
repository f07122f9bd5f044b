#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <optional>
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
  auto* const record = static_cast<Record*>(std::malloc(sizeof(Record)));
  *record = {{}, key};
  return &record->link;
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

using Nodes = std::vector<MR_LinkNode*>;

// A list that frees its records.
struct Records : MR_LinkList {
  Records(std::initializer_list<int> keys = {}) : MR_LinkList{nullptr} {
    for (const int key : keys) MR_ll_append(this, newNode(key));
  }
  Records(const Records&) = delete;
  Records& operator=(const Records&) = delete;
  ~Records() {
    while (head) remove(head);
  }

  void remove(MR_LinkNode* node) {
    MR_ll_remove(this, node);
    std::free(node);
  }

  // In order, once it is sure that the links back agree.
  Nodes nodes() const {
    Nodes all;
    for (MR_LinkNode* node = head; node; node = node->next) {
      EXPECT_EQ(all.empty() ? nullptr : all.back(), node->prev);
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

// Inserts a node and its companion, with the model's nodes telling where they go.
void insertSorted(Records& list, Nodes& model, Records& list2, Nodes& model2, int key) {
  MR_LinkNode* const node = newNode(key);
  MR_LinkNode* const node2 = newNode(-key);
  const auto place = std::find_if(model.begin(), model.end(),
                                  [key](const void* each) { return key <= keyOf(each); });
  const auto position = std::distance(model.begin(), place);
  const bool atEnd = place == model.end();
  compared.clear();
  MR_ll_insert_sorted2(&list, node, &list2, node2, compareKeys);
  EXPECT_EQ(position + (atEnd ? 0 : 1), std::ssize(compared));
  model.insert(place, node);
  if (atEnd || position < std::ssize(model2)) {
    model2.insert(atEnd ? model2.end() : model2.begin() + position, node2);
  } else {
    std::free(node2);
  }
}

}  // namespace

TEST(LinkList, BehavesLikeAVectorOfNodes) {
  std::mt19937 random(12);
  Records list;
  Records list2;
  Nodes model;
  Nodes model2;
  for (int step = 0; step < 1000; ++step) {
    const int key = static_cast<int>(random() % 20);
    const auto at = model.begin() + static_cast<std::ptrdiff_t>(random() % (model.size() + 1));
    MR_LinkNode* const there = at != model.end() ? *at : nullptr;
    const auto kind = random() % 8;
    if (kind < 2) {
      MR_LinkNode* const node = newNode(key);
      MR_ll_insert(&list, there, node);
      model.insert(at, node);
    } else if (kind < 4) {
      insertSorted(list, model, list2, model2, key);
    } else if (kind == 4 && there) {
      *at = newNode(key);
      MR_ll_replace(&list, there, *at);
      EXPECT_TRUE(!there->prev && !there->next);
      std::free(there);
    } else if (kind == 5 && !model2.empty()) {
      list2.remove(model2.back());
      model2.pop_back();
    } else if (there) {
      list.remove(there);
      model.erase(at);
    }
    ASSERT_EQ(model, list.nodes()) << step;
    ASSERT_EQ(model2, list2.nodes()) << step;
  }
  for (std::size_t i = 0; i < model.size(); ++i) {
    EXPECT_EQ(static_cast<int>(i), MR_ll_find_item_number(list.head, model[i]));
    EXPECT_EQ(model[i], MR_ll_nth(list.head, static_cast<int>(i)));
  }
  EXPECT_EQ(model.size(), MR_ll_length(list.head));
}

TEST(LinkList, MergesASortedChainWithItsCompanions) {
  Records list = {1, 5, 9};
  Records list2 = {10, 50};
  Records chain = {5, 20, 0};
  Records chain2 = {55, 200};
  MR_ll_merge_sorted(&list, std::exchange(chain.head, nullptr), &list2,
                     std::exchange(chain2.head, nullptr), compareKeys);
  EXPECT_THAT(list.keys(), ElementsAre(0, 1, 5, 5, 9, 20));
  EXPECT_THAT(list2.keys(), ElementsAre(10, 55, 50, 200));
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

// The rest of the chain behind a list's head is not its own, but stays linked.
TEST(LinkList, InsertsInFrontOfAHeadWithinALongerChain) {
  Records chain = {1, 3};
  Records chain2 = {10, 30};
  MR_LinkList list = {chain.head->next};
  MR_LinkList list2 = {chain2.head->next};
  MR_ll_insert_sorted2(&list, newNode(2), &list2, newNode(20), compareKeys);
  EXPECT_THAT(chain.keys(), ElementsAre(1, 2, 3));
  EXPECT_THAT(chain2.keys(), ElementsAre(10, 20, 30));
  EXPECT_TRUE(list.head == chain.head->next && list2.head == chain2.head->next);
}

TEST(LinkList, ANodeInThePlaceOfItselfStays) {
  Records list = {1, 2};
  MR_ll_prepend(&list, list.head);
  for (MR_LinkNode* const node : list.nodes()) {
    MR_ll_insert(&list, node, node);
    MR_ll_replace(&list, node, node);
  }
  EXPECT_THAT(list.keys(), ElementsAre(1, 2));
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
  MR_ll_append(nullptr, &spare.link);
  MR_ll_insert(&list, list.head, nullptr);
  MR_ll_insert_sorted(&list, &spare.link, nullptr);
  MR_ll_merge(&list, nullptr);
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
