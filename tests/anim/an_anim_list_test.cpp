#include <bit>
#include <cstddef>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <kilnbase/anim/an_anim_list.h>
#include <kilnbase/util/aa_debug.h>
#include <kilnbase/util/mr_string.h>
#include <vx/Memory.h>

using testing::ElementsAre;
using testing::Pair;

namespace {

// The items' data are addresses of these.
int objects[4];

class ItemStructure : public testing::TestWithParam<int> {
 protected:
  ~ItemStructure() override {
    while (AN_Item* const item = first()) AN_remove_from_item_list(item->data, list_, nullptr);
    DS_destructor(&list_, nullptr, nullptr, nullptr);
    EXPECT_EQ(outstanding_, MA_outstanding().blocks);
  }

  AN_Item* first() {
    void* const head = list_->methods->head(list_, nullptr);
    return head ? static_cast<AN_Item*>(list_->methods->get_data(head, nullptr)) : nullptr;
  }
  int count() { return list_->methods->enumerate(list_, nullptr); }
  int add(int type, void* data) { return AN_add_to_item_list(type, data, list_, &status_); }

  std::size_t outstanding_ = MA_outstanding().blocks;
  StatusCode status_ = 0;
  DS_Structure* list_ = DS_create_type(GetParam(), nullptr, __LINE__, __FILE__);
};

}  // namespace

TEST_P(ItemStructure, HoldsEachDataOnce) {
  EXPECT_EQ(nullptr, AN_is_item_in_item_list(&objects[0], list_, &status_));
  EXPECT_EQ(1, add(7, &objects[0]));
  EXPECT_EQ(1, add(7, &objects[1]));
  EXPECT_EQ(0, add(8, &objects[0]));
  EXPECT_EQ(MR_NO_ERROR, status_);
  EXPECT_EQ(2, count());
  const AN_Item* const item = AN_is_item_in_item_list(&objects[0], list_, &status_);
  ASSERT_EQ(first(), item);
  EXPECT_TRUE(item->type == 7 && item->data == &objects[0] && !item->next);

  EXPECT_EQ(1, AN_remove_from_item_list(&objects[0], list_, &status_));
  EXPECT_EQ(nullptr, AN_is_item_in_item_list(&objects[0], list_, &status_));
  EXPECT_EQ(MR_NO_ERROR, status_);
  EXPECT_EQ(0, AN_remove_from_item_list(&objects[0], list_, &status_));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status_);
  EXPECT_EQ(1, count());
}

TEST_P(ItemStructure, PassesOnTheCodeOfTheStructure) {
  list_->filter = [](void* item) { return static_cast<AN_Item*>(item)->type == 7 ? 1 : 0; };
  EXPECT_EQ(0, add(8, &objects[0]));
  EXPECT_EQ(MR_ITEM_FILTERED, status_);
  EXPECT_EQ(0, count());
  list_->comparator = nullptr;
  EXPECT_EQ(0, add(7, &objects[0]));
  EXPECT_EQ(MR_CANNOT_SORT, status_);
  EXPECT_EQ(1, count()) << "added, but not by order";
}

TEST_P(ItemStructure, IsNoLongerOrderedAfterAnAdditionWithoutAStatus) {
  EXPECT_EQ(1, add(7, &objects[0]));
  EXPECT_EQ(1, list_->ordered);
  EXPECT_EQ(1, AN_add_to_item_list(7, &objects[1], list_, nullptr));
  EXPECT_EQ(0, list_->ordered);
  list_->filter = [](void*) { return 0; };
  EXPECT_EQ(0, AN_add_to_item_list(7, &objects[2], list_, nullptr));
}

TEST_P(ItemStructure, NullArgumentsAreArgumentErrors) {
  const auto code = [this] { return std::exchange(status_, MR_NO_ERROR); };
  EXPECT_EQ(0, add(7, nullptr));
  EXPECT_EQ(MR_ARGUMENT_ERROR, code());
  EXPECT_EQ(nullptr, AN_is_item_in_item_list(nullptr, list_, &status_));
  EXPECT_EQ(MR_ARGUMENT_ERROR, code());
  EXPECT_EQ(0, AN_remove_from_item_list(objects, nullptr, &status_));
  EXPECT_EQ(MR_ARGUMENT_ERROR, code());
  EXPECT_EQ(0, AN_item_free(nullptr, &status_));
  EXPECT_EQ(MR_ARGUMENT_ERROR, code());
}

INSTANTIATE_TEST_SUITE_P(Kinds, ItemStructure, testing::Values(DS_SLIST, DS_ARRAY));

TEST(Items, AreEqualByTypeAndData) {
  AN_Item items[] = {{1, &objects[0], nullptr},
                     {1, &objects[0], nullptr},
                     {2, &objects[0], nullptr},
                     {1, &objects[1], nullptr}};
  items[1].next = items;
  for (int i = 0; i < 4; ++i) EXPECT_EQ(i < 2, AN_ds_item_equal(&items[0], &items[i])) << i;
  EXPECT_EQ(0, AN_ds_item_equal(items, nullptr));
  EXPECT_EQ(0, AN_ds_item_equal(nullptr, nullptr));
}

TEST(Items, AreFreedOneByOneOrAsAChain) {
  const std::size_t before = MA_outstanding().blocks;
  AN_Item* chain = nullptr;
  for (int type = 0; type < 3; ++type) {
    AN_Item* const item = AN_item_create_type(type, objects, __LINE__, __FILE__, nullptr);
    item->next = chain;
    chain = item;
  }
  AN_Item* head = std::exchange(chain, chain->next);
  EXPECT_EQ(1, AN_item_free(&head, nullptr));
  EXPECT_EQ(nullptr, head);
  EXPECT_EQ(1, AN_item_list_free(&chain, nullptr));
  EXPECT_EQ(nullptr, chain);
  EXPECT_EQ(1, AN_item_list_free(&chain, nullptr));
  EXPECT_EQ(before, MA_outstanding().blocks);
}

