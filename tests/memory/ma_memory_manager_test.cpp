#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <utility>

#include <kilnbase/memory/ma_memory_manager.h>
#include <vx/File.h>
#include <vx/Filename.h>
#include <vx/Memory.h>
#include <vx/SysInfo.h>

#include "tests/support/Environment.h"
#include "tests/support/TemporaryFolder.h"

using vxOS::MemoryFigures;

namespace {

MemoryFigures injected;

// A machine with the memory that a test wants, and a folder for temporary files of its own.
class MemoryManager : public testing::Test {
 protected:
  MemoryManager() {
    vxOS::SysInfo::setMemorySource([] { return injected; });
    useFolder(folder_.path().string());
  }
  ~MemoryManager() override { vxOS::SysInfo::setMemorySource(nullptr); }

  static void useFolder(const std::string& folder) { kilntest::setEnvironment("TMPDIR", folder); }
  // Whether 32 bits of the bytes free on the disk show too few.
  static bool diskLooksFull() { return Ma_findMmapMemory() < 4096; }
  static void setAvailableBytes(std::uint64_t bytes) { injected.availableVirtual = bytes / 1024; }

  const kilntest::KeptEnvironment kept_{"TMPDIR"};
  const kilntest::TemporaryFolder folder_;
};

// What stands before a block.
struct Header {
  std::uint32_t magic, reserved0;
  const char* name;
  std::uint32_t total, reserved1;
};

Header headerOf(const void* block) {
  Header header;
  std::memcpy(&header, static_cast<const char*>(block) - 24, 24);
  return header;
}

constexpr std::uint32_t kMost = UINT32_MAX;
constexpr std::uint64_t k4Gib = std::uint64_t{1} << 32U;

}  // namespace

TEST_F(MemoryManager, FiguresAreKilobytesShiftedIn32Bits) {
  injected = {(5U << 20U) + 1, (4U << 20U) - 1, 3, 5121};
  const std::pair<std::uint32_t (*)(), std::uint32_t> figures[] = {
      {MA_get_real_memory_size, (1U << 30U) + 1024},
      {Ma_findPhysicalMemory, (1U << 30U) + 1024},
      {Ma_findAvailableMemory, kMost - 1023},
      {Ma_findFreePhysicalMemory, kMost - 1023},
      {MA_get_total_swap, 3072},
      {Ma_findVirtualMemory, 3072},
      {MA_swap_available, 5121 * 1024},
      {Ma_findFreeVirtualMemory, 1024}};
  for (const auto& [figure, expected] : figures) EXPECT_EQ(expected, figure()) << expected;
  for (const unsigned kilobytes : {5119U, 5120U, 4U << 20U}) {
    injected.availableVirtual = kilobytes;
    EXPECT_EQ(0U, Ma_findFreeVirtualMemory()) << kilobytes;
  }
}

TEST_F(MemoryManager, TheDiskOfTheTemporaryFolderKeepsFiveMebibytes) {
  vxOS::FilesystemStatus before, after;
  std::uint32_t usable = 0, disk = 0;
  bool wrapsToFit = true;
  do {  // until no other process has used the disk meanwhile
    vxOS::Filesystem::stat(vxOS::temporaryDirectory(), before);
    usable = Ma_findMmapMemory();
    Ma_get_process_data_limits(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               &disk);
    wrapsToFit = Ma_checkMmapMemory(disk, 0U - disk - 24, 0);
    vxOS::Filesystem::stat(vxOS::temporaryDirectory(), after);
  } while (before.freeKilobytes != after.freeKilobytes);
  EXPECT_EQ(static_cast<std::uint32_t>(before.freeKilobytes * 1024), disk);
  EXPECT_EQ(static_cast<std::uint32_t>((before.freeKilobytes - 5120) * 1024), usable);
  EXPECT_FALSE(wrapsToFit);
  for (const char* folder : {"/proc", "/none/there"}) {  // no space on the disk, and no disk
    useFolder(folder);
    EXPECT_EQ(0U, Ma_findMmapMemory()) << folder;
    EXPECT_FALSE(Ma_checkMmapMemory(0, 0, 0)) << folder;
    EXPECT_EQ(nullptr, Ma_allocMmapMemory(0, kMost - 23, 0)) << folder;
  }
}

TEST_F(MemoryManager, ProcessLimitsAreZeroAndNullPointersSkipped) {
  injected.availableVirtual = 7;
  std::uint32_t n[8] = {9, 9, 9, 9, 9, 9, 9, 9};
  Ma_get_process_data_limits(&n[0], &n[1], &n[2], &n[3], &n[4], &n[5], &n[6], nullptr);
  EXPECT_THAT(n, testing::ElementsAre(0, 0, 0, 0, 0, 0x7FFFFFFE, 7168, 9));
}

