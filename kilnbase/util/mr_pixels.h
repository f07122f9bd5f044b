/* Reversing the colour channels of pixels. */
#ifndef KILNBASE_UTIL_MR_PIXELS_H
#define KILNBASE_UTIL_MR_PIXELS_H

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Reverses the order of the four components of each of `width` * `height` pixels, for example from
 * RGBA to ABGR. Reads `source` and writes `pixels`, or works in place when `source` is null. The
 * two buffers may be the same and must not overlap otherwise. They need not be aligned.
 *
 * `type` is the OpenGL code of a component: 5120 and 5121 (byte and unsigned byte), 5122 and 5123
 * (short), 5124 and 5125 (int), 5126 (float). Any other type and a size below 1 leave the pixels
 * untouched. */
KILNBASE_API void MR_SwapColourChannels(int width, int height, int type, void* pixels,
                                        const void* source);

#ifdef __cplusplus
}
#endif

#endif
