#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <vx/MoveableStore.h>

#include "tests/support/TemporaryFolder.h"

using kilntest::TemporaryFolder;
using vxOS::MoveableMemory;
using vxString::CString;
using vxString::IString;

namespace {

IString wide(const TemporaryFolder& folder) {
  return CString(folder.path().string().c_str()).asWide();
}

// Does random things to a store and to a model of it: the bytes of each block.
class Model {
 public:
  explicit Model(MoveableMemory& store) : store_(store) {}
  ~Model() {
    for (const auto& [block, pointer] : locked_) store_.unlock(block);
  }

  void step() {
    switch (std::uniform_int_distribution(0, 9)(random_)) {
      case 0:
        return free(any());
      case 1:
        return lockOrUnlock(any());
      case 2:
      case 3:
        return resize(any());
      case 4:
        if (random_() % 20 == 0) store_.compact();
        return;
      default:
        if (blocks_.size() < 60) allocate();
    }
  }

  // Every block holds what was written, and no block touches another one.
  void check() {
    for (const auto& [block, bytes] : blocks_) {
      ASSERT_EQ(bytes.size(), store_.size(block));
      const void* data = store_.lock(block);
      ASSERT_NE(nullptr, data);
      EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(data) % 64);
      EXPECT_TRUE(bytes.empty() || std::memcmp(bytes.data(), data, bytes.size()) == 0) << block;
      EXPECT_EQ(locked_.contains(block) ? locked_[block] : data, data);
      store_.unlock(block);
    }
  }

 private:
  using Handle = MoveableMemory::Handle;

  std::size_t anySize() { return random_() % (random_() % 4 == 0 ? 300'000 : 500); }
  Handle any() {
    if (blocks_.empty()) return 0;
    return std::next(blocks_.begin(), static_cast<int>(random_() % blocks_.size()))->first;
  }
  void fill(Handle block) {
    std::vector<unsigned char>& bytes = blocks_[block];
    std::generate(bytes.begin(), bytes.end(), [this] { return random_() % 256; });
    void* data = store_.lock(block);
    ASSERT_NE(nullptr, data);
    if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
    store_.unlock(block);
  }
  void allocate() {
    const std::size_t bytes = anySize();
    const Handle block = store_.allocate(bytes);
    EXPECT_NE(0U, block);
    EXPECT_FALSE(blocks_.contains(block));
    blocks_[block].resize(bytes);
    fill(block);
  }
  void resize(Handle block) {
    const std::size_t bytes = anySize();
    const bool done = store_.resize(block, bytes);
    EXPECT_EQ(blocks_.contains(block), done || locked_.contains(block));
    if (!done) return;
    const std::size_t before = std::min(blocks_[block].size(), bytes);
    blocks_[block].resize(bytes);
    EXPECT_EQ(0, std::memcmp(blocks_[block].data(), store_.lock(block), before));
    store_.unlock(block);
    fill(block);
  }
  void lockOrUnlock(Handle block) {
    if (locked_.erase(block) > 0) {
      store_.unlock(block);
    } else if (block != 0) {
      locked_[block] = store_.lock(block);
    }
  }
  void free(Handle block) {
    store_.free(block);
    blocks_.erase(block);
    locked_.erase(block);
    EXPECT_EQ(0U, store_.size(block));
    EXPECT_EQ(nullptr, store_.lock(block));
    EXPECT_FALSE(store_.resize(block, 1));
  }

  MoveableMemory& store_;
  std::mt19937 random_{7};
  std::map<Handle, std::vector<unsigned char>> blocks_;
  std::map<Handle, const void*> locked_;
};

}  // namespace

TEST(MoveableStore, BlocksKeepTheirBytesWhateverIsDoneToOthers) {
  const TemporaryFolder folder;
  MoveableMemory store;
  ASSERT_TRUE(store.initializeFiles(wide(folder), L"p"));
  Model model(store);
  for (int i = 0; i < 3000; ++i) {
    model.step();
    if (i % 100 == 0) model.check();
  }
  model.check();
}

TEST(MoveableStore, NoSpaceIsLostAndWhatIsFreedIsUsedAgain) {
  constexpr std::size_t kPart = 65536;
  const TemporaryFolder folder;
  MoveableMemory store;
  ASSERT_TRUE(store.initializeFiles(wide(folder), L""));
  for (const std::size_t bytes : {std::size_t{64}, 3 * kPart - 128, std::size_t{1}}) {
    store.allocate(bytes);
    EXPECT_EQ(bytes == 64 ? kPart : 3 * kPart, store.fileSize()) << bytes;
  }
  MoveableMemory::Handle blocks[32];
  for (auto& block : blocks) block = store.allocate(kPart);
  for (const int i : {10, 12, 11, 0}) store.free(blocks[i]);
  for (const std::size_t bytes : {3 * kPart, kPart}) EXPECT_NE(0U, store.allocate(bytes));
  EXPECT_EQ(35 * kPart, store.fileSize());
  for (int i = 13; i < 32; ++i) store.free(blocks[i]);
  store.allocate(1);
  EXPECT_TRUE(store.compact());
  EXPECT_EQ(17 * kPart, store.fileSize());
  store.allocate(kPart - 64);
  EXPECT_EQ(17 * kPart, store.fileSize());
}

TEST(MoveableStore, NoFileStaysAndNoneIsMadeUnderAnotherName) {
  const TemporaryFolder folder;
  const CString zero(std::string_view("a\0b", 3));
  {
    MoveableMemory store;
    for (const IString& prefix :
         {IString(L"../x"), IString(L"a\\x"), IString(L"a:x"), zero.asWide()})
      EXPECT_FALSE(store.initializeFiles(wide(folder), prefix));
    EXPECT_FALSE(store.initializeFiles(wide(folder) + L"/none", L"p"));
    EXPECT_EQ(0U, store.allocate(1));
    EXPECT_TRUE(store.initializeFiles(wide(folder), L"p"));
    EXPECT_FALSE(store.initializeFiles(wide(folder), L"p"));
    EXPECT_EQ(0U, store.allocate(SIZE_MAX));
    EXPECT_EQ(0U, store.allocate(std::size_t{1} << 60U));
    EXPECT_NE(nullptr, store.lock(store.allocate(1)));
    EXPECT_EQ(65536U, store.fileSize());
  }
  EXPECT_EQ("", folder.names());
}
