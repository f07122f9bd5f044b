/* Lists of borrowed pointers.
 *
 * The list makes its nodes with `malloc` and releases them with `free`; the data they point at is
 * the caller's and never touched. A node is a link node (mr_linklist.h) with one more field, so
 * that the operations of that layer serve these lists, too:
 *
 *     MR_List curves = {NULL};
 *     MR_list_append(&curves, curve);
 *     for (MR_ListNode* node = curves.head; node; node = node->next) draw(node->data);
 *     MR_list_delete_all(&curves);
 *
 * An operation that makes a node returns it; it returns null, and has changed nothing, when the
 * list or the data is null or the memory runs out.
 */
#ifndef KILNBASE_UTIL_MR_LIST_H
#define KILNBASE_UTIL_MR_LIST_H

#include <kilnbase/export.h>
#include <kilnbase/util/mr_linklist.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct MR_ListNode {
  struct MR_ListNode* prev;
  struct MR_ListNode* next;
  void* data;
} MR_ListNode;

/** An empty list has a null head. */
typedef struct MR_List {
  MR_ListNode* head;
} MR_List;

/** Not 0 when the data is the one that is looked for: the reverse of a comparator's answer. */
typedef int32_t (*MR_ListMatch)(const void* data, const void* key);

KILNBASE_API MR_ListNode* MR_list_append(MR_List* list, void* data);
KILNBASE_API MR_ListNode* MR_list_prepend(MR_List* list, void* data);
/** In front of `before`; at the end when that is null or the list is empty. */
KILNBASE_API MR_ListNode* MR_list_insert(MR_List* list, MR_ListNode* before, void* data);
/** At the place that `MR_ll_insert_sorted` chooses. `cmp` is given two `MR_ListNode`s, not their
 * data. With a null `cmp` the new node is returned without being in the list. */
KILNBASE_API MR_ListNode* MR_list_insert_sorted(MR_List* list, void* data, MR_LinkCompare cmp);

/** The first node from `start` on with this `data` pointer, or null. */
KILNBASE_API MR_ListNode* MR_list_find(MR_ListNode* start, const void* data);
/** The first node from `start` on for whose data `match` (data, `key`) is not 0; null when there is
 * none or an argument is null. */
KILNBASE_API MR_ListNode* MR_list_compar(MR_ListNode* start, const void* key, MR_ListMatch match);

/** Unlinks `node`, which is then the caller's to `free`. Returns the node after it, or the one
 * before it when it was the last, or null when it was the only one. */
KILNBASE_API MR_ListNode* MR_list_remove(MR_List* list, MR_ListNode* node);
/** As `MR_list_remove`, and releases the node. */
KILNBASE_API MR_ListNode* MR_list_delete(MR_List* list, MR_ListNode* node);

/** `MR_list_remove` and `MR_list_delete` for all nodes. */
KILNBASE_API void MR_list_remove_all(MR_List* list);
KILNBASE_API void MR_list_delete_all(MR_List* list);

/** Deletes every node whose `data` has become null. */
KILNBASE_API void MR_list_delete_empty(MR_List* list);

#ifdef __cplusplus
}
#endif

#endif
