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

/** Copies `src` without any `c` into `dst`, which holds at least as many bytes as `src` and may be
 * `src`. `dst` becomes empty for a null `src`. */
KILNBASE_API void MR_string_strcpy_stripchar(char* dst, const char* src, char c);

/** Shortens a decimal number: 1.500 to 1.5, 2.000 to 2.0, 000 to 0. The zeros at the end go whether
 * or not a decimal point stands before them: 100 becomes 1. An empty string becomes 0, and a point
 * at the end is given a zero, so those two need room for one character more. */
KILNBASE_API void MR_string_number_de_zero(char* s);

/** A pointer whose value is the integer, zero-extended; and its low 32 bits. */
KILNBASE_API void* MR_int2ptr(int value);
KILNBASE_API int MR_ptr2int(const void* pointer);

#ifdef __cplusplus
}
#endif

#endif
