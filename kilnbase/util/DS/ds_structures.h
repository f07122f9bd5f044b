/* Generic structures: containers of item pointers behind one set of operations.
 *
 * A structure is a header with a table of methods. The operations that begin with `DS_` work with
 * any table. Four kinds are built in: a doubly and a singly linked list, a binary tree and an array
 * (`DS_DLIST` to `DS_ARRAY`). An application can register kinds of its own. Items are not owned:
 * freeing a structure leaves them alone unless a `DS_FreeFn` is given. A comparator decides where
 * new items go, and a filter hides items from every walk, count, lookup and copy.
 *
 *     char wing[] = "wing", bonnet[] = "bonnet";
 *     StatusCode status = MR_NO_ERROR;
 *     DS_Structure* names = DS_create_type(DS_SLIST, &status, __LINE__, __FILE__);
 *     names->comparator = Ds_string_comparator;
 *     names->methods->add(names, wing, &status);
 *     names->methods->add(names, bonnet, &status);
 *     DS_destructor(&names, NULL, NULL, &status);
 *
 * Status. A `StatusCode*` may be null everywhere. The operations set the code to 0 first. The
 * methods of a table write a code only when something fails. A lookup that finds nothing is
 * `MR_ITEM_NOT_FOUND`.
 *
 * Callbacks. Most take the caller's `user` pointer. When `user` is null, the callback is called
 * without it: a `DS_WalkFn` as `int (*)(void* item, StatusCode*)`, the others with their first
 * argument alone. A function of such a shorter form is passed with a cast.
 *
 * Positions. A position stands for the place of an item, and its first word is the item. In the
 * lists and the tree a position is a node, which stays where it is until its item is removed. In
 * the array a position is the address of a slot: adding may move the whole buffer, which makes
 * every position stale, and adding and removing shift the items behind. `remove` returns a position
 * that is valid after the removal. A structure must not change while `walk` or `find` runs.
 *
 * Nothing is locked; registrations are made at start-up.
 */
#ifndef KILNBASE_UTIL_DS_DS_STRUCTURES_H
#define KILNBASE_UTIL_DS_DS_STRUCTURES_H

#include <stdint.h>

#include <kilnbase/export.h>
#include <kilnbase/util/mr_status.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A container of item pointers, which are borrowed. */
typedef struct DS_Structure DS_Structure;

/** An item's place in a structure; null for none. */
typedef void* DS_Position;

/** Orders items as for qsort: `a` and `b` point at item slots (`void* const*`), and the result is
 * negative, 0 or positive. For adding, only a result of exactly 1 counts as greater. */
typedef int (*DS_Comparator)(const void* a, const void* b);

/** Whether to show an item; 0 hides it. */
typedef int (*DS_Filter)(void* item);

/** Visits an item; a result of 0 stands for a failure. Without `user`: (item, status). */
typedef int (*DS_WalkFn)(void* item, void* user, StatusCode* status);

/** Whether the item is the one that the caller looks for. Without `user`: (item). */
typedef int (*DS_MatchFn)(const void* item, const void* user);

/** Disposes of the item at a position that is about to be removed. Without `user`: (position). */
typedef int (*DS_FreeFn)(DS_Position position, void* user);

/** The item to put into a copy. Without `user`: (item). */
typedef void* (*DS_CopyFn)(void* item, void* user);

/** Prints an item. Always called with both arguments. */
typedef int (*DS_PrintFn)(void* item, void* user);

/** What a kind of structure can do. `head`, `tail`, `next` and `prev` return positions of items
 * that pass the filter. "Storage" is what `data` of a structure points to. A method that returns
 * storage makes it anew, for the caller to put into a header. It returns null for storage without
 * items, and null with a code on failure. A null structure or a null position is
 * `MR_ARGUMENT_ERROR` everywhere. */