TEST_F(MemoryManager, RoomInThePagingFileIsReckonedIn32Bits) {
  using Case = std::tuple<std::uint64_t, std::uint32_t, std::uint32_t, bool>;
  for (const auto& [available, size, extra, fits] :
       {Case(2048, 1000, 1024, true), Case(2048, 1000, 1025, false),
        Case(k4Gib - 1024, kMost - 1047, 0, true), Case(k4Gib - 1024, kMost - 1047, 1, false),
        Case(k4Gib, 1, 0, false), Case(1024, kMost - 23, 0, true),
        Case(1024, 1000, kMost - 1000, true), Case(0, 1000, kMost - 1023, true)}) {
    setAvailableBytes(available);
    EXPECT_EQ(fits, Ma_checkMmapMemory(size, extra, 1)) << available << " " << size << " " << extra;
  }
}

TEST_F(MemoryManager, BlocksWithoutRoomForThemOrTheirHeaderAreRefused) {
  setAvailableBytes(k4Gib - 1024);
  for (const std::uint32_t size : {kMost, kMost - 23}) {
    for (const int paged : {0, 1}) EXPECT_EQ(nullptr, Ma_allocMmapMemory(size, 0, paged)) << size;
  }
  setAvailableBytes(1024);
  EXPECT_EQ(nullptr, Ma_allocMmapMemory(1001, 0, 1));
}

TEST_F(MemoryManager, BlocksHaveAHeaderAndAFileOfTheirOwn) {
  if (diskLooksFull()) GTEST_SKIP() << "by chance just above a multiple of 4 GiB";
  EXPECT_EQ(24U, Ma_get_mmap_overhead());
  setAvailableBytes(1024);
  const std::string path = folder_.path().string() + vxOS::Filename::separator() + "Magic0";
  for (const int paged : {1, 0}) {
    char* block = static_cast<char*>(Ma_allocMmapMemory(1000, 0, paged));
    ASSERT_NE(nullptr, block);
    EXPECT_EQ(1000, std::count(block, block + 1000, '\0'));
    block[999] = 'x';
    const Header header = headerOf(block);
    EXPECT_EQ(0xBEEFU, header.magic);
    EXPECT_EQ(1024U, header.total);
    const std::string name = header.name != nullptr ? header.name : "";
    EXPECT_EQ(paged != 0 ? "" : path, name.substr(0, path.size()));
    EXPECT_EQ(paged != 0 ? 0 : path.size() + 6, name.size());
    EXPECT_EQ(paged != 0 ? "" : name.substr(path.size() - 6) + " ", folder_.names());
    Ma_freeMmapMemory(block);
    EXPECT_EQ("", folder_.names());
  }
}

TEST_F(MemoryManager, FoldersWhosePathIsTooLongForTheNameAreRefused) {
  if (diskLooksFull()) GTEST_SKIP() << "by chance just above a multiple of 4 GiB";
  const std::size_t tracked = MA_outstanding().blocks;
  std::string path = folder_.path().string() + "/";
  path.resize(259 - std::strlen("/Magic0XXXXXX"), 'd');
  for (const bool fits : {true, false}) {
    ASSERT_EQ(0, vxOS::File::makeDirectoryAll(path.c_str()).code());
    useFolder(path);
    void* block = Ma_allocMmapMemory(1000, 0, 0);
    EXPECT_EQ(fits, block != nullptr);
    Ma_freeMmapMemory(block);
    path += 'd';
  }
  EXPECT_EQ(tracked, MA_outstanding().blocks);
}

TEST_F(MemoryManager, AShrunkBlockEndsWhereAPageEnds) {
  setAvailableBytes(1 << 20U);
  const auto page = static_cast<std::uint32_t>(vxOS::SysInfo::getPageSize());
  void* block = Ma_allocMmapMemory(3 * page - 24, 0, 1);
  ASSERT_NE(nullptr, block);
  const std::pair<std::uint32_t, std::uint32_t> sizeAndTotal[] = {{kMost, 3 * page},
                                                                  {2 * page - 23, 3 * page},
                                                                  {2 * page - 24, 2 * page},
                                                                  {3 * page - 24, 2 * page},
                                                                  {1000, page},
                                                                  {0, page}};
  for (const auto& [size, total] : sizeAndTotal) {
    EXPECT_EQ(total - 24, Ma_shrinkMmapMemory(block, size)) << size;
    EXPECT_EQ(total, headerOf(block).total) << size;
  }
  Ma_freeMmapMemory(block);
}

TEST_F(MemoryManager, MemoryWithoutTheMarkIsIgnored) {
  Header headers[2] = {{0xBEEE, 0, "not a file", 100, 0}, {}};
  EXPECT_EQ(0U, Ma_shrinkMmapMemory(&headers[1], 10));
  EXPECT_EQ(0U, Ma_shrinkMmapMemory(nullptr, 10));
  Ma_freeMmapMemory(&headers[1]);
  Ma_freeMmapMemory(nullptr);
  EXPECT_EQ(100U, headers[0].total);
}
