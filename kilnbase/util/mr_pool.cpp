#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_pool.h>

namespace {

void* take(MR_Pool& pool, std::uint32_t bytes) {
  void* const piece = static_cast<std::byte*>(pool.blocks.head->data) + pool.used;
  pool.used += bytes;
  return piece;
}

// Not inlined, so that the code for most pieces stays short.
[[gnu::noinline]] void* takeFromNewBlock(MR_Pool& pool, std::uint32_t bytes) {
  void* const block = std::malloc(pool.blockSize);
  if (!MR_list_prepend(&pool.blocks, block)) {
    std::free(block);
    return nullptr;
  }
  pool.used = 0;
  return take(pool, bytes);
}

}  // namespace

MR_Pool* MR_pool_new(int block_size) {
  KILN_ASSERT(block_size >= 0);
  const auto bytes = static_cast<std::uint32_t>(std::max(block_size, 0));
  return new (std::nothrow) MR_Pool{{nullptr}, 0, bytes};
}

void* MR_pool_alloc(MR_Pool* pool, int n) {
  const auto bytes = static_cast<std::uint32_t>(n);  // beyond every block when n is negative
  if (!pool || bytes > pool->blockSize) return nullptr;
  const bool fits = pool->blocks.head && bytes <= pool->blockSize - pool->used;
  return fits ? take(*pool, bytes) : takeFromNewBlock(*pool, bytes);
}

void MR_pool_free(MR_Pool** pool) {
  if (!pool || !*pool) return;
  for (const MR_ListNode* node = (*pool)->blocks.head; node; node = node->next) {
    std::free(node->data);
  }
  MR_list_delete_all(&(*pool)->blocks);
  delete *pool;
  *pool = nullptr;
}