typedef struct DS_Methods {
  /** Calls `fn` for each item, forward (`direction` 0) or backward (1), at most `limit` times
   * unless that is -1 (not at all for less). A `fn` that returns 0 does not stop the walk. Returns
   * 1 when all calls returned non-zero, otherwise 0 with `MR_WALK_TERMINATED`. A null `fn`, a
   * structure without items, another direction and a limited backward walk are `MR_ARGUMENT_ERROR`.
   * Walking backward in a singly linked list takes quadratic time. */
  int (*walk)(const DS_Structure* structure, DS_WalkFn fn, void* user, int limit, int direction,
              StatusCode* status);
  /** The number of items that pass the filter, or -1 for a null structure. */
  int (*enumerate)(const DS_Structure* structure, StatusCode* status);
  /** Puts the item in front of the first item for which the comparator, asked (new, other), returns
   * anything but exactly 1. So a new item goes before its equals. Without a comparator the item
   * goes to the end, with `MR_CANNOT_SORT`. An item that the filter hides is not added
   * (`MR_ITEM_FILTERED`). Returns whether the item was added. Kept as it is: an addition clears
   * `ordered` when `status` is null or holds `MR_CANNOT_SORT` afterwards, even from before. */
  int (*add)(DS_Structure* structure, void* item, StatusCode* status);
  /** Removes the first visible position of the item. `free_fn`, if given, is called just before.
   * Returns the position of the next visible item. */
  DS_Position (*remove)(DS_Structure* structure, void* item, DS_FreeFn free_fn, void* user,
                        StatusCode* status);
  /** Sorts all items, also hidden ones, by the comparator with qsort, and sets `ordered`. Positions
   * stay and get other items. The comparator must order the items; `Ds_fifo_comparator` and
   * `Ds_filo_comparator` do not. A structure without items is `MR_ARGUMENT_ERROR`. */
  int (*sort)(DS_Structure* structure, StatusCode* status);
  /** New storage with the visible items of `a`, then those of `b`, each added by the comparator and
   * the filter of `a`; either may be null. */
  void* (*merge)(const DS_Structure* a, const DS_Structure* b, StatusCode* status);
  /** The position of the first visible item for which `match` returns non-zero; without `match`, of
   * the item that is the pointer `user`. When both are null, the code is `MR_ARGUMENT_ERROR`. */
  DS_Position (*find)(const DS_Structure* structure, DS_MatchFn match, const void* user,
                      StatusCode* status);
  /** New storage with the visible items of `a` that `b` does not contain. */
  void* (*difference)(const DS_Structure* a, const DS_Structure* b, StatusCode* status);
  /** New storage with the visible items of `a` that `b` contains. May be null in a table. */
  void* (*intersect)(const DS_Structure* a, const DS_Structure* b, StatusCode* status);
  /** Whether this very pointer is among the visible items. */
  int (*contains_item)(const DS_Structure* structure, const void* item, StatusCode* status);
  /** The item at a position. */
  void* (*get_data)(DS_Position position, StatusCode* status);
  void (*set_data)(DS_Position position, void* item, StatusCode* status);
  /** New storage with what `copy_fn` returns for each visible item, or with the items themselves
   * when `copy_fn` is null, added by the comparator. The filter is not asked about copies. */
  void* (*duplicate)(const DS_Structure* structure, DS_CopyFn copy_fn, void* user,
                     StatusCode* status);
  /** The first visible position; null for a structure without items. */
  DS_Position (*head)(const DS_Structure* structure, StatusCode* status);
  /** A structure without items is `MR_UNEXPECTED_NULL_STRUCTURE`. */
  DS_Position (*tail)(const DS_Structure* structure, StatusCode* status);
  /** The next visible position, or null behind the last one. */
  DS_Position (*next)(const DS_Structure* structure, DS_Position position, StatusCode* status);
  /** Counts from the head in a singly linked list. */
  DS_Position (*prev)(const DS_Structure* structure, DS_Position position, StatusCode* status);
  /** Removes all items, also hidden ones, and frees the storage. `free_fn`, if given, is called for
   * each position, from the head. The header stays and can be filled again. */
  int (*destructor)(DS_Structure* structure, DS_FreeFn free_fn, void* user, StatusCode* status);
  /** New storage without items. May be null in a table whose kind takes null for such storage. */
  void* (*allocate)(DS_Structure* structure, StatusCode* status);
  /** The number of the kind. */
  int (*get_type)(void);
  void (*unused[4])(void); /**< Null. */
} DS_Methods;

