/* Item lists: typed pointers in a generic structure (`AN_`), and typed pointers with a value in a
 * link list (`An_`).
 *
 * Items and nodes come from the tracked allocator. A caller who unlinks an item or a node by other
 * means releases it with `MA_free`. The data and the objects behind the pointers are the caller's.
 * For the operations on structures, null data and null structures are `MR_ARGUMENT_ERROR`.
 */
#ifndef KILNBASE_ANIM_AN_ANIM_LIST_H
#define KILNBASE_ANIM_AN_ANIM_LIST_H

#include <stdint.h>
#ifdef __cplusplus
#include <concepts>
#endif

#include <kilnbase/export.h>
#include <kilnbase/util/DS/ds_structures.h>
#include <kilnbase/util/mr_linklist.h>
#include <kilnbase/util/mr_status.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A typed pointer, by itself, in a chain or in a generic structure. */
typedef struct AN_Item {
  /** The type is a number of the caller. The data is borrowed. */
  int32_t type;
  void* data;
  struct AN_Item* next; /**< Null when the item is made; for chains of the caller. */
} AN_Item;

/** A new item, or null with `MR_MEMORY_FAULT`. `line` and `file` are the caller's, for the report
 * of unfreed memory. */
KILNBASE_API AN_Item* AN_item_create_type(int type, void* data, int line, const char* file,
                                          StatusCode* status);

/** Adds a new item to the structure. Returns 1 when the addition gave no code. When the structure
 * has an item with this data, of any type, nothing is added, and the result is 0 without a code. An
 * addition without a status variable clears `ordered`, as in all structures. */
KILNBASE_API int AN_add_to_item_list(int type, void* data, DS_Structure* list, StatusCode* status);

/** The first item with this data, or null, which is no failure. */
KILNBASE_API AN_Item* AN_is_item_in_item_list(const void* data, const DS_Structure* list,
                                              StatusCode* status);

/** Removes and frees the first item with this data. Returns 1, or 0 with `MR_ITEM_NOT_FOUND` when
 * there is none. */
KILNBASE_API int AN_remove_from_item_list(const void* data, DS_Structure* list, StatusCode* status);

/** 1 when two items have the same type and data, else 0, as for null. */
KILNBASE_API int AN_ds_item_equal(const void* a, const void* b);

/** Frees the item and sets the handle to null. Returns 1, or 0 with `MR_ARGUMENT_ERROR` for a null
 * handle. */
KILNBASE_API int AN_item_free(AN_Item** item, StatusCode* status);

/** Calls `AN_item_free` for all items of the chain, and sets the handle to null. */
KILNBASE_API int AN_item_list_free(AN_Item** first, StatusCode* status);

/** Prints the item through the debug channel. Returns 1, or 0 for a null item. */
KILNBASE_API int AN_print_item(const AN_Item* item, StatusCode* status);

/** The value of a node, of which the bits are compared. */
typedef union An_Value {
  /** In the nodes that `An_add_to_item_list` makes. */
  int64_t integer;
  double number; /**< In the nodes that `An_addUnique_to_item_list` makes. */
} An_Value;

/** The content of a node of a link list. */
typedef struct An_Record {
  /** Type and value are numbers of the caller. The object is borrowed. */
  int32_t type;
  void* object;
  An_Value value;
} An_Record;

/** A node of a link list, from `malloc`. The link comes first, as the functions of mr_linklist.h
 * want. */
typedef struct An_ItemNode {
  /** The link, for the functions of the list, and the content. */
  MR_LinkNode link;
  An_Record record;
} An_ItemNode;

/** Puts a new node at the head. The value is an integer: in C a `double` is converted, in C++ a
 * `double` does not compile. Returns 1; or 0 for a null object or list, or without memory. */
KILNBASE_API int An_add_to_item_list(int type, void* object, int64_t value, MR_LinkList* list);

/** As `An_add_to_item_list`, unless a node has the same object and a value with the same bits. Then
 * nothing is added, and the result is 1, too. */
KILNBASE_API int An_addUnique_to_item_list(int type, void* object, double value, MR_LinkList* list);

/** Orders nodes by their objects, then by the bits of their values, both as unsigned numbers: -1, 0
 * or 1. Null sorts after every node and equals null. */
KILNBASE_API int32_t An_compareItemList(const void* a, const void* b);

/** Orders `An_Record`s by their objects alone, for qsort. Null sorts after every record. */
KILNBASE_API int An_compareItem(const void* a, const void* b);

/** Sorts by object. The nodes stay in their places and exchange their records. With `unique` other
 * than 0 one record for each object is kept, and the nodes left over at the end are freed. Returns
 * 1; or 0 for a null or empty list, and when there is no memory, which leaves the list as it is. */
KILNBASE_API int An_sort_item_list(MR_LinkList* list, int unique);

#ifdef __cplusplus
}

template <std::floating_point Value>
int An_add_to_item_list(int type, void* object, Value value, MR_LinkList* list) = delete;
#endif

#endif
