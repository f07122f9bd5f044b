#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include <kilnbase/util/mr_list.h>

namespace {

// The data are characters, so that a list reads as a word.
char letterOf(const void* node) {
  return *static_cast<const char*>(static_cast<const MR_ListNode*>(node)->data);
}

std::string read(const MR_List& list) {
  std::string word;
  for (const MR_ListNode* node = list.head; node; node = node->next) word += letterOf(node);
  return word;
}

}  // namespace

TEST(DataList, NewNodesGoToTheirPlacesAndAreFound) {
  const auto compareNodes = [](const void* a, const void* b) -> std::int32_t {
    return letterOf(a) - letterOf(b);
  };
  char letters[] = "dbca";
  MR_List list = {nullptr};
  MR_ListNode* const d = MR_list_insert(&list, nullptr, &letters[0]);
  MR_list_insert(&list, d, &letters[1]);
  MR_ListNode* const c = MR_list_insert_sorted(&list, &letters[2], compareNodes);
  MR_list_prepend(&list, &letters[3]);
  std::free(MR_list_insert_sorted(&list, letters, nullptr));  // is not linked
  EXPECT_EQ(nullptr, MR_list_append(&list, nullptr));
  EXPECT_EQ(nullptr, MR_list_prepend(nullptr, letters));
  EXPECT_EQ("abcd", read(list));
  EXPECT_EQ(c, MR_list_find(list.head, &letters[2]));
  EXPECT_EQ(nullptr, MR_list_find(c, &letters[1]));
  const auto match = [](const void* data, const void* key) { return data == key ? -2 : 0; };
  EXPECT_EQ(c, MR_list_compar(list.head, &letters[2], match));
  EXPECT_EQ(nullptr, MR_list_compar(list.head, "z", match));
  MR_list_delete_all(&list);
}

TEST(DataList, RemovalReturnsTheSuccessorOrAtTheEndThePredecessor) {
  char letters[] = "abcde";
  MR_List list = {nullptr};
  for (int i = 0; i < 5; ++i) MR_list_append(&list, &letters[i]);
  EXPECT_EQ('b', letterOf(MR_list_delete(&list, list.head)));
  EXPECT_EQ('d', letterOf(MR_list_delete(&list, list.head->next)));
  EXPECT_EQ('d', letterOf(MR_list_delete(&list, MR_list_find(list.head, &letters[4]))));
  list.head->data = nullptr;
  MR_list_delete_empty(&list);
  EXPECT_EQ("d", read(list));
  MR_ListNode* const last = list.head;
  MR_list_remove_all(&list);
  EXPECT_EQ(nullptr, list.head);
  std::free(last);
}