/** The header of a structure. Its fields may be set directly. */
struct DS_Structure {
  int32_t ordered;           /**< 1 when the items are known to be in the comparator's order. */
  void* data;                /**< The kind's storage, owned. */
  DS_Comparator comparator;  /**<The order for adding and sorting. */
  DS_Filter filter;          /**< Null lets every item through. */
  const DS_Methods* methods; /**<What the kind can do. Not owned. */
};

/** The built-in kinds, which need no registration.
 *
 * The tree asks the comparator on the way down only, which makes adding logarithmic. The comparator
 * of a tree must therefore order the items: a comparator with a tolerance orders nothing and
 * belongs to a list. The keys of items must not change while the items are in a tree.
 *
 * After an addition under another comparator, after `set_data`, and once the comparator answers
 * more than 1, a tree asks item by item, as the lists do, until the tree is emptied or sorted. */
enum {
  DS_DLIST = 1,   /**< Doubly linked list. */
  DS_SLIST = 2,   /**< Singly linked list. */
  DS_BINTREE = 3, /**< Binary tree. */
  DS_ARRAY = 4    /**< Array, which grows in proportion to its size. */
};

/** Declares the methods of a kind, `Ds_slist_walk` for example, as told in `DS_Methods`, and what
 * returns the table that holds them. The kinds are dlist, slist, bintree and array. */
#define DS_DECLARE_KIND(kind)                                                                     \
  KILNBASE_API const DS_Methods* Ds_##kind##_get_methods(void);                                   \
  KILNBASE_API int Ds_##kind##_walk(const DS_Structure* structure, DS_WalkFn fn, void* user,      \
                                    int limit, int direction, StatusCode* status);                \
  KILNBASE_API int Ds_##kind##_enumerate(const DS_Structure* structure, StatusCode* status);      \
  KILNBASE_API int Ds_##kind##_add(DS_Structure* structure, void* item, StatusCode* status);      \
  KILNBASE_API DS_Position Ds_##kind##_remove(DS_Structure* structure, void* item,                \
                                              DS_FreeFn free_fn, void* user, StatusCode* status); \
  KILNBASE_API int Ds_##kind##_sort(DS_Structure* structure, StatusCode* status);                 \
  KILNBASE_API void* Ds_##kind##_merge(const DS_Structure* a, const DS_Structure* b,              \
                                       StatusCode* status);                                       \
  KILNBASE_API DS_Position Ds_##kind##_find(const DS_Structure* structure, DS_MatchFn match,      \
                                            const void* user, StatusCode* status);                \
  KILNBASE_API void* Ds_##kind##_difference(const DS_Structure* a, const DS_Structure* b,         \
                                            StatusCode* status);                                  \
  KILNBASE_API void* Ds_##kind##_intersect(const DS_Structure* a, const DS_Structure* b,          \
                                           StatusCode* status);                                   \
  KILNBASE_API int Ds_##kind##_contains_item(const DS_Structure* structure, const void* item,     \
                                             StatusCode* status);                                 \
  KILNBASE_API void* Ds_##kind##_get_data(DS_Position position, StatusCode* status);              \
  KILNBASE_API void Ds_##kind##_set_data(DS_Position position, void* item, StatusCode* status);   \
  KILNBASE_API void* Ds_##kind##_duplicate(const DS_Structure* structure, DS_CopyFn copy_fn,      \
                                           void* user, StatusCode* status);                       \
  KILNBASE_API DS_Position Ds_##kind##_head(const DS_Structure* structure, StatusCode* status);   \
  KILNBASE_API DS_Position Ds_##kind##_tail(const DS_Structure* structure, StatusCode* status);   \
  KILNBASE_API DS_Position Ds_##kind##_next(const DS_Structure* structure, DS_Position position,  \
                                            StatusCode* status);                                  \
  KILNBASE_API DS_Position Ds_##kind##_prev(const DS_Structure* structure, DS_Position position,  \
                                            StatusCode* status);                                  \
  KILNBASE_API int Ds_##kind##_destructor(DS_Structure* structure, DS_FreeFn free_fn, void* user, \
                                          StatusCode* status);                                    \
  KILNBASE_API int Ds_##kind##_get_type(void)
