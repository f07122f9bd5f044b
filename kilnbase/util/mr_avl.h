/* Height-balanced binary search trees (AVL trees) of the caller's records.
 *
 * A record takes part in a tree by its first field, a `MR_AvlNode`; a tree is a pointer to its root
 * node, null when empty. Nothing is allocated or freed here. The order comes from a comparator that
 * is passed to every operation that searches; no two nodes of a tree compare equal:
 *
 *     struct Curve { MR_AvlNode node; int32_t id; };
 *     MR_AvlNode* curves = NULL;
 *     MR_avl_insert(&curves, &curve->node, compareIds);
 *
 * Insertion and searches take time logarithmic in the number of nodes, removal time linear in it:
 * it rebalances the whole tree. `MR_bt_remove` leaves plain binary trees of any height, down to
 * lists; everything here works on those too, and their balances are put right by `MR_avl_balance`.
 * No operation needs more than a small fixed amount of stack.
 *
 * Threads may search and walk a tree at the same time as long as nobody changes it and it has at
 * most 128 levels: a walk hangs children below that level elsewhere while it is there, and puts
 * them back. A balanced tree never has so many. In a higher tree a callback must not search or walk
 * that tree, nor ever throw, since its links are not all in place.
 */
#ifndef KILNBASE_UTIL_MR_AVL_H
#define KILNBASE_UTIL_MR_AVL_H

#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct MR_AvlNode {
  struct MR_AvlNode* left;
  struct MR_AvlNode* right;
  int16_t balance;   /**< Height of the right subtree minus that of the left: -1, 0 or 1. */
  uint8_t direction; /**< Where the last insertion went from here: 1 left, 2 right. */
} MR_AvlNode;

/** Negative when `a` sorts before `b`, 0 when they are equal, positive when it sorts after. `b` is
 * a node of the tree; `a` is the key of a search as the caller gave it, or else the node that is
 * inserted or removed. */
typedef int (*MR_AvlCompare)(const void* a, const void* b);

/** Called for each node of a walk; anything but 0 ends the walk. */
typedef int (*MR_AvlVisit)(MR_AvlNode* node);
typedef int (*MR_AvlVisitUser)(MR_AvlNode* node, void* user);

/** Inserts a node, whose fields need not be set, and rebalances. Returns 0; or 1 when an equal node
 * is there already, which leaves the tree as it is but for the directions on the way to that node;
 * or -1 when an argument is null. */
KILNBASE_API int MR_avl_insert(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare);

/** Removes a node as `MR_bt_remove` does, then rebalances the whole tree as `MR_avl_balance` does.
 * Returns 0; or 1, without rebalancing, when the node is not in the tree. */
KILNBASE_API int MR_avl_remove(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare);

/** Removes a node without rebalancing. A node with two children is replaced by its right child, and
 * its left subtree goes below the leftmost node of its right subtree. The fields of the removed
 * node stay as they were. Returns 0; or 1 when the node is not in the tree, even if an equal one
 * is. */
KILNBASE_API int MR_bt_remove(MR_AvlNode** root, MR_AvlNode* node, MR_AvlCompare compare);

/** Balances any binary tree, whatever its `balance` fields say, and sets those. Returns 1.
 *
 * The result is that of rotating at the first node in post-order whose subtrees differ in height by
 * more than 1, again and again until there is none. As in insertion, the child on the higher side
 * is raised when it leans to that side; otherwise, also when it does not lean at all, its inner
 * child is. */
KILNBASE_API int MR_avl_balance(MR_AvlNode** root);

/** The node that compares equal to the key, or null. */
KILNBASE_API MR_AvlNode* MR_avl_find(MR_AvlNode* root, const void* key, MR_AvlCompare compare);

/** The first and the last node in order; null for an empty tree. */
KILNBASE_API MR_AvlNode* MR_avl_first(MR_AvlNode* root);
KILNBASE_API MR_AvlNode* MR_avl_last(MR_AvlNode* root);

/** The node after, or before, the one that compares equal to the key; null when no node does or
 * when that is the last, or the first, one. */
KILNBASE_API MR_AvlNode* MR_avl_next(MR_AvlNode* root, const void* key, MR_AvlCompare compare);
KILNBASE_API MR_AvlNode* MR_avl_prev(MR_AvlNode* root, const void* key, MR_AvlCompare compare);

/** The child, or null for a null node. */
KILNBASE_API MR_AvlNode* MR_avl_left(MR_AvlNode* node);
KILNBASE_API MR_AvlNode* MR_avl_right(MR_AvlNode* node);

/** Calls `visit` for all nodes in order, or in post-order: both subtrees before their node, so that
 * `visit` may free it. Returns what ended the walk, or 0. */
KILNBASE_API int MR_avl_inorder(MR_AvlNode* root, MR_AvlVisit visit);
KILNBASE_API int MR_avl_inorder_user(MR_AvlNode* root, MR_AvlVisitUser visit, void* user);
KILNBASE_API int MR_avl_postorder(MR_AvlNode* root, MR_AvlVisit visit);
KILNBASE_API int MR_avl_postorder_user(MR_AvlNode* root, MR_AvlVisitUser visit, void* user);

#ifdef __cplusplus
}
#endif

#endif
