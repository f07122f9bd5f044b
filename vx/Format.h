/* Formatted printing into arrays of a fixed size. */
#ifndef VX_FORMAT_H
#define VX_FORMAT_H

#include <stdarg.h>
#include <stddef.h>

#include <vx/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Prints into `out`, an array of `size` bytes. Returns the length of the text without its
 * terminator, or -1 when text and terminator do not both fit and when printf refuses the arguments.
 * After -1 the array holds an unspecified text with a terminator, unless `size` is 0. */
VX_API int MR_vsnprintf(char* out, size_t size, const char* format, va_list arguments)
    VX_PRINTF(3, 0);

#ifdef __cplusplus
}
#endif

#endif