DS_DECLARE_KIND(dlist);
DS_DECLARE_KIND(slist);
DS_DECLARE_KIND(bintree);
DS_DECLARE_KIND(array);
#undef DS_DECLARE_KIND
/** The method of the arrays that the other kinds have no need of: see `DS_Methods`. */
KILNBASE_API void* Ds_array_allocate(DS_Structure* structure, StatusCode* status);

/** Registers a kind of structure under an id of at least 0. The table is kept, not copied. A null
 * table is `MR_ARGUMENT_ERROR`. A table that lacks a method is `MR_INVALID_DATA`. A negative or
 * used id is `MR_INVALID_FUNCTION`. Returns 1 or 0. Kept as it is: `intersect` may be missing, like
 * `allocate`. */
KILNBASE_API int Ds_register_structure(int id, const DS_Methods* methods, StatusCode* status);

/** The registered kinds: a structure of the kind that was registered first, with entries as in
 * mr_register.h. Null until the first registration of a complete table. */
KILNBASE_API DS_Structure* Ds_get_object_table(void);

/** A new structure of a registered or built-in kind: `ordered`, with `Ds_fifo_comparator`, without
 * a filter. Null with `MR_MEMORY_FAULT` when there is no memory. For an unknown kind the header has
 * no methods, and the status holds the code of the look-up; such a header is freed with `MA_free`.
 * The report of unfreed memory (vx/Memory.h) names `line` and `file`. */
KILNBASE_API DS_Structure* DS_create_type(int kind, StatusCode* status, int line, const char* file);

/** Registers a comparator or a filter under an id, as `MR_register_item` does. The four functions
 * that follow find a function by its id and an id by its function. When there is none, they return
 * null or -1 with a code. */
KILNBASE_API int DS_register_comparator(int id, DS_Comparator fn, StatusCode* status);
KILNBASE_API int DS_register_filter(int id, DS_Filter fn, StatusCode* status);
KILNBASE_API DS_Comparator DS_get_comparator_function(int id, StatusCode* status);
KILNBASE_API DS_Filter DS_get_filter_function(int id, StatusCode* status);
KILNBASE_API int DS_get_comparator_index(DS_Comparator fn, StatusCode* status);
KILNBASE_API int DS_get_filter_index(DS_Filter fn, StatusCode* status);

/** Installs a comparator and returns the previous one. Once any comparator is registered, a
 * comparator that is not registered is refused with `MR_ITEM_NOT_FOUND`. Does not sort, and leaves
 * `ordered` as it is. */
KILNBASE_API DS_Comparator DS_set_comparator(DS_Structure* structure, DS_Comparator fn,
                                             StatusCode* status);

/** Installs a filter and returns the previous one. Once any filter is registered, a filter that is
 * not registered is refused with `MR_ITEM_NOT_FOUND`. Kept as it is: `ordered` is cleared even when
 * the filter is refused. */
KILNBASE_API DS_Filter DS_set_filter(DS_Structure* structure, DS_Filter fn, StatusCode* status);

/** A new structure with the methods, comparator, filter and `ordered` of the given one, and with
 * copies of its visible items made by `copy_fn`, or with the items themselves when `copy_fn` is
 * null. Null on failure; copies made before the failure are not freed. */
KILNBASE_API DS_Structure* DS_duplicate(const DS_Structure* structure, DS_CopyFn copy_fn,
                                        void* user, StatusCode* status);

