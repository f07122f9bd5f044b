/* Growable arrays of elements of one size, known at run time.
 *
 *     MR_Array* spans = MR_array_new(sizeof(Span), 0, 64);
 *     MR_array_put(spans, 7, &span);
 *     const Span* first = MR_array_get(spans, 0);
 *     MR_array_free(&spans);
 *
 * All allocated elements count and can be read: those that were never put are zero. Growing moves
 * the elements, so an address from `MR_array_get` is good until the array next grows.
 *
 * When there is no memory to grow, or the elements would be more than an `int32_t` counts, the
 * array stays as it is. A null array has no elements.
 */
#ifndef KILNBASE_UTIL_MR_ARRAY_H
#define KILNBASE_UTIL_MR_ARRAY_H

#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct MR_Array {
  int32_t count;       /**< Elements allocated. */
  int32_t elementSize; /**< Bytes. */
  int32_t growth;      /**< Elements added on top each time the array grows. */
  void* elements;      /**< Owned. */
} MR_Array;

/** An array for elements of `element_size` bytes, sized to `start_count` unless that is 0. Null
 * when there is no memory for it or for its elements. */
KILNBASE_API MR_Array* MR_array_new(int element_size, int start_count, int growth);

/** Makes the array `n` + growth elements long when it has fewer than `n`; never shortens it. */
KILNBASE_API void MR_array_size(MR_Array* array, int n);

/** The address of element `i`, or null outside the array. */
KILNBASE_API void* MR_array_get(const MR_Array* array, int i);

/** Copies `element`, which may stand in the array itself, into element `i`. An array that does not
 * reach `i` is first sized to `i`; with a growth step of 0 that leaves no place for the element,
 * and nothing is stored. */
KILNBASE_API void MR_array_put(MR_Array* array, int i, const void* element);

/** Releases the array and sets the handle to null. */
KILNBASE_API void MR_array_free(MR_Array** array);

#ifdef __cplusplus
}
#endif

#endif
