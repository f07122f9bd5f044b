#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

#include <kilnbase/anim/an_anim_list.h>
#include <kilnbase/util/DS/detail/Callback.h>
#include <kilnbase/util/aa_debug.h>
#include <vx/Memory.h>

namespace {

using vxKilnBase::detail::addressOf;
using vxKilnBase::detail::fail;
using vxKilnBase::detail::lacksMethods;
using vxKilnBase::detail::order;

int hasData(const void* item, const void* data) {
  return item && static_cast<const AN_Item*>(item)->data == data ? 1 : 0;
}

AN_Item* findData(const void* data, const DS_Structure* list) {
  void* const found = list->methods->find(list, hasData, data, nullptr);
  return found ? static_cast<AN_Item*>(list->methods->get_data(found, nullptr)) : nullptr;
}

void printLine(const char* text) {
  AA_indent();
  AA_debug_print("%s\n", text);
}

void printPointer(const char* name, const void* pointer) {
  AA_indent();
  AA_debug_print("%s: %#llx\n", name, addressOf(pointer));
}

An_ItemNode* nodeOf(MR_LinkNode* link) {
  return reinterpret_cast<An_ItemNode*>(link);
}

int addNode(const An_Record& record, MR_LinkList* list) {
  if (!record.object || !list) return 0;
  void* const memory = MA_malloc(sizeof(An_ItemNode), __LINE__, __FILE__);
  if (!memory) return 0;
  MR_ll_prepend(list, &(new (memory) An_ItemNode{{}, record})->link);
  return 1;
}

// Null comes last.
int orderOfNulls(const void* a, const void* b) {
  return !a ? (b ? 1 : 0) : -1;
}

int orderOfObjects(const An_Record& a, const An_Record& b) {
  return order(addressOf(a.object), addressOf(b.object));
}

int orderOfRecords(const An_Record& a, const An_Record& b) {
  const int objects = orderOfObjects(a, b);
  if (objects != 0) return objects;
  return order(std::bit_cast<std::uint64_t>(a.value), std::bit_cast<std::uint64_t>(b.value));
}

// Writes the records into the nodes from the head on. Returns the first node that gets no record.
MR_LinkNode* writeBack(std::span<const An_Record> records, MR_LinkList* list) {
  MR_LinkNode* node = list->head;
  for (const An_Record& record : records) {
    nodeOf(node)->record = record;
    node = node->next;
  }
  return node;
}

void freeFrom(MR_LinkNode* node, MR_LinkList* list) {
  while (node) {
    MR_LinkNode* const next = node->next;
    MR_ll_remove(list, node);
    MA_free(node);
    node = next;
  }
}

}  // namespace

AN_Item* AN_item_create_type(int type, void* data, int line, const char* file, StatusCode* status) {
  void* const memory = MA_malloc(sizeof(AN_Item), line, file);
  if (!memory) return fail(status, MR_MEMORY_FAULT);
  return new (memory) AN_Item{type, data, nullptr};
}

int AN_add_to_item_list(int type, void* data, DS_Structure* list, StatusCode* status) {
  if (!data || lacksMethods(list)) return fail(status, MR_ARGUMENT_ERROR);
  if (findData(data, list)) return 0;
  StatusCode code = MR_NO_ERROR;
  AN_Item* const item = AN_item_create_type(type, data, __LINE__, __FILE__, &code);
  if (!item) return fail(status, code);
  const bool added = list->methods->add(list, item, status ? &code : nullptr) != 0;
  if (!added) MA_free(item);
  return added && code == MR_NO_ERROR ? 1 : fail(status, code);
}

AN_Item* AN_is_item_in_item_list(const void* data, const DS_Structure* list, StatusCode* status) {
  if (!data || lacksMethods(list)) return fail(status, MR_ARGUMENT_ERROR);
  return findData(data, list);
}

int AN_remove_from_item_list(const void* data, DS_Structure* list, StatusCode* status) {
  if (!data || lacksMethods(list)) return fail(status, MR_ARGUMENT_ERROR);
  AN_Item* const item = findData(data, list);
  if (!item) return fail(status, MR_ITEM_NOT_FOUND);
  list->methods->remove(list, item, nullptr, nullptr, nullptr);
  MA_free(item);
  return 1;
}

int AN_ds_item_equal(const void* a, const void* b) {
  const auto* const left = static_cast<const AN_Item*>(a);
  const auto* const right = static_cast<const AN_Item*>(b);
  return left && right && left->type == right->type && left->data == right->data ? 1 : 0;
}

int AN_item_free(AN_Item** item, StatusCode* status) {
  if (!item) return fail(status, MR_ARGUMENT_ERROR);
  MA_free(*item);
  *item = nullptr;
  return 1;
}

int AN_item_list_free(AN_Item** first, StatusCode* status) {
  if (!first) return fail(status, MR_ARGUMENT_ERROR);
  while (*first) {
    AN_Item* const next = (*first)->next;
    AN_item_free(first, status);
    *first = next;
  }
  return 1;
}

int AN_print_item(const AN_Item* item, StatusCode*) {
  if (!item) {
    printLine("Item: NULL");
    return 0;
  }
  printPointer("Item", item);
  printLine("{");
  AA_set_indent(-1);
  AA_indent();
  AA_debug_print("Type: %d\n", item->type);
  printPointer("Data", item->data);
  printPointer("Next", item->next);
  AA_set_indent(-2);
  printLine("}");
  return 1;
}

int An_add_to_item_list(int type, void* object, std::int64_t value, MR_LinkList* list) {
  return addNode({type, object, {.integer = value}}, list);
}

int An_addUnique_to_item_list(int type, void* object, double value, MR_LinkList* list) {
  const An_ItemNode wanted = {{}, {type, object, {.number = value}}};
  if (list && MR_ll_find(list->head, &wanted, An_compareItemList, 0)) return 1;
  return addNode(wanted.record, list);
}

std::int32_t An_compareItemList(const void* a, const void* b) {
  if (!a || !b) return orderOfNulls(a, b);
  return orderOfRecords(static_cast<const An_ItemNode*>(a)->record,
                        static_cast<const An_ItemNode*>(b)->record);
}

int An_compareItem(const void* a, const void* b) {
  if (!a || !b) return orderOfNulls(a, b);
  return orderOfObjects(*static_cast<const An_Record*>(a), *static_cast<const An_Record*>(b));
}

int An_sort_item_list(MR_LinkList* list, int unique) {
  const std::size_t count = MR_ll_length(list ? list->head : nullptr);
  const std::unique_ptr<An_Record[]> records(new (std::nothrow) An_Record[count]);
  if (count == 0 || !records) return 0;
  An_Record* end = records.get();
  for (MR_LinkNode* node = list->head; node; node = node->next) *end++ = nodeOf(node)->record;
  std::qsort(records.get(), count, sizeof(An_Record), An_compareItem);
  const auto sameObject = [](const An_Record& a, const An_Record& b) {
    return a.object == b.object;
  };
  if (unique) end = std::unique(records.get(), end, sameObject);
  freeFrom(writeBack({records.get(), end}, list), list);
  return 1;
}
