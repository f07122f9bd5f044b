/* Memory pools: many small pieces, released together.
 *
 * A pool takes blocks of one size from the heap and hands out their bytes one piece after the
 * other. Pieces are neither initialised nor aligned: a piece begins where the previous one ended. A
 * caller who needs an alignment asks only for multiples of it. Nothing is released before the whole
 * pool is.
 */
#ifndef KILNBASE_UTIL_MR_POOL_H
#define KILNBASE_UTIL_MR_POOL_H

#include <stdint.h>

#include <kilnbase/export.h>
#include <kilnbase/util/mr_list.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Made by `MR_pool_new`. */
typedef struct MR_Pool {
  MR_List blocks;     /**< Pieces come from the head. */
  uint32_t used;      /**< Bytes of the head that are handed out. */
  uint32_t blockSize; /**<Bytes of each block. */
} MR_Pool;

/** A pool without blocks, or null when the memory runs out. `block_size` must not be negative.
 * Asserted in debug builds; in release builds the blocks have no bytes. */
KILNBASE_API MR_Pool* MR_pool_new(int block_size);

/** `n` bytes of the current block, or of a new block when the current one has fewer bytes left; the
 * bytes left stay unused. Null when the pool is null, when `n` is negative or larger than a block,
 * or when the memory runs out. */
KILNBASE_API void* MR_pool_alloc(MR_Pool* pool, int n);

/** Releases the pool and all that it handed out, and sets the handle to null. */
KILNBASE_API void MR_pool_free(MR_Pool** pool);

#ifdef __cplusplus
}
#endif

#endif
