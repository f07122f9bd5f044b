/* Removing characters from strings in place, and integers that travel as pointers.
 *
 * Null strings are left alone.
 */
#ifndef KILNBASE_UTIL_MR_STRING_H
#define KILNBASE_UTIL_MR_STRING_H

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Removes the run of `c` at each end; a string of nothing but `c` becomes empty. */
KILNBASE_API void MR_string_leading_trailing_remove(char* s, char c);

/** Removes the run of `c` at the end. */
KILNBASE_API void MR_string_trailing_remove(char* s, char c);

/** Removes every `c`. */
KILNBASE_API void MR_string_stripchar(char* s, char c);

/** Copies `src` without any `c` into `dst`. `dst` has room for at least as many bytes as `src`, and
 * may be `src`. For a null `src` `dst` becomes empty. */
KILNBASE_API void MR_string_strcpy_stripchar(char* dst, const char* src, char c);

/** Removes the zeros at the end of a decimal number: 1.500 becomes 1.5, 2.000 becomes 2.0, and 000
 * becomes 0. An empty string becomes 0, and a point at the end gets a zero; the buffers of such
 * strings need room for one character more. Kept as it is: whether there is a decimal point is not
 * looked at, so that 100 becomes 1. */
KILNBASE_API void MR_string_number_de_zero(char* s);

/** A pointer whose value is the integer, zero-extended; and the low 32 bits of a pointer. */
KILNBASE_API void* MR_int2ptr(int value);
KILNBASE_API int MR_ptr2int(const void* pointer);

#ifdef __cplusplus
}
#endif

#endif
