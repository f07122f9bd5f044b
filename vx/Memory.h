/* Tracked memory: each block remembers the place in the source that asked for it.
 *
 * Records that outlive a function come from here. When libvx is a debug build (NDEBUG undefined),
 * the end of the process writes to standard error which blocks have not been freed, place by place.
 * A release build hands out plain memory of the heap and remembers nothing.
 *
 *     int32_t* counts = (int32_t*)MA_malloc(8 * sizeof *counts, __LINE__, __FILE__);
 *     if (counts) counts[0] = 1;
 *     MA_free(counts);
 *
 * Any thread may allocate, and may free the blocks of other threads. Memory from `MA_malloc` must
 * not be passed to `free`.
 */
#ifndef VX_MEMORY_H
#define VX_MEMORY_H

#include <stddef.h>

#include <vx/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Allocates memory for any type. Each block has an address of its own, even a block of 0 bytes.
 * Returns null when there is not so much memory. `file` may be null; otherwise it must live as long
 * as the block, as `__FILE__` does. */
VX_API void* MA_malloc(size_t bytes, int line, const char* file);

/** Frees a block; null is allowed. Memory from `malloc` must not be passed. Asserted in debug
 * builds; in release builds such memory is freed, too. */
VX_API void MA_free(void* memory);

/** The blocks that have been allocated and not freed yet. */
typedef struct MaOutstanding {
  size_t blocks; /**< How many blocks. */
  size_t bytes;  /**< The sum of the sizes that were asked for. */
} MaOutstanding;

/** All zero in a release build. */
VX_API MaOutstanding MA_outstanding(void);

/** Reports the outstanding blocks through `rptError`, one line for each place in the source.
 * Without such blocks nothing is reported. */
VX_API void MA_reportOutstanding(void);

#ifdef __cplusplus
}
#endif

#endif
