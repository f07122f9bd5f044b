#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>

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

// Does random things to a store and to a model of it: the length and the byte of each block.
class Model {
 public:
  explicit Model(MoveableMemory& store) : store_(store) {}

  void step() {
    const MoveableMemory::Handle block = random_() % (last_ + 1);  // often one that was freed
    const std::size_t bytes = random_() % (random_() % 4 == 0 ? 300'000 : 500);
    switch (random_() % 8) {
      case 0:
        store_.free(block);
        blocks_.erase(block);
        break;
      case 1:
        EXPECT_EQ(blocks_.contains(block), store_.lock(block) != nullptr);
        break;
      case 2:
        store_.unlock(block);
        break;
      case 3:
        if (store_.resize(block, bytes)) resized(block, bytes);
        break;
      case 4:
        if (random_() % 20 == 0) store_.compact();
        break;
      default:
        if (blocks_.size() < 60) write(last_ = store_.allocate(bytes), bytes);
    }
  }

  // Every block holds what was written, and no block touches another one.
  void check() {
    for (const auto& [block, content] : blocks_) {
      EXPECT_EQ(content.bytes, store_.size(block));
      expectFilled(block, content.bytes);
    }
  }

 private:
  struct Content {
    std::size_t bytes;
    char byte;
  };

  void write(MoveableMemory::Handle block, std::size_t bytes) {
    blocks_[block] = {bytes, static_cast<char>(random_())};
    std::memset(store_.lock(block), blocks_[block].byte, bytes);
    store_.unlock(block);
  }
  void resized(MoveableMemory::Handle block, std::size_t bytes) {
    ASSERT_TRUE(blocks_.contains(block));
    expectFilled(block, std::min(bytes, blocks_[block].bytes));
    write(block, bytes);
  }
  void expectFilled(MoveableMemory::Handle block, std::size_t bytes) {
    const char* data = static_cast<const char*>(store_.lock(block));
    EXPECT_EQ(data, store_.lock(block));
    EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(data) % 64);
    EXPECT_EQ(static_cast<long>(bytes), std::count(data, data + bytes, blocks_[block].byte));
    for (int i = 0; i < 2; ++i) store_.unlock(block);
  }

  MoveableMemory& store_;
  std::mt19937 random_{7};
  std::map<MoveableMemory::Handle, Content> blocks_;
  MoveableMemory::Handle last_ = 0;
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
  const MoveableMemory::Handle shrunk = store.allocate(9 * kPart);
  store.lock(shrunk);
  for (const std::size_t bytes : {std::size_t{100}, 9 * kPart, std::size_t{100}})
    EXPECT_TRUE(store.resize(shrunk, bytes)) << bytes;
  store.unlock(shrunk);
  EXPECT_TRUE(store.compact());
  EXPECT_EQ(18 * kPart, store.fileSize());
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