TEST(Items, ArePrintedThroughTheDebugChannel) {
  const AN_Item item = {-3, MR_int2ptr(0xAB), nullptr};
  testing::internal::CaptureStderr();
  AA_set_indent(1);
  EXPECT_EQ(1, AN_print_item(&item, nullptr));
  EXPECT_EQ(0, AN_print_item(nullptr, nullptr));
  AA_set_indent(0);
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_EQ("   Item: 0x", printed.substr(0, 11));
  EXPECT_EQ("   {\n      Type: -3\n      Data: 0xab\n      Next: 0\n   }\n   Item: NULL\n",
            printed.substr(printed.find('\n') + 1));
}

namespace {

// A fraction would be lost.
template <class Value>
concept CanBeAdded = requires(Value value, MR_LinkList* list) {
  An_add_to_item_list(5, list, value, list);
};
static_assert(CanBeAdded<int> && CanBeAdded<std::int64_t> && !CanBeAdded<double>);

class ItemNodes : public testing::Test {
 protected:
  ~ItemNodes() override {
    while (MR_LinkNode* const node = list_.head) {
      MR_ll_remove(&list_, node);
      MA_free(node);
    }
    EXPECT_EQ(outstanding_, MA_outstanding().blocks);
  }

  // The objects' numbers with the types, in the order of the list.
  std::vector<std::pair<int, int>> read() const {
    std::vector<std::pair<int, int>> all;
    for (const MR_LinkNode* node = list_.head; node; node = node->next) {
      const An_Record& record = reinterpret_cast<const An_ItemNode*>(node)->record;
      all.emplace_back(static_cast<int>(static_cast<int*>(record.object) - objects), record.type);
    }
    return all;
  }

  std::size_t outstanding_ = MA_outstanding().blocks;
  MR_LinkList list_ = {nullptr};
};

}  // namespace

TEST_F(ItemNodes, GoToTheHead) {
  EXPECT_EQ(1, An_add_to_item_list(5, &objects[1], -9, &list_));
  EXPECT_EQ(1, An_add_to_item_list(6, &objects[1], -9, &list_));
  EXPECT_THAT(read(), ElementsAre(Pair(1, 6), Pair(1, 5)));
  EXPECT_EQ(-9, reinterpret_cast<const An_ItemNode*>(list_.head)->record.value.integer);
  EXPECT_EQ(0, An_add_to_item_list(5, nullptr, 0, &list_));
  EXPECT_EQ(0, An_add_to_item_list(5, objects, 0, nullptr));
  EXPECT_EQ(0, An_addUnique_to_item_list(5, objects, 0.0, nullptr));
}

// The type does not count; 0 and -0 differ, and a NaN is itself.
TEST_F(ItemNodes, AreUniqueByObjectAndBitsOfTheValue) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (int type = 0; type < 2; ++type) {
    for (const double value : {0.0, -0.0, 1.5, kNaN}) {
      EXPECT_EQ(1, An_addUnique_to_item_list(type, &objects[2], value, &list_));
    }
  }
  EXPECT_EQ(1, An_addUnique_to_item_list(3, &objects[0], 1.5, &list_));
  EXPECT_THAT(read(), ElementsAre(Pair(0, 3), Pair(2, 0), Pair(2, 0), Pair(2, 0), Pair(2, 0)));
}

TEST_F(ItemNodes, CompareAsUnsignedNumbersWithNullLast) {
  const auto node = [](std::uintptr_t object, std::int64_t value) {
    return An_ItemNode{{}, {0, std::bit_cast<void*>(object), {value}}};
  };
  const An_ItemNode ascending[] = {node(1, -1), node(2, 0), node(2, 1), node(2, -1),
                                   node(UINTPTR_MAX, 0)};
  for (int i = 0; i < 5; ++i) {
    for (int j = 0; j < 5; ++j) {
      EXPECT_EQ((i > j) - (i < j), An_compareItemList(&ascending[i], &ascending[j])) << i << j;
    }
  }
  EXPECT_EQ(0, An_compareItem(&ascending[1].record, &ascending[2].record));
  EXPECT_EQ(1, An_compareItem(&ascending[4].record, &ascending[0].record));
  for (const auto compare : {An_compareItemList, An_compareItem}) {
    EXPECT_EQ(1, compare(nullptr, ascending));
    EXPECT_EQ(-1, compare(ascending, nullptr));
    EXPECT_EQ(0, compare(nullptr, nullptr));
  }
}

TEST_F(ItemNodes, AreSortedByObjectInTheirPlaces) {
  EXPECT_EQ(0, An_sort_item_list(&list_, 1));
  EXPECT_EQ(0, An_sort_item_list(nullptr, 1));
  for (const int object : {1, 3, 0, 1, 2}) {
    An_add_to_item_list(10 * object, &objects[object], 0, &list_);
  }
  const MR_LinkNode* const head = list_.head;
  EXPECT_EQ(1, An_sort_item_list(&list_, 0));
  EXPECT_EQ(head, list_.head);
  EXPECT_THAT(read(), ElementsAre(Pair(0, 0), Pair(1, 10), Pair(1, 10), Pair(2, 20), Pair(3, 30)));
  EXPECT_EQ(1, An_sort_item_list(&list_, 1));
  EXPECT_EQ(head, list_.head);
  EXPECT_THAT(read(), ElementsAre(Pair(0, 0), Pair(1, 10), Pair(2, 20), Pair(3, 30)));
}
