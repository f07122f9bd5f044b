/* Memory that remembers who asked for it.
 *
 * Records that outlive a function come from here, with the place in the source that asked for them.
 * When libvx is a debug build (NDEBUG undefined), what has not been freed at the end of the process
 * is written to standard error, place by place; a release build hands out plain memory of the heap
 * and remembers nothing.
 *
 *     Node* node = MA_malloc(sizeof *node, __LINE__, __FILE__);
 *     ...
 *     MA_free(node);
 *
 * Any thread may allocate, and free what another one allocated. Memory from here is not for `free`,
 * and memory from `malloc` is not for `MA_free`.
 */
#ifndef VX_MEMORY_H
#define VX_MEMORY_H

#include <stddef.h>

#include <vx/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Allocates memory for any type. Each block is a place of its own, even one of 0 bytes. Returns
 * null when there is not so much memory. `file`, which may be null, must live as long as the block;
 * `__FILE__` does. */
VX_API void* MA_malloc(size_t bytes, int line, const char* file);

/** Frees what `MA_malloc` returned; null is nothing to free. */
VX_API void MA_free(void* memory);

/** What has been allocated and not freed yet. */
typedef struct MaOutstanding {
  size_t blocks;
  size_t bytes; /**< As asked for. */
} MaOutstanding;

/** All zero in a release build. */
VX_API MaOutstanding MA_outstanding(void);

/** Reports what is outstanding through `rptError`, a line for each place in the source; nothing
 * when nothing is. */
VX_API void MA_reportOutstanding(void);

#ifdef __cplusplus
}
#endif

#endif
