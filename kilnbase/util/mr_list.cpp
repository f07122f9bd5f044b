#include <cstddef>
#include <cstdlib>

#include <kilnbase/util/mr_list.h>

namespace {

// The links of a node stand where mr_linklist.h expects them.
static_assert(offsetof(MR_ListNode, prev) == offsetof(MR_LinkNode, prev));
static_assert(offsetof(MR_ListNode, next) == offsetof(MR_LinkNode, next));

MR_LinkNode* linkOf(MR_ListNode* node) {
  return reinterpret_cast<MR_LinkNode*>(node);
}

MR_LinkList* linksOf(MR_List* list) {
  return reinterpret_cast<MR_LinkList*>(list);
}

MR_ListNode* newNode(const MR_List* list, void* data) {
  if (!list || !data) return nullptr;
  auto* const node = static_cast<MR_ListNode*>(std::malloc(sizeof(MR_ListNode)));
  if (node) *node = {nullptr, nullptr, data};
  return node;
}

}  // namespace

MR_ListNode* MR_list_append(MR_List* list, void* data) {
  return MR_list_insert(list, nullptr, data);
}

MR_ListNode* MR_list_prepend(MR_List* list, void* data) {
  return MR_list_insert(list, list ? list->head : nullptr, data);
}

MR_ListNode* MR_list_insert(MR_List* list, MR_ListNode* before, void* data) {
  MR_ListNode* const node = newNode(list, data);
  MR_ll_insert(linksOf(list), linkOf(before), linkOf(node));
  return node;
}

MR_ListNode* MR_list_insert_sorted(MR_List* list, void* data, MR_LinkCompare cmp) {
  MR_ListNode* const node = newNode(list, data);
  MR_ll_insert_sorted(linksOf(list), linkOf(node), cmp);
  return node;
}

MR_ListNode* MR_list_find(MR_ListNode* start, const void* data) {
  while (start && start->data != data) start = start->next;
  return start;
}

MR_ListNode* MR_list_compar(MR_ListNode* start, const void* key, MR_ListMatch match) {
  if (!key || !match) return nullptr;
  while (start && match(start->data, key) == 0) start = start->next;
  return start;
}

MR_ListNode* MR_list_remove(MR_List* list, MR_ListNode* node) {
  if (!list || !list->head || !node) return nullptr;
  MR_ListNode* const neighbour = node->next ? node->next : node->prev;
  MR_ll_remove(linksOf(list), linkOf(node));
  return neighbour;
}

MR_ListNode* MR_list_delete(MR_List* list, MR_ListNode* node) {
  if (!list || !list->head) return nullptr;
  MR_ListNode* const neighbour = MR_list_remove(list, node);
  std::free(node);
  return neighbour;
}

void MR_list_remove_all(MR_List* list) {
  while (list && list->head) MR_list_remove(list, list->head);
}

void MR_list_delete_all(MR_List* list) {
  while (list && list->head) MR_list_delete(list, list->head);
}

void MR_list_delete_empty(MR_List* list) {
  for (MR_ListNode* node = list ? list->head : nullptr; node;) {
    MR_ListNode* const next = node->next;
    if (!node->data) MR_list_delete(list, node);
    node = next;
  }
}
