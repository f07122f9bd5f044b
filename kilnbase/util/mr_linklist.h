/* Link lists: doubly linked lists through the callers' own records.
 *
 * A record takes part by its first field, an `MR_LinkNode`. The rest of the record is the caller's,
 * of any size:
 *
 *     typedef struct Knot {
 *       MR_LinkNode link;
 *       double parameter;
 *     } Knot;
 *
 *     int32_t compareKnots(const void* a, const void* b) {
 *       const double left = ((const Knot*)a)->parameter, right = ((const Knot*)b)->parameter;
 *       return (left > right) - (left < right);
 *     }
 *
 *     uint32_t countOfTwo(Knot* a, Knot* b) {
 *       MR_LinkList knots = {NULL};
 *       MR_ll_insert_sorted(&knots, &a->link, compareKnots);
 *       MR_ll_insert_sorted(&knots, &b->link, compareKnots);
 *       return MR_ll_length(knots.head);
 *     }
 *
 * A list is its first node. The list has no tail pointer and no count: appending walks to the last
 * node, and a length is counted. For lists of borrowed pointers see mr_list.h.
 *
 * The list never owns its nodes. The three operations that use the heap say so.
 *
 * Null pointers are allowed everywhere: an operation on them does nothing or returns null or 0,
 * unless the text of the operation says more.
 */
#ifndef KILNBASE_UTIL_MR_LINKLIST_H
#define KILNBASE_UTIL_MR_LINKLIST_H

#include <stddef.h>
#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Records that begin with two links of their own type, and lists of such records, are accessed as
 * these types, too. The compiler must not assume that the two kinds of access never meet. */
#ifdef __GNUC__
#define MR_LINK_ALIAS __attribute__((may_alias))
#else
#define MR_LINK_ALIAS
#endif

/** The first field of a record in a list. The links are null at the ends. */
typedef struct MR_LINK_ALIAS MR_LinkNode {
  /** The neighbours. */
  struct MR_LinkNode* prev;
  struct MR_LinkNode* next;
} MR_LinkNode;

/** An empty list has a null head. */
typedef struct MR_LINK_ALIAS MR_LinkList {
  /** The first node. */
  MR_LinkNode* head;
} MR_LinkList;

#undef MR_LINK_ALIAS

/** Negative when `a` sorts before `b`, 0 when they are equal, positive when `a` sorts after `b`. In
 * sorted insertions `a` is the new node and `b` a node of the list. In `MR_ll_find` `a` is the key
 * and `b` a node, which may be null. */
typedef int32_t (*MR_LinkCompare)(const void* a, const void* b);

/** As `MR_LinkCompare`, with the tolerance of the search for duplicates. */
typedef int32_t (*MR_LinkCompareWithin)(const void* node, const void* kept, double tolerance);

/** Returns 0 for a node that is to be removed, and may first release what the record owns. */
typedef int32_t (*MR_LinkPredicate)(void* node);

/** Links `node` behind the last node. */
KILNBASE_API void MR_ll_append(MR_LinkList* list, MR_LinkNode* node);

/** Links `node` in front of the head. */
KILNBASE_API void MR_ll_prepend(MR_LinkList* list, MR_LinkNode* node);

/** Links `node` in front of `before`, a node of the list. Appends `node` when `before` is null or
 * the list is empty. When `before` is `node`, nothing changes. */
KILNBASE_API void MR_ll_insert(MR_LinkList* list, MR_LinkNode* before, MR_LinkNode* node);

/** Links `node` between two neighbours in the list, of which one is null at an end, and `node2` at
 * the same position of `list2`. For `MR_ll_insert_sorted2`, which has found the place. */
KILNBASE_API void MR_ll_insert_between(MR_LinkList* list, MR_LinkNode* node, MR_LinkNode* before,
                                       MR_LinkNode* after, MR_LinkList* list2, MR_LinkNode* node2);

/** As `MR_ll_insert_sorted`, with a companion list that is kept in step: `node2` takes the same
 * position in `list2`. When `node` goes to the end of `list`, `node2` goes to the end of `list2`.
 * With a null `list2` or `node2` there is no companion. Kept as it is: when `node` goes in front of
 * a node and `list2` has no node at that position, `node2` is not linked and keeps its links. */
KILNBASE_INLINE void MR_ll_insert_sorted2(MR_LinkList* list, MR_LinkNode* node, MR_LinkList* list2,
                                          MR_LinkNode* node2, MR_LinkCompare cmp) {
  MR_LinkNode *before, *after;
  if (!list || !node || !cmp) return;
  after = list->head;
  before = after ? after->prev : after;
  while (after && cmp(node, after) > 0) {
    before = after;
    after = after->next;
  }
  MR_ll_insert_between(list, node, before, after, list2, node2);
}

/** Links `node` in front of the first node that does not sort before `node`, and so in front of its
 * equals; without such a node, behind the last one. Takes one comparison for each node up to the
 * place, and one for the node behind the place. Compiled where it is called, so that the compiler
 * can compile the comparison into the search. */
