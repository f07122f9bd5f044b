#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_pool.h>

namespace {

// A node of the pool's list. The bytes of the block follow in the same memory.
struct alignas(std::max_align_t) Block {
  MR_ListNode node;
};

}  // namespace

MR_Pool* MR_pool_new(int block_size) {
  KILN_ASSERT(block_size >= 0);
  const auto bytes = static_cast<std::uint32_t>(std::max(block_size, 0));
  return new (std::nothrow) MR_Pool{{nullptr}, 0, bytes};
}

void* MR_pool_alloc_from_new_block(MR_Pool* pool, int n) {
  const auto bytes = static_cast<std::uint32_t>(n);
  if (!pool || bytes > pool->blockSize) return nullptr;
  void* const memory = std::malloc(sizeof(Block) + pool->blockSize);
  if (!memory) return nullptr;
  MR_ListNode* const older = pool->blocks.head;
  auto* const block = new (memory) Block{{nullptr, older, static_cast<Block*>(memory) + 1}};
  if (older) older->prev = &block->node;
  pool->blocks.head = &block->node;
  pool->used = bytes;
  return block->node.data;
}

void MR_pool_free(MR_Pool** pool) {
  if (!pool || !*pool) return;
  MR_list_delete_all(&(*pool)->blocks);
  delete *pool;
  *pool = nullptr;
}
