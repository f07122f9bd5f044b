/* The names of image files, which the application's image library knows. */
#ifndef VX_PIXNAME_H
#define VX_PIXNAME_H

#include <vx/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Finds the file of an image: takes the name of an image without extension and a flag, 1 for files
 * to read, and returns the full name of the file in memory from `MA_malloc`, or null when there is
 * no such image. */
typedef char* (*ArExpandPixname)(char* name, int flag);

/** Asks the installed function; null without one. The caller frees the result with `MA_free`. */
VX_API char* Ar_expand_pixname(char* name, int flag);

/** Installs the function; null removes it. */
VX_API void rtbInit_Ar_expand_pixname(ArExpandPixname function);

#ifdef __cplusplus
}
#endif

#endif
