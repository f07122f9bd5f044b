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

/** Made by `MR_pool_new`. The fields are for `MR_pool_alloc` alone, which programs have compiled
 * in: that is why they stay as they are. */
typedef struct MR_Pool {
  MR_List blocks;     /**< Pieces come from the head. */
  uint32_t used;      /**< Bytes of the head that are handed out. */
  uint32_t blockSize; /**< Bytes of each block. */
} MR_Pool;

/** A pool without blocks, or null when the memory runs out. `block_size` must not be negative.
 * Asserted in debug builds; in release builds the blocks have no bytes. */
KILNBASE_API MR_Pool* MR_pool_new(int block_size);

/** `MR_pool_alloc` where the current block has too few bytes left. Not to be called by others. */
KILNBASE_API void* MR_pool_alloc_from_new_block(MR_Pool* pool, int n);

/** `n` bytes of the current block, or of a new block when the current one has fewer bytes left; the
 * bytes left stay unused. Null when the pool is null, when `n` is negative or larger than a block,
 * or when the memory runs out. */
KILNBASE_INLINE void* MR_pool_alloc(MR_Pool* pool, int n) {
  const uint32_t bytes = (uint32_t)n; /* more than any block has left when n is negative */
  if (pool && pool->blocks.head && bytes <= pool->blockSize - pool->used) {
    char* const piece = (char*)pool->blocks.head->data + pool->used;
    pool->used += bytes;
    return piece;
  }
  return MR_pool_alloc_from_new_block(pool, n);
}

/** Releases the pool and all that it handed out, and sets the handle to null. */
KILNBASE_API void MR_pool_free(MR_Pool** pool);

#ifdef __cplusplus
}
#endif

#endif
