#include <cstring>
#include <gtest/gtest.h>

#include <kilnbase/util/mr_pool.h>

TEST(Pool, PiecesFollowEachOtherUntilTheBlockIsUsedUp) {
  MR_Pool* pool = MR_pool_new(10);
  auto* const first = static_cast<char*>(MR_pool_alloc(pool, 3));
  EXPECT_EQ(first + 3, MR_pool_alloc(pool, 7));
  auto* const second = static_cast<char*>(MR_pool_alloc(pool, 4));
  EXPECT_EQ(second, pool->blocks.head->data);
  EXPECT_EQ(first, pool->blocks.head->next->data);
  EXPECT_EQ(nullptr, MR_pool_alloc(pool, 11));
  EXPECT_EQ(nullptr, MR_pool_alloc(pool, -1));
  EXPECT_EQ(second + 4, MR_pool_alloc(pool, 6));
  std::memset(MR_pool_alloc(pool, 10), 2, 10);
  MR_pool_free(&pool);
  EXPECT_EQ(nullptr, pool);
  MR_pool_free(&pool);
  EXPECT_EQ(nullptr, MR_pool_alloc(pool, 0));
}
