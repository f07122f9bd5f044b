/* Link lists: doubly linked lists through the callers' own records.
 *
 * A record takes part by beginning with an `MR_LinkNode`; the rest of it is the caller's, of any
 * size:
 *
 *     typedef struct Knot {
 *       MR_LinkNode link;
 *       double parameter;
 *     } Knot;
 *     MR_LinkList knots = {NULL};
 *     MR_ll_insert_sorted(&knots, &knot->link, compareKnots);
 *
 * A list is its first node. It has no tail pointer and no count: appending walks to the last node
 * and a length is counted. For lists of borrowed pointers see mr_list.h.
 *
 * The list never owns its nodes; three operations use the heap, as they say.
 *
 * Null pointers are allowed everywhere: an operation on them does nothing or returns null or 0,
 * unless its own text says more.
 */
#ifndef KILNBASE_UTIL_MR_LINKLIST_H
#define KILNBASE_UTIL_MR_LINKLIST_H

#include <stddef.h>
#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Records that begin with two links of their own type, and lists of them, are seen as these types,
 * too; their accesses must not be taken to be apart. */
#ifdef __GNUC__
#define MR_LINK_ALIAS __attribute__((may_alias))
#else
#define MR_LINK_ALIAS
#endif

/** What a record in a list begins with; null at the ends. */
typedef struct MR_LINK_ALIAS MR_LinkNode {
  struct MR_LinkNode* prev;
  struct MR_LinkNode* next;
} MR_LinkNode;

/** An empty list has a null head. */
typedef struct MR_LINK_ALIAS MR_LinkList {
  MR_LinkNode* head;
} MR_LinkList;

#undef MR_LINK_ALIAS

/** Negative when `a` sorts before `b`, 0 when they are equal, positive after. In sorted insertions
 * `a` is the new node and `b` one of the list; in `MR_ll_find` `a` is the key and `b` a node,
 * which may be null. */
typedef int32_t (*MR_LinkCompare)(const void* a, const void* b);

/** As `MR_LinkCompare`, with the tolerance of the search for duplicates. */
typedef int32_t (*MR_LinkCompareWithin)(const void* node, const void* kept, double tolerance);

/** Returns 0 for a node that is to go; it may release what the record owns. */
typedef int32_t (*MR_LinkPredicate)(void* node);

/** Links `node` behind the last node. */
KILNBASE_API void MR_ll_append(MR_LinkList* list, MR_LinkNode* node);

/** Links `node` in front of the head. */
KILNBASE_API void MR_ll_prepend(MR_LinkList* list, MR_LinkNode* node);

/** Links `node` in front of `before`, a node of the list; appends it when `before` is null or the
 * list is empty. In front of itself a node stays where it is. */
KILNBASE_API void MR_ll_insert(MR_LinkList* list, MR_LinkNode* before, MR_LinkNode* node);

/** Links `node` in front of the first node that does not sort before it, so in front of its equals,
 * or behind the last node. One comparison for each node passed, and one for that it stops at. */
KILNBASE_API void MR_ll_insert_sorted(MR_LinkList* list, MR_LinkNode* node, MR_LinkCompare cmp);

/** `MR_ll_insert_sorted` that keeps a companion list in step: `node2` takes the same position in
 * `list2`. Where `list2` is too short to have a node at the position that `node` takes, `node2` is
 * not linked and keeps its links; when `node` goes to the end, `node2` does so too. A null `list2`
 * or `node2`: no companion. */
KILNBASE_API void MR_ll_insert_sorted2(MR_LinkList* list, MR_LinkNode* node, MR_LinkList* list2,
                                       MR_LinkNode* node2, MR_LinkCompare cmp);

/** Appends the whole chain that begins with `chain`. */
KILNBASE_API void MR_ll_merge(MR_LinkList* list, MR_LinkNode* chain);

/** Moves the nodes of `chain` one by one into the list with `MR_ll_insert_sorted2`, each with the
 * node of `chain2` at its position as companion (none once `chain2` has ended). Every node is
 * inserted from the head: about n * m / 2 comparisons for random chains of n nodes into m. */
KILNBASE_API void MR_ll_merge_sorted(MR_LinkList* list, MR_LinkNode* chain, MR_LinkList* list2,
                                     MR_LinkNode* chain2, MR_LinkCompare cmp);

/** Unlinks `node` and clears its links. Whether it is in this list is not checked: a node of
 * another list is unlinked there, and if it was that list's head, the head stays. */
KILNBASE_API void MR_ll_remove(MR_LinkList* list, MR_LinkNode* node);

/** Unlinks every node for which `pred` returns 0 and releases it with `free`. Returns how many. */
KILNBASE_API int32_t MR_ll_remove_match(MR_LinkList* list, MR_LinkPredicate pred);

/** Removes each node that equals the last one kept before it, and the node of `list2` at the same
 * position, where there is one; both are released with `free`. Neighbours alone are compared, so
 * equal nodes that stand apart stay: sort the list first. `tolerance` goes to `cmp` as it is.
 * Returns how many nodes left the first list. */
KILNBASE_API int32_t MR_ll_remove_duplicates(MR_LinkList* list, MR_LinkList* list2,
                                             double tolerance, MR_LinkCompareWithin cmp);

/** Puts `newNode` into the place of `oldNode`, whose links are cleared. A node replaces itself by
 * staying. */
KILNBASE_API void MR_ll_replace(MR_LinkList* list, MR_LinkNode* oldNode, MR_LinkNode* newNode);

/** The first node from `start` on for which `cmp` (`key`, node) is 0, or null. With `sorted` other
 * than 0 the search ends at the first node that does not sort before the key. When it comes to the
 * end of the chain, `cmp` is called once more with a null node and its answer ignored: comparators
 * for searches must accept that. */
KILNBASE_API MR_LinkNode* MR_ll_find(MR_LinkNode* start, const void* key, MR_LinkCompare cmp,
                                     int sorted);

/** The position of `node`, counted from 0 at `head`; -1 when it is not reached. */
KILNBASE_API int32_t MR_ll_find_item_number(const MR_LinkNode* head, const MR_LinkNode* node);

/** The node `n` links after `node`, or null behind the end; `node` itself for `n` below 1. */
KILNBASE_API MR_LinkNode* MR_ll_nth(MR_LinkNode* node, int n);

/** The ends of the chain in which `node` is. */
KILNBASE_API MR_LinkNode* MR_ll_first(MR_LinkNode* node);
KILNBASE_API MR_LinkNode* MR_ll_last(MR_LinkNode* node);

KILNBASE_API MR_LinkNode* MR_ll_next(const MR_LinkNode* node);
KILNBASE_API MR_LinkNode* MR_ll_prev(const MR_LinkNode* node);

/** Counts the nodes from `node` to the end. */
KILNBASE_API uint32_t MR_ll_length(const MR_LinkNode* node);

/** 1 when `node` is reached from `head`, else 0. */
KILNBASE_API int MR_ll_present(const MR_LinkNode* head, const MR_LinkNode* node);

/** Copies the chain byte for byte, `size` bytes a node (at least the two links) from `malloc`,
 * links `tail` behind the copy and returns the first node. `tail` itself, not a copy, is linked,
 * and it alone: its successors are cut off. Without a chain `tail` is returned with both links
 * cleared; null for a `size` of 0. The memory must be there: a failing `malloc` is not caught. */
KILNBASE_API MR_LinkNode* MR_ll_copy_and_append(const MR_LinkNode* chain, MR_LinkNode* tail,
                                                size_t size);

#ifdef __cplusplus
}
#endif

#endif
