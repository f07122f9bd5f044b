#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <vector>

#include <kilnbase/auto/containers/TgroupDLLists.h>

using testing::ElementsAre;

namespace {

class Group : public TgroupDLLists {
 public:
  using TgroupDLLists::clear;

  explicit Group(int n) : TgroupDLLists(n) { fill(); }
  Group(int n, const IntVec& indices) : TgroupDLLists(n, indices) { fill(); }

 private:
  // List i has i elements.
  void fill() {
    for (int i = 0; i < length(); ++i) {
      auto* list = new TdblLinkedList;
      for (int j = 0; j < i; ++j) list->append(new TdblLinkedListElement);
      slot(i) = list;
    }
  }
};

IntVec indices(const std::vector<int>& values) {
  return IntVec(values.data(), static_cast<unsigned>(values.size()));
}

std::vector<int> inUse(const TgroupDLLists& group) {
  const IntVec& v = group.usingIndices();
  return std::vector<int>(v.data(), v.data() + v.length());
}

}  // namespace

TEST(TgroupDLLists, UsesTheListsThatItIsTold) {
  Group group(4);
  EXPECT_THAT(inUse(group), ElementsAre(0, 1, 2, 3));
  EXPECT_EQ(6, group.totalActiveLength());
  EXPECT_EQ(1, group.setUsing(1, 2));
  for (const auto& [first, last] : {std::pair(2, 1), {0, 4}, {-1, 2}}) {
    EXPECT_EQ(0, group.setUsing(first, last));
  }
  for (const auto& wrong : {std::vector<int>{}, {4}, {0, -1, 1}}) {
    EXPECT_EQ(0, group.setUsing(indices(wrong)));
  }
  EXPECT_THAT(inUse(group), ElementsAre(1, 2));
  IntVec chosen = indices({3, 9, 1, 9, 3});
  const IntVec everyOther = chosen.slice(0, 3, 2);
  EXPECT_EQ(1, group.setUsing(everyOther));
  chosen = 0;
  EXPECT_THAT(inUse(group), ElementsAre(3, 1, 3));
  EXPECT_EQ(7, group.totalActiveLength());
  EXPECT_EQ(3, Group(4, indices({3})).totalActiveLength());
  EXPECT_EQ(0, Group(4, IntVec()).totalActiveLength());
  EXPECT_DEBUG_DEATH(EXPECT_EQ(0, Group(3, indices({1, 3})).totalActiveLength()), "areSlots");
}

TEST(TgroupDLLists, ACopyHasTheSameListsAndIndices) {
  alignas(Group) static std::byte places[2][sizeof(Group)];
  Group group(3);
  auto* copy = new (places[0]) Group(group);  // neither is destroyed, as the lists are not theirs
  auto* assigned = new (places[1]) Group(0);
  *assigned = group;
  for (const Group* view : {copy, assigned}) {
    EXPECT_EQ(group.usingIndices().data(), view->usingIndices().data());
    EXPECT_EQ(3, view->length());
    EXPECT_EQ(group.listB(2), view->listB(2));
  }
  TrestrictedLinkedList** lists = nullptr;  // the first field
  std::memcpy(static_cast<void*>(&lists), static_cast<const void*>(&group), sizeof lists);
  EXPECT_EQ(lists[2], group.listB(2));
  group.clear();
  EXPECT_EQ(-1, group.length());
  EXPECT_EQ(0, group.setUsing(0, 0));
  EXPECT_EQ(0, group.totalActiveLength());
}
