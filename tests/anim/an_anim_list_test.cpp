#include <bit>
#include <cstddef>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <utility>
#include <vector>

#include <kilnbase/anim/an_anim_list.h>
#include <kilnbase/util/aa_debug.h>
#include <vx/Memory.h>

#include "tests/util/DS/Structures.h"

using testing::ElementsAre;

namespace {

// The data of the items are the addresses of these objects.
int objects[4];

// Frees everything, and checks that no memory is left over.
class Items : public testing::TestWithParam<int> {
 protected:
  ~Items() override {
    for (int& object : objects) AN_remove_from_item_list(&object, list_, nullptr);
    DS_destructor(&list_, nullptr, nullptr, nullptr);
    while (MR_LinkNode* const node = nodes_.head) {
      MR_ll_remove(&nodes_, node);
      MA_free(node);
    }
    EXPECT_EQ(outstanding_, MA_outstanding().blocks);
  }

  int add(int type, void* data) { return AN_add_to_item_list(type, data, list_, &status_); }

  std::vector<int> types() const {
    std::vector<int> all;
    for (const MR_LinkNode* node = nodes_.head; node; node = node->next) {
      all.push_back(reinterpret_cast<const An_ItemNode*>(node)->record.type);
    }
    return all;
  }

  const std::size_t outstanding_ = MA_outstanding().blocks;
  StatusCode status_ = 0;
  DS_Structure* list_ = DS_create_type(GetParam(), nullptr, __LINE__, __FILE__);
  MR_LinkList nodes_ = {nullptr};
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Kinds, Items, testing::Values(DS_SLIST, DS_ARRAY));

TEST_P(Items, AreHeldOnceAndAddedAsTheStructureDoes) {
  for (const int i : {0, 1}) EXPECT_EQ(1, add(7, &objects[i]));
  EXPECT_EQ(0, add(8, &objects[0]));
  const AN_Item* const item = AN_is_item_in_item_list(&objects[0], list_, &status_);
  ASSERT_NE(nullptr, item);
  EXPECT_EQ(7, item->type);
  EXPECT_EQ(1, AN_remove_from_item_list(&objects[0], list_, &status_));
  EXPECT_EQ(MR_NO_ERROR, status_);
  EXPECT_EQ(0, AN_remove_from_item_list(&objects[0], list_, &status_));
  EXPECT_EQ(MR_ITEM_NOT_FOUND, status_);

  list_->filter = [](void* it) { return static_cast<AN_Item*>(it)->type == 7 ? 1 : 0; };
  EXPECT_EQ(0, add(8, &objects[0]));
  EXPECT_EQ(MR_ITEM_FILTERED, status_);
  EXPECT_EQ(1, list_->ordered);
  EXPECT_EQ(1, AN_add_to_item_list(7, &objects[0], list_, nullptr));
  EXPECT_EQ(0, list_->ordered) << "without a status";
  list_->comparator = nullptr;
  EXPECT_EQ(0, add(7, &objects[2]));
  EXPECT_EQ(MR_CANNOT_SORT, status_);
  EXPECT_EQ(3, list_->methods->enumerate(list_, nullptr)) << "added, but not by order";
}

TEST_P(Items, AreEqualByTypeAndDataAndFreedAsAChain) {
  AN_Item* chain = nullptr;
  for (int type : {2, 1, 1}) {
    AN_Item* const item = AN_item_create_type(type, objects, __LINE__, __FILE__, nullptr);
    item->next = std::exchange(chain, item);
  }
  const AN_Item otherData = {1, &objects[1], nullptr};
  EXPECT_EQ(1, AN_ds_item_equal(chain, chain->next));
  EXPECT_EQ(0, AN_ds_item_equal(chain, chain->next->next));
  EXPECT_EQ(0, AN_ds_item_equal(chain, &otherData));
  EXPECT_EQ(0, AN_ds_item_equal(nullptr, nullptr));
  EXPECT_EQ(1, AN_item_free(&chain->next->next, nullptr));  // AN_item_free does not unlink
  EXPECT_EQ(1, AN_item_list_free(&chain, nullptr));
  EXPECT_EQ(nullptr, chain);
  kilntest::expectCodes({
      {"look for null", [&](auto code) { return !AN_is_item_in_item_list(nullptr, list_, code); }},
      {"add null", [&](auto code) { return AN_add_to_item_list(7, nullptr, list_, code) == 0; }},
      {"add to null",
       [](auto code) { return AN_add_to_item_list(7, objects, nullptr, code) == 0; }},
      {"remove from null",
       [](auto code) { return AN_remove_from_item_list(objects, nullptr, code) == 0; }},
      {"free null", [](auto code) { return AN_item_free(nullptr, code) == 0; }},
      {"free a null chain", [](auto code) { return AN_item_list_free(nullptr, code) == 0; }},
  });
}

TEST(Item, IsPrintedThroughTheDebugChannel) {
  const AN_Item item = {-3, std::bit_cast<void*>(std::uintptr_t{0xAB}), nullptr};
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

// The type does not count. 0 and -0 differ, and a NaN equals itself.
TEST_P(Items, InNodesAreUniqueByObjectAndBitsOfTheValue) {
  for (int type = 0; type < 2; ++type) {
    for (const double value : {0.0, -0.0, std::numeric_limits<double>::quiet_NaN()}) {
      EXPECT_EQ(1, An_addUnique_to_item_list(type, &objects[2], value, &nodes_));
    }
  }
  EXPECT_EQ(1, An_addUnique_to_item_list(3, &objects[0], 0.0, &nodes_));
  EXPECT_EQ(1, An_add_to_item_list(4, &objects[0], 0, &nodes_));
  EXPECT_THAT(types(), ElementsAre(4, 3, 0, 0, 0));
}

// Objects and values count as unsigned numbers. Null comes last.
TEST_P(Items, InNodesAreComparedAndSortedInTheirPlaces) {
  const auto node = [](std::uintptr_t object, std::int64_t value) {
    return An_ItemNode{{}, {0, std::bit_cast<void*>(object), {value}}};
  };
  const An_ItemNode ascending[] = {node(1, -1), node(2, 0), node(2, 1), node(2, -1),
                                   node(UINTPTR_MAX, 0)};
  for (int i = 0; i < 36; ++i) {
    const int a = i / 6, b = i % 6;
    const auto* const left = a < 5 ? &ascending[a] : nullptr;
    const auto* const right = b < 5 ? &ascending[b] : nullptr;
    EXPECT_EQ((a > b) - (a < b), An_compareItemList(left, right)) << i;
  }
  EXPECT_EQ(0, An_compareItem(&ascending[1].record, &ascending[2].record));
  EXPECT_EQ(1, An_compareItem(nullptr, &ascending[4].record));
  EXPECT_EQ(0, An_sort_item_list(&nodes_, 1));
  EXPECT_EQ(0, An_add_to_item_list(5, nullptr, 0, &nodes_));
  EXPECT_EQ(0, An_addUnique_to_item_list(5, objects, 0.0, nullptr));
  EXPECT_EQ(0, An_sort_item_list(nullptr, 1));
  for (const int i : {1, 3, 0, 1, 2}) An_add_to_item_list(i, &objects[i], 0, &nodes_);
  const MR_LinkNode* const head = nodes_.head;
  EXPECT_EQ(1, An_sort_item_list(&nodes_, 0));
  EXPECT_THAT(types(), ElementsAre(0, 1, 1, 2, 3));
  EXPECT_EQ(1, An_sort_item_list(&nodes_, 1));
  EXPECT_THAT(types(), ElementsAre(0, 1, 2, 3));
  EXPECT_EQ(head, nodes_.head);
}
