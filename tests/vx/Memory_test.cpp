#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

#include <vx/Memory.h>

#include "tests/support/Reports.h"

TEST(Memory, BlocksAreAlignedAndOfTheirOwnAndTooMuchIsRefused) {
  std::vector<void*> blocks = {nullptr};
  for (const std::size_t bytes : {0U, 0U, 24U}) {
    void* block = MA_malloc(bytes, __LINE__, __FILE__);
    EXPECT_THAT(blocks, testing::Not(testing::Contains(block)));
    EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t));
    std::memset(block, 0xA5, bytes);
    blocks.push_back(block);
  }
  for (void* block : blocks) MA_free(block);
  volatile std::size_t all = SIZE_MAX;
  for (const std::size_t less : {0U, 47U, 48U}) EXPECT_EQ(nullptr, MA_malloc(all - less, 1, ""));
}

#ifndef NDEBUG

TEST(Memory, OutstandingBlocksAreReportedPlaceByPlace) {
  kilntest::RecordedReports reports;
  const MaOutstanding before = MA_outstanding();
  const char anotherB[] = "b.c";
  void* blocks[] = {MA_malloc(10, 7, "b.c"), MA_malloc(0, 9, "a.c"), MA_malloc(5, 7, anotherB),
                    MA_malloc(3, 1, nullptr)};
  EXPECT_EQ(before.blocks + 4, MA_outstanding().blocks);
  MA_reportOutstanding();
  EXPECT_THAT(reports.takeAll(),
              testing::ElementsAre("error: Not freed: 3 bytes in 1 blocks (file ?, line 1)\n",
                                   "error: Not freed: 0 bytes in 1 blocks (file a.c, line 9)\n",
                                   "error: Not freed: 15 bytes in 2 blocks (file b.c, line 7)\n"));
  for (const int i : {1, 0, 3, 2}) MA_free(blocks[i]);
  MA_reportOutstanding();
  EXPECT_THAT(reports.takeAll(), testing::IsEmpty());
}

TEST(MemoryDeathTest, WhatIsLeftAtTheEndOfTheProcessIsReported) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process of its own, not a fork
  EXPECT_EXIT(
      {
        static const kilntest::RecordedReports reports;
        MA_malloc(12, 34, "left.c");
        std::exit(0);
      },
      testing::ExitedWithCode(0), "^Not freed: 12 bytes in 1 blocks .file left.c, line 34.\n$");
}

#endif