KILNBASE_INLINE void MR_ll_insert_sorted(MR_LinkList* list, MR_LinkNode* node, MR_LinkCompare cmp) {
  MR_ll_insert_sorted2(list, node, NULL, NULL, cmp); /* NOLINT(modernize-use-nullptr): for C */
}

/** Appends the whole chain that begins with `chain`. */
KILNBASE_API void MR_ll_merge(MR_LinkList* list, MR_LinkNode* chain);

/** Moves the nodes of `chain` one by one into the list with `MR_ll_insert_sorted2`. The companion
 * of each node is the node of `chain2` at the same position, or none behind the end of `chain2`.
 * Each search begins at the head: a random chain of n nodes takes about n * m / 2 comparisons in a
 * list of m nodes. */
KILNBASE_INLINE void MR_ll_merge_sorted(MR_LinkList* list, MR_LinkNode* chain, MR_LinkList* list2,
                                        MR_LinkNode* chain2, MR_LinkCompare cmp) {
  while (chain) {
    MR_LinkNode* const next = chain->next;
    MR_LinkNode* const next2 = chain2 ? chain2->next : chain2;
    MR_ll_insert_sorted2(list, chain, list2, chain2, cmp);
    chain = next;
    chain2 = next2;
  }
}

/** Unlinks `node` and clears its links. Kept as it is: whether `node` is in this list is not
 * checked. A node of another list is unlinked from its neighbours there; if the node was the head
 * of the other list, that list keeps pointing to the node. */
KILNBASE_API void MR_ll_remove(MR_LinkList* list, MR_LinkNode* node);

/** Unlinks every node for which `pred` returns 0 and releases it with `free`. Returns how many. */
KILNBASE_API int32_t MR_ll_remove_match(MR_LinkList* list, MR_LinkPredicate pred);

/** Removes each node that equals the last kept node before it, and the node of `list2` at the same
 * position, if there is one. Both are released with `free`. Equal nodes that are not neighbours
 * stay, so the list should be sorted. `tolerance` is passed to `cmp` unchanged. Returns how many
 * nodes were removed from `list`. */
KILNBASE_API int32_t MR_ll_remove_duplicates(MR_LinkList* list, MR_LinkList* list2,
                                             double tolerance, MR_LinkCompareWithin cmp);

/** Puts `newNode` into the place of `oldNode` and clears the links of `oldNode`. When both are the
 * same node, nothing changes. */
KILNBASE_API void MR_ll_replace(MR_LinkList* list, MR_LinkNode* oldNode, MR_LinkNode* newNode);

/** The first node from `start` on for which `cmp` (`key`, node) is 0, or null. With `sorted` other
 * than 0 the search ends at the first node that does not sort before the key. Kept as it is: at the
 * end of the chain `cmp` is called once more with a null node, and the result is ignored.
 * Comparators for searches must accept a null node. */
KILNBASE_API MR_LinkNode* MR_ll_find(MR_LinkNode* start, const void* key, MR_LinkCompare cmp,
                                     int sorted);

/** The position of `node`, counted from 0 at `head`; -1 when `node` is not reached. */
KILNBASE_API int32_t MR_ll_find_item_number(const MR_LinkNode* head, const MR_LinkNode* node);

/** The node `n` links after `node`, or null behind the end; `node` itself for `n` below 1. */
KILNBASE_API MR_LinkNode* MR_ll_nth(MR_LinkNode* node, int n);

/** The first and the last node of the chain with `node`. */
KILNBASE_API MR_LinkNode* MR_ll_first(MR_LinkNode* node);
KILNBASE_API MR_LinkNode* MR_ll_last(MR_LinkNode* node);

/** The neighbour; null at the end, and for null. */
KILNBASE_API MR_LinkNode* MR_ll_next(const MR_LinkNode* node);
KILNBASE_API MR_LinkNode* MR_ll_prev(const MR_LinkNode* node);

/** Counts the nodes from `node` to the end. */
KILNBASE_API uint32_t MR_ll_length(const MR_LinkNode* node);

/** 1 when `node` is reached from `head`, else 0. */
KILNBASE_API int MR_ll_present(const MR_LinkNode* head, const MR_LinkNode* node);

/** Copies the chain byte for byte, `size` bytes a node, into memory from `malloc`. Links `tail`
 * itself, not a copy, behind the last copy and returns the first node. Without a chain the result
 * is `tail` with both links cleared. For a `size` of 0 the result is null, and nothing changes.
 *
 * `size` must not be less than the size of the two links. Asserted in debug builds; in release
 * builds each copy gets room for the links.
 *
 * Kept as it is: the `next` of `tail` is cleared, so that its successors are cut off, and a failing
 * `malloc` is not caught. */
KILNBASE_API MR_LinkNode* MR_ll_copy_and_append(const MR_LinkNode* chain, MR_LinkNode* tail,
                                                size_t size);

#ifdef __cplusplus
}
#endif

#endif
