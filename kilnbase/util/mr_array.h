/* Growable arrays of elements of one size, known at run time.
 *
 *     const double length = 2.5;
 *     MR_Array* lengths = MR_array_new(sizeof length, 0, 64);
 *     MR_array_put(lengths, 7, &length);
 *     const double* first = (const double*)MR_array_get(lengths, 0);
 *     printf("%g\n", first[7]);
 *     MR_array_free(&lengths);
 *
 * All allocated elements count and can be read; elements that were never put are zero. Growing
 * moves the elements, so an address from `MR_array_get` is valid until the array grows.
 *
 * An array stays as it is when there is no memory to grow, or when its elements would be more than
 * an `int32_t` can count. A null array has no elements.
 */
#ifndef KILNBASE_UTIL_MR_ARRAY_H
#define KILNBASE_UTIL_MR_ARRAY_H

#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The fields are read by the caller, and changed by the functions alone. */
typedef struct MR_Array {
  int32_t count;       /**< Elements allocated. */
  int32_t elementSize; /**< Bytes. */
  int32_t growth;      /**< Elements added on top each time the array grows. */
  void* elements;      /**< Owned. */
} MR_Array;

/** An array for elements of `element_size` bytes, sized to `start_count` unless that is 0. Null
 * when there is no memory for the record or the elements. The element size must be above 0, the
 * other numbers not below 0. Asserted in debug builds; in release builds the array may have fewer
 * elements than asked for. */
KILNBASE_API MR_Array* MR_array_new(int element_size, int start_count, int growth);

/** Makes the array `n` + growth elements long when it has fewer than `n`; never shortens it. */
KILNBASE_API void MR_array_size(MR_Array* array, int n);

/** The address of element `i`, or null outside the array. */
KILNBASE_API void* MR_array_get(const MR_Array* array, int i);

/** Copies `element`, which may lie in the array itself, into element `i`. An array that does not
 * reach `i` is first sized to `i`, so growing here wants a growth step above 0, and `i` must not be
 * below 0. Asserted in debug builds; in release builds nothing is stored. */
KILNBASE_API void MR_array_put(MR_Array* array, int i, const void* element);

/** Releases the array and sets the handle to null. */
KILNBASE_API void MR_array_free(MR_Array** array);

#ifdef __cplusplus
}
#endif

#endif
