/* Height-balanced binary search trees (AVL trees) of the caller's records.
 *
 * A record takes part in a tree by its first field, a `MR_AvlNode`; a tree is a pointer to its root
 * node, null when empty. The tree neither makes nor frees records. The order comes from a
 * comparator, which is passed to every operation that searches; no two nodes of a tree compare
 * equal:
 *
 *     typedef struct Curve {
 *       MR_AvlNode node;
 *       int32_t id;
 *     } Curve;
 *
 *     int compareIds(const void* a, const void* b) {
 *       const int32_t left = ((const Curve*)a)->id, right = ((const Curve*)b)->id;
 *       return (left > right) - (left < right);
 *     }
 *
 *     Curve* firstOfTwo(Curve* a, Curve* b) {
 *       MR_AvlNode* curves = NULL;
 *       MR_avl_insert(&curves, &a->node, compareIds);
 *       MR_avl_insert(&curves, &b->node, compareIds);
 *       return (Curve*)MR_avl_first(curves);
 *     }
 *
 * Insertion and searches take time logarithmic in the number of nodes. Removal rebalances the whole
 * tree and takes time linear in their number. `MR_bt_remove` does not rebalance, so it can leave
 * binary trees of any height, down to lists. All operations accept such trees, and
 * `MR_avl_balance` balances them.
 *
 * No operation needs more than a small fixed amount of stack. Walking or rebalancing a tree of more
 * than 128 levels takes some memory from the heap while it lasts; a balanced tree never has so many
 * levels. The walks and searches only read the tree: threads may run them at the same time, and the
 * callback of a walk may search and walk the same tree. Nobody may change the tree meanwhile.
 */
#ifndef KILNBASE_UTIL_MR_AVL_H
#define KILNBASE_UTIL_MR_AVL_H

#include <stddef.h>
#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The first field of a record in a tree. The functions set its fields, and read those of the
 * tree's nodes alone. */
typedef struct MR_AvlNode {
  /** The children; null for none. */
  struct MR_AvlNode* left;
  struct MR_AvlNode* right;
  int16_t balance;   /**< Height of the right subtree minus that of the left: -1, 0 or 1. */
  uint8_t direction; /**< Where the last insertion went from here: 1 left, 2 right. */
} MR_AvlNode;

/** Negative when `a` sorts before `b`, 0 when they are equal, positive when `a` sorts after `b`.
 * `b` is a node of the tree. `a` is the node that is inserted or removed, or in a search the key as
 * the caller gave it. */
typedef int (*MR_AvlCompare)(const void* a, const void* b);

/** Called for each node of a walk; anything but 0 ends the walk. */
typedef int (*MR_AvlVisit)(MR_AvlNode* node);
typedef int (*MR_AvlVisitUser)(MR_AvlNode* node, void* user);

/** Inserts a node, whose fields need not be set, and rebalances. Returns 0 when the node was
 * inserted; 1 when an equal node is in the tree already, which then keeps its shape (the
 * `direction` fields on the way to the equal node change); -1 when an argument is null. */
KILNBASE_API int MR_avl_insert(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare);

/** Removes a node as `MR_bt_remove` does, then rebalances the whole tree as `MR_avl_balance` does.
 * Returns 0 when the node was removed; 1, without rebalancing, when it is not in the tree. */
KILNBASE_API int MR_avl_remove(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare);

/** Removes a node without rebalancing. The right child takes the place of a node with two children,
 * and the left subtree goes below the leftmost node of the right subtree. The fields of the removed
 * node stay as they were. Returns 0 when the node was removed; 1 when it is not in the tree, even
 * if an equal node is. No argument may be null. Asserted in debug builds; in release builds the
 * result is 1. */
KILNBASE_API int MR_bt_remove(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare);

/** Balances any binary tree, whatever its `balance` fields say, and sets them. Returns 1; or 0 when
 * the tree has more than 128 levels and there is no memory, which leaves a search tree that is
 * balanced in parts. `root` must not be null. Asserted in debug builds; in release builds nothing
 * happens.
 *
 * The result is the same as from this rule: as long as there is a node whose subtrees differ in
 * height by more than 1, rotate at the first such node in post-order. As in insertion, the child on
 * the higher side takes the place of the node when the child leans to that side, and the child's
 * inner child does so otherwise, also when the child does not lean at all. */
KILNBASE_API int MR_avl_balance(MR_AvlNode** root);

/** The node that compares equal to the key, or null. `compare` must not be null, here and in the
 * next searches. Asserted in debug builds; in release builds nothing is found. */
KILNBASE_API MR_AvlNode* MR_avl_find(MR_AvlNode* root, const void* key, MR_AvlCompare compare);

/** The first and the last node in order; null for an empty tree. */
KILNBASE_API MR_AvlNode* MR_avl_first(MR_AvlNode* root);
KILNBASE_API MR_AvlNode* MR_avl_last(MR_AvlNode* root);

/** The node after, or before, the node that compares equal to the key. Null when no node is equal
 * to the key, or when the equal node is the last, or the first. */
KILNBASE_API MR_AvlNode* MR_avl_next(MR_AvlNode* root, const void* key, MR_AvlCompare compare);
KILNBASE_API MR_AvlNode* MR_avl_prev(MR_AvlNode* root, const void* key, MR_AvlCompare compare);

/** The child, or null for a null node. */
KILNBASE_API MR_AvlNode* MR_avl_left(MR_AvlNode* node);
KILNBASE_API MR_AvlNode* MR_avl_right(MR_AvlNode* node);

/** Calls `visit` for all nodes in order, or in post-order, in which both subtrees come before their
 * node. In post-order `visit` may free the node. Returns the first result that is not 0, which ends
 * the walk, or 0. A tree of more than 128 levels may find no memory: then the walk ends, and the
 * result is `MR_MEMORY_FAULT`. */
KILNBASE_API int MR_avl_inorder(MR_AvlNode* root, MR_AvlVisit visit);
KILNBASE_API int MR_avl_inorder_user(MR_AvlNode* root, MR_AvlVisitUser visit, void* user);
KILNBASE_API int MR_avl_postorder(MR_AvlNode* root, MR_AvlVisit visit);
KILNBASE_API int MR_avl_postorder_user(MR_AvlNode* root, MR_AvlVisitUser visit, void* user);

#ifdef __cplusplus
}
#endif

#endif
