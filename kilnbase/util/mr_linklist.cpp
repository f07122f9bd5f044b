#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_linklist.h>

namespace {

// The place between two neighbours in a list; at an end one of the two is null.
struct Gap {
  MR_LinkNode* before;
  MR_LinkNode* after;
};

void linkInto(const Gap& gap, MR_LinkList* list, MR_LinkNode* node) {
  *node = {gap.before, gap.after};
  if (gap.before) gap.before->next = node;
  if (gap.after) gap.after->prev = node;
  if (list->head == gap.after) list->head = node;
}

// The node at the same position from `head2` as the node from `head`; null when there is none.
MR_LinkNode* companionOf(const MR_LinkNode* node, const MR_LinkNode* head, MR_LinkNode* head2) {
  for (; head2 && head != node; head = head->next) head2 = head2->next;
  return head2;
}

void removeAndFree(MR_LinkList* list, MR_LinkNode* node) {
  MR_ll_remove(list, node);
  std::free(node);
}

MR_LinkNode* copyOf(const MR_LinkNode* node, std::size_t size) {
  KILN_ASSERT(size >= sizeof(MR_LinkNode));
  void* const copy = std::malloc(std::max(size, sizeof(MR_LinkNode)));
  return static_cast<MR_LinkNode*>(std::memcpy(copy, node, size));
}

}  // namespace

void MR_ll_append(MR_LinkList* list, MR_LinkNode* node) {
  if (list && node) linkInto({MR_ll_last(list->head), nullptr}, list, node);
}

void MR_ll_prepend(MR_LinkList* list, MR_LinkNode* node) {
  if (list) MR_ll_insert(list, list->head, node);
}

void MR_ll_insert(MR_LinkList* list, MR_LinkNode* before, MR_LinkNode* node) {
  if (!list || !node) return;
  if (!list->head || !before) {
    MR_ll_append(list, node);
  } else if (before != node) {
    linkInto({before->prev, before}, list, node);
  }
}

void MR_ll_insert_between(MR_LinkList* list, MR_LinkNode* node, MR_LinkNode* before,
                          MR_LinkNode* after, MR_LinkList* list2, MR_LinkNode* node2) {
  if (!list || !node) return;
  linkInto({before, after}, list, node);
  if (!list2 || !node2) return;
  MR_LinkNode* const after2 = after ? companionOf(node, list->head, list2->head) : nullptr;
  if (after2 || !after) MR_ll_insert(list2, after2, node2);
}

void MR_ll_merge(MR_LinkList* list, MR_LinkNode* chain) {
  if (!list || !chain) return;
  chain->prev = MR_ll_last(list->head);
  (chain->prev ? chain->prev->next : list->head) = chain;
}

void MR_ll_remove(MR_LinkList* list, MR_LinkNode* node) {
  if (!list || !node) return;
  if (node->prev) node->prev->next = node->next;
  if (node->next) node->next->prev = node->prev;
  if (list->head == node) list->head = node->next;
  *node = {};
}

std::int32_t MR_ll_remove_match(MR_LinkList* list, MR_LinkPredicate pred) {
  if (!list || !pred) return 0;
  std::int32_t removed = 0;
  for (MR_LinkNode* node = list->head; node;) {
    MR_LinkNode* const next = node->next;
    if (pred(node) == 0) {
      removeAndFree(list, node);
      ++removed;
    }
    node = next;
  }
  return removed;
}

std::int32_t MR_ll_remove_duplicates(MR_LinkList* list, MR_LinkList* list2, double tolerance,
                                     MR_LinkCompareWithin cmp) {
  if (!list || !list->head || !cmp) return 0;
  std::int32_t removed = 0;
  MR_LinkNode* kept = list->head;
  MR_LinkNode* companion = list2 ? MR_ll_next(list2->head) : nullptr;
  while (MR_LinkNode* const node = kept->next) {
    MR_LinkNode* const nextCompanion = MR_ll_next(companion);
    if (cmp(node, kept, tolerance) != 0) {
      kept = node;
    } else {
      removeAndFree(list, node);
      removeAndFree(list2, companion);
      ++removed;
    }
    companion = nextCompanion;
  }
  return removed;
}

void MR_ll_replace(MR_LinkList* list, MR_LinkNode* oldNode, MR_LinkNode* newNode) {
  if (!list || !oldNode || !newNode || oldNode == newNode) return;
  *newNode = *oldNode;
  if (newNode->prev) newNode->prev->next = newNode;
  if (newNode->next) newNode->next->prev = newNode;
  if (list->head == oldNode) list->head = newNode;
  *oldNode = {};
}

MR_LinkNode* MR_ll_find(MR_LinkNode* start, const void* key, MR_LinkCompare cmp, int sorted) {
  if (!start || !key || !cmp) return nullptr;
  for (MR_LinkNode* node = start; node; node = node->next) {
    const std::int32_t order = cmp(key, node);
    if (order == 0) return node;
    if (sorted && order < 0) return nullptr;
  }
  cmp(key, nullptr);
  return nullptr;
}

std::int32_t MR_ll_find_item_number(const MR_LinkNode* head, const MR_LinkNode* node) {
  std::int32_t number = 0;
  for (; head && head != node; head = head->next) ++number;
  return head ? number : -1;
}

MR_LinkNode* MR_ll_nth(MR_LinkNode* node, int n) {
  for (; node && n > 0; --n) node = node->next;
  return node;
}

MR_LinkNode* MR_ll_first(MR_LinkNode* node) {
  while (node && node->prev) node = node->prev;
  return node;
}

MR_LinkNode* MR_ll_last(MR_LinkNode* node) {
  while (node && node->next) node = node->next;
  return node;
}

MR_LinkNode* MR_ll_next(const MR_LinkNode* node) {
  return node ? node->next : nullptr;
}

MR_LinkNode* MR_ll_prev(const MR_LinkNode* node) {
  return node ? node->prev : nullptr;
}

std::uint32_t MR_ll_length(const MR_LinkNode* node) {
  std::uint32_t length = 0;
  for (; node; node = node->next) ++length;
  return length;
}

int MR_ll_present(const MR_LinkNode* head, const MR_LinkNode* node) {
  return MR_ll_find_item_number(head, node) >= 0 ? 1 : 0;
}

MR_LinkNode* MR_ll_copy_and_append(const MR_LinkNode* chain, MR_LinkNode* tail, std::size_t size) {
  if (size == 0) return nullptr;
  MR_LinkList copy = {};
  Gap end = {};
  for (; chain; chain = chain->next) {
    MR_LinkNode* const node = copyOf(chain, size);
    linkInto(end, &copy, node);
    end.before = node;
  }
  if (tail) linkInto(end, &copy, tail);
  return copy.head;
}
