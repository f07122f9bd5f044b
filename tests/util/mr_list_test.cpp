#include <cstdint>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include <kilnbase/util/mr_list.h>

namespace {

// The data are characters, so that a list reads as a word.
class DataList : public testing::Test {
 protected:
  ~DataList() override { MR_list_delete_all(&list_); }

  void fill() {
    for (char& c : word_) MR_list_append(&list_, &c);
  }
  std::string read() const {
    std::string read;
    for (const MR_ListNode* node = list_.head; node; node = node->next) {
      read += node->data ? *static_cast<const char*>(node->data) : '-';
    }
    return read;
  }

  std::string word_ = "acegi";
  MR_List list_ = {nullptr};
};

std::int32_t compareNodes(const void* a, const void* b) {
  const auto letter = [](const void* node) {
    return *static_cast<const char*>(static_cast<const MR_ListNode*>(node)->data);
  };
  return letter(a) - letter(b);
}

std::int32_t sameLetter(const void* data, const void* key) {
  return *static_cast<const char*>(data) == *static_cast<const char*>(key);
}

}  // namespace

TEST_F(DataList, NewNodesGoToTheirPlaces) {
  char letters[] = "dbcxa";
  MR_ListNode* const d = MR_list_insert(&list_, nullptr, &letters[0]);
  MR_ListNode* const b = MR_list_insert(&list_, d, &letters[1]);
  MR_ListNode* const c = MR_list_insert_sorted(&list_, &letters[2], compareNodes);
  MR_ListNode* const a = MR_list_prepend(&list_, &letters[4]);
  EXPECT_EQ("abcd", read());
  EXPECT_TRUE(a->next == b && b->next == c && c->next == d && d->prev == c && !a->prev);
  MR_ListNode* const notLinked = MR_list_insert_sorted(&list_, &letters[3], nullptr);
  EXPECT_TRUE(notLinked->data == &letters[3] && !notLinked->prev && !notLinked->next);
  std::free(notLinked);
  EXPECT_EQ(nullptr, MR_list_append(&list_, nullptr));
  EXPECT_EQ(nullptr, MR_list_insert_sorted(nullptr, &letters[3], compareNodes));
  EXPECT_EQ("abcd", read());
}

TEST_F(DataList, FindsByPointerAndByMatch) {
  fill();
  MR_ListNode* const third = list_.head->next->next;
  EXPECT_EQ(third, MR_list_find(list_.head, &word_[2]));
  EXPECT_EQ(nullptr, MR_list_find(third, &word_[0]));
  EXPECT_EQ(third, MR_list_compar(list_.head, "e", sameLetter));
  EXPECT_EQ(nullptr, MR_list_compar(list_.head, "z", sameLetter));
}

TEST_F(DataList, RemovalReturnsTheSuccessorOrAtTheEndThePredecessor) {
  fill();
  MR_ListNode* const second = list_.head->next;
  MR_ListNode* const first = list_.head;
  EXPECT_EQ(second, MR_list_remove(&list_, first));
  EXPECT_TRUE(!first->prev && !first->next);
  std::free(first);
  MR_ListNode* const fourth = second->next->next;
  EXPECT_EQ(fourth, MR_list_delete(&list_, second->next));
  EXPECT_EQ(fourth, MR_list_delete(&list_, fourth->next));
  EXPECT_EQ("cg", read());
  MR_list_delete(&list_, list_.head);
  EXPECT_EQ(nullptr, MR_list_delete(&list_, list_.head));
  EXPECT_EQ(nullptr, MR_list_delete(&list_, nullptr));
  EXPECT_EQ(nullptr, list_.head);
}

TEST_F(DataList, DeletesNodesWhoseDataHasGone) {
  fill();
  for (const std::size_t gone : {0, 3, 4}) {
    MR_list_find(list_.head, &word_[gone])->data = nullptr;
  }
  EXPECT_EQ("-ce--", read());
  MR_list_delete_empty(&list_);
  EXPECT_EQ("ce", read());
}
