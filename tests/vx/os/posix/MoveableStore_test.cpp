#include <gtest/gtest.h>
#include <sys/resource.h>

#include <vx/MoveableStore.h>

#include "tests/support/TemporaryFolder.h"

using vxOS::MoveableMemory;

TEST(PosixMoveableStore, AFullDiskIsAnErrorAndTheBlocksAreMovedTogetherFirst) {
  constexpr std::size_t kPart = 65536;
  const kilntest::TemporaryFolder folder;
  MoveableMemory store;
  ASSERT_TRUE(store.initializeFiles(vxString::CString(folder.path().c_str()).asWide(), L"p"));
  EXPECT_EQ("", folder.names());  // nobody else can open the file
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit full = {8 * kPart, before.rlim_max};  // as a full disk would be
  setrlimit(RLIMIT_FSIZE, &full);
  MoveableMemory::Handle blocks[8];
  for (auto& block : blocks) block = store.allocate(kPart);
  static_cast<char*>(store.lock(blocks[5]))[kPart - 1] = 'x';
  store.unlock(blocks[5]);
  EXPECT_EQ(0U, store.allocate(1));
  for (const int i : {0, 2, 4}) store.free(blocks[i]);
  store.lock(blocks[3]);
  EXPECT_EQ(0U, store.allocate(3 * kPart));
  EXPECT_FALSE(store.resize(blocks[1], 3 * kPart));
  store.unlock(blocks[3]);
  EXPECT_TRUE(store.resize(blocks[1], 3 * kPart));
  EXPECT_EQ('x', static_cast<char*>(store.lock(blocks[5]))[kPart - 1]);
  EXPECT_EQ(8U * kPart, store.fileSize());
  setrlimit(RLIMIT_FSIZE, &before);
}
