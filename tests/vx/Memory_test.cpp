#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include <vx/Memory.h>

#include "tests/support/Reports.h"

TEST(Memory, BlocksAreAlignedAndOfTheirOwn) {
  std::vector<unsigned char*> blocks;
  for (const std::size_t bytes : {0U, 1U, 0U, 24U, 4096U, 100000U}) {
    auto* block = static_cast<unsigned char*>(MA_malloc(bytes, __LINE__, __FILE__));
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t));
    EXPECT_THAT(blocks, testing::Not(testing::Contains(block)));
    std::memset(block, 0xA5, bytes);
    blocks.push_back(block);
  }
  for (unsigned char* block : blocks) MA_free(block);
  MA_free(nullptr);
}

TEST(Memory, TooMuchIsRefused) {
  volatile std::size_t all = std::numeric_limits<std::size_t>::max();
  for (const std::size_t less : {0U, 1U, 47U, 48U, 4096U})
    EXPECT_EQ(nullptr, MA_malloc(all - less, 1, "huge.c"));
}

#ifndef NDEBUG

TEST(Memory, OutstandingBlocksAreReportedPlaceByPlace) {
  kilntest::RecordedReports reports;
  const MaOutstanding before = MA_outstanding();
  const char anotherB[] = "b.c";
  void* blocks[] = {MA_malloc(10, 7, "b.c"), MA_malloc(0, 9, "a.c"), MA_malloc(5, 7, anotherB),
                    MA_malloc(1, 6, "b.c"), MA_malloc(3, 1, nullptr)};
  EXPECT_EQ(before.blocks + 5, MA_outstanding().blocks);
  EXPECT_EQ(before.bytes + 19, MA_outstanding().bytes);
  MA_reportOutstanding();
  EXPECT_THAT(reports.takeAll(),
              testing::ElementsAre("error: Not freed: 3 bytes in 1 blocks (file ?, line 1)\n",
                                   "error: Not freed: 0 bytes in 1 blocks (file a.c, line 9)\n",
                                   "error: Not freed: 1 bytes in 1 blocks (file b.c, line 6)\n",
                                   "error: Not freed: 15 bytes in 2 blocks (file b.c, line 7)\n"));
  for (const int i : {1, 0, 4, 2, 3}) MA_free(blocks[i]);
  EXPECT_EQ(before.blocks, MA_outstanding().blocks);
  EXPECT_EQ(before.bytes, MA_outstanding().bytes);
  MA_reportOutstanding();
  EXPECT_THAT(reports.takeAll(), testing::IsEmpty());
}

TEST(MemoryDeathTest, WhatIsLeftAtTheEndOfTheProcessIsReported) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process of its own, not a fork
  EXPECT_EXIT(
      {
        static const kilntest::RecordedReports reports;
        MA_free(MA_malloc(1, 1, "freed.c"));
        MA_malloc(12, 34, "left.c");
        std::exit(0);
      },
      testing::ExitedWithCode(0), "^Not freed: 12 bytes in 1 blocks .file left.c, line 34.\n$");
}

#endif
