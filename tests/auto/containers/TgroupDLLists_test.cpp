#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>

#include <kilnbase/auto/containers/TgroupDLLists.h>

#include "tests/support/Matrices.h"

using kilntest::list;
using kilntest::vectorOf;
using testing::ElementsAre;

namespace {

// List i has i elements.
struct Group : TgroupDLLists {
  using TgroupDLLists::clear;
  using TgroupDLLists::slot;

  template <class... Indices>
  explicit Group(int n, const Indices&... indices) : TgroupDLLists(n, indices...) {
    for (int i = 0; i < length(); ++i) {
      auto* const elements = new TdblLinkedList;
      for (int j = 0; j < i; ++j) elements->append(new TdblLinkedListElement);
      slot(i) = elements;
    }
  }
};

}  // namespace

TEST(TgroupDLLists, UsesTheListsThatItIsTold) {
  Group group(4);
  EXPECT_THAT(list(group.usingIndices()), ElementsAre(0, 1, 2, 3));
  EXPECT_EQ(6, group.totalActiveLength());
  EXPECT_EQ(1, group.setUsing(1, 2));
  for (const auto& [first, last] : {std::pair(2, 1), {0, 4}, {-1, 2}}) {
    EXPECT_EQ(0, group.setUsing(first, last));
  }
  for (const int wrong : {4, -1}) EXPECT_EQ(0, group.setUsing(vectorOf({0, wrong, 1})));
  EXPECT_EQ(0, group.setUsing(IntVec()));
  EXPECT_THAT(list(group.usingIndices()), ElementsAre(1, 2));
  IntVec chosen = vectorOf({3, 9, 1, 9, 3});
  EXPECT_EQ(1, group.setUsing(chosen.slice(0, 3, 2)));
  const Group other(4, chosen.slice(0, 3, 2));
  chosen = 0;
  EXPECT_THAT(list(group.usingIndices()), ElementsAre(3, 1, 3));
  EXPECT_EQ(7, other.totalActiveLength());
  IntVec shared = group.usingIndices();
  shared(1) = -1;
  EXPECT_DEBUG_DEATH(EXPECT_EQ(6, group.totalActiveLength()), "each");
  delete std::exchange(group.slot(3), nullptr);
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0, group.totalActiveLength()), "each");
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0, Group(3, vectorOf({1, 3})).totalActiveLength()), "canUse");
}

TEST(TgroupDLLists, ACopyHasTheSameListsAndIndices) {
  Group group(3);
  // The copies are never destroyed, because the group deletes the lists.
  static Group* const views[] = {new Group(group), new Group(0)};
  *views[1] = group;
  for (const Group* view : views) {
    EXPECT_EQ(group.usingIndices().data(), view->usingIndices().data());
    EXPECT_EQ(3, view->length());
    EXPECT_EQ(group.listB(2), view->listB(2));
  }
  group.clear();
  EXPECT_EQ(-1, group.length());
  EXPECT_EQ(0, group.setUsing(0, 0));
  EXPECT_EQ(0, group.totalActiveLength());
}