/** A new structure like `a` with the visible items of `a` that `b` does not contain, or with those
 * that `b` contains. Both must be of one kind and have one comparator (else `MR_INCOMPATIBILITY`).
 * Null, without a code, when there are no such items. The result is `ordered` when `a` and `b` are,
 * `status` is not null and the items could be sorted. Takes one look-up in `b` for each item. */
KILNBASE_API DS_Structure* DS_difference(const DS_Structure* a, const DS_Structure* b,
                                         StatusCode* status);
KILNBASE_API DS_Structure* DS_intersect(const DS_Structure* a, const DS_Structure* b,
                                        StatusCode* status);

/** A new structure like `a` with the visible items of `a`, then those of `b`, added one by one. An
 * item of `b` that the filter of `a` hides makes the merger fail. One of `a` and `b` may be null.
 * Both must be of one kind and have one comparator (else `MR_INCOMPATIBILITY`). The result is
 * `ordered` when there is a comparator. */
KILNBASE_API DS_Structure* DS_merge(const DS_Structure* a, const DS_Structure* b,
                                    StatusCode* status);

/** Removes every item, hidden or not, for which `keep` returns 0, or all items when `keep` is null.
 * `keep` is also asked about null items. Each removal looks for its item from the head, so many
 * removals from a long structure take quadratic time. Returns 1, or 0 for a null structure. */
KILNBASE_API int DS_remove_unfiltered_items(DS_Structure* structure, DS_Filter keep,
                                            DS_FreeFn free_fn, void* user, StatusCode* status);

/** Removes the items that are null. */
KILNBASE_API int DS_remove_nulls(DS_Structure* structure, StatusCode* status);

/** Removes all items, hidden or not. The structure can be filled again. Returns 1 or 0. */
KILNBASE_API int DS_empty_list(DS_Structure* structure, DS_FreeFn free_fn, void* user,
                               StatusCode* status);

/** Empties and frees a structure and sets the variable to null. Returns 1; or 0, with nothing
 * freed, when emptying fails, as it does for a structure without methods. */
KILNBASE_API int DS_destructor(DS_Structure** structure, DS_FreeFn free_fn, void* user,
                               StatusCode* status);

/** Frees, with `free`, the memory that the pointer variable at `variable` points to, and sets the
 * variable to null. Returns 1. Serves as a `DS_FreeFn` of the shorter form for items from `malloc`.
 */
KILNBASE_API int DS_memory_free(void* variable);

/** Prints the header and the visible items through `rptDebug`, level 0. */
KILNBASE_API void DS_print(const DS_Structure* structure, DS_PrintFn print_fn, void* user,
                           StatusCode* status);
KILNBASE_API void DS_print_structure(const DS_Structure* structure, DS_PrintFn print_fn, void* user,
                                     StatusCode* status);

/** Compares the items themselves as unsigned numbers: 1, 0 or -1. */
KILNBASE_API int Ds_default_comparator(const void* a, const void* b);
/** Always 1: a new item goes behind all others. */
KILNBASE_API int Ds_fifo_comparator(const void* a, const void* b);
/** Always -1: a new item goes before all others. */
KILNBASE_API int Ds_filo_comparator(const void* a, const void* b);
/** Compares items that are strings, byte by byte as unsigned values: 1, 0 or -1. A null string
 * equals every other. */
KILNBASE_API int Ds_string_comparator(const void* a, const void* b);

/** A `DS_MatchFn`: whether two strings are equal. A null string equals none. */
KILNBASE_API int Ds_string_find(const void* s1, const void* s2);

/** A `DS_WalkFn` that adds 1 to the `int` at `counter`, unless that is null, and returns 1. Kept as
 * it is: a walk without `user` passes the status as the counter, and the status is counted up. */
KILNBASE_API int Ds_enumerate(void* item, void* counter, StatusCode* status);

#ifdef __cplusplus
}
#endif

#endif
