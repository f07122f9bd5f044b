/* Lists of borrowed pointers.
 *
 * The list makes its nodes with `malloc` and releases them with `free`. The data that the nodes
 * point at is the caller's and never touched. A node is a link node (mr_linklist.h) with one more
 * field, so the operations of mr_linklist.h work on these lists, too.
 *
 *     char wing[] = "wing";
 *     MR_List names = {NULL};
 *     MR_list_append(&names, wing);
 *     for (MR_ListNode* node = names.head; node; node = node->next) puts((const char*)node->data);
 *     MR_list_delete_all(&names);
 *
 * An operation that makes a node returns the node. It returns null and changes nothing when the
 * list or the data is null or the memory runs out.
 */
#ifndef KILNBASE_UTIL_MR_LIST_H
#define KILNBASE_UTIL_MR_LIST_H

#include <kilnbase/export.h>
#include <kilnbase/util/mr_linklist.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A node from `malloc`. The links are null at the ends; the data is borrowed. */
typedef struct MR_ListNode {
  /** The neighbours. */
  struct MR_ListNode* prev;
  struct MR_ListNode* next;
  /** What the caller has put into the list. */
  void* data;
} MR_ListNode;

/** An empty list has a null head. */
typedef struct MR_List {
  /** The first node. */
  MR_ListNode* head;
} MR_List;

/** Not 0 when the data is what the caller looks for. A comparator, in contrast, returns 0 then. */
typedef int32_t (*MR_ListMatch)(const void* data, const void* key);

/** At the end, or at the head. */
KILNBASE_API MR_ListNode* MR_list_append(MR_List* list, void* data);
KILNBASE_API MR_ListNode* MR_list_prepend(MR_List* list, void* data);
/** In front of the node `before`; at the end when `before` is null or the list is empty. */
KILNBASE_API MR_ListNode* MR_list_insert(MR_List* list, MR_ListNode* before, void* data);
/** At the place that `MR_ll_insert_sorted` chooses. `cmp` is given two `MR_ListNode`s, not their
 * data. With a null `cmp` the new node is returned without being in the list. */
KILNBASE_API MR_ListNode* MR_list_insert_sorted(MR_List* list, void* data, MR_LinkCompare cmp);

/** The first node from `start` on with this `data` pointer, or null. */
KILNBASE_API MR_ListNode* MR_list_find(MR_ListNode* start, const void* data);
/** The first node from `start` on for which `match` (data of the node, `key`) is not 0. Null when
 * there is none or an argument is null. */
KILNBASE_API MR_ListNode* MR_list_compar(MR_ListNode* start, const void* key, MR_ListMatch match);

/** Unlinks `node`, which the caller then releases with `free`. Returns the node after `node`; or
 * the node before, when `node` was the last one; or null, when `node` was the only one. */
KILNBASE_API MR_ListNode* MR_list_remove(MR_List* list, MR_ListNode* node);
/** As `MR_list_remove`, and releases the node, but never its data. */
KILNBASE_API MR_ListNode* MR_list_delete(MR_List* list, MR_ListNode* node);

/** Calls `MR_list_remove`, or `MR_list_delete`, until the list is empty. */
KILNBASE_API void MR_list_remove_all(MR_List* list);
KILNBASE_API void MR_list_delete_all(MR_List* list);

/** Deletes every node whose `data` has become null. */
KILNBASE_API void MR_list_delete_empty(MR_List* list);

#ifdef __cplusplus
}
#endif

#endif
