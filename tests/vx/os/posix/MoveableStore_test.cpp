#include <gtest/gtest.h>
#include <sys/resource.h>

#include <vx/MoveableStore.h>

#include "tests/support/TemporaryFolder.h"

using vxOS::MoveableMemory;

namespace {

// Lets files grow to `bytes` only, as a full disk would.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_ = {};
};

}  // namespace

TEST(PosixMoveableStore, AFullDiskIsAnErrorAndTheBlocksAreMovedTogetherFirst) {
  constexpr std::size_t kPart = 65536;
  const kilntest::TemporaryFolder folder;
  MoveableMemory store;
  ASSERT_TRUE(store.initializeFiles(vxString::CString(folder.path().c_str()).asWide(), L"p"));
  EXPECT_EQ("", folder.names());  // nobody else can open the file
  const FullDisk disk(8 * kPart);
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
}
