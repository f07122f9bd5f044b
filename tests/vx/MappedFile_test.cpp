#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <utility>

#include <vx/File.h>
#include <vx/MappedFile.h>

#include "tests/support/TemporaryFolder.h"

using vxOS::FileMapping;
using vxOS::MemoryMappedFile;
using vxString::CString;

namespace {

constexpr std::size_t kNoDiskHasSoMuch = std::size_t{1} << 62;

class MappedFile : public testing::Test {
 protected:
  CString path(const char* name) const { return (folder_.path() / name).string().c_str(); }

  const kilntest::TemporaryFolder folder_;
};

bool isZero(const char* bytes, std::size_t count) {
  return std::count(bytes, bytes + count, '\0') == static_cast<std::ptrdiff_t>(count);
}

}  // namespace

TEST_F(MappedFile, FilesAreMadeNewOrNotAtAll) {
  folder_.write("old", "kept");
  MemoryMappedFile file;
  const std::pair<CString, std::size_t> impossible[] = {
      {path("old"), 100},
      {path("a"), 0},
      {path("b"), kNoDiskHasSoMuch},
      {path("no/folder"), 100},
      {path("c") + CString(std::string_view("\0", 1)), 100}};
  for (const auto& [name, size] : impossible) {
    ASSERT_TRUE(file.createFile(path("new"), 100, MemoryMappedFile::kReadWrite));
    EXPECT_FALSE(file.createFile(name, size, MemoryMappedFile::kReadWrite)) << name.c_str();
    EXPECT_FALSE(file.isOpen()) << name.c_str();
    EXPECT_EQ(0U, file.size()) << name.c_str();
    EXPECT_EQ(0, vxOS::File::remove(path("new")).code()) << "closed";
    EXPECT_EQ("old ", folder_.names()) << name.c_str();
  }
  EXPECT_EQ("kept", kilntest::readFile(folder_.path() / "old"));
}

TEST_F(MappedFile, ViewsShowTheFileToAllAndOutliveIt) {
  MemoryMappedFile file;
  ASSERT_TRUE(file.createFile(path("file"), 200'000, MemoryMappedFile::kReadWrite));
  FileMapping view, other;
  auto* bytes = static_cast<char*>(view.map(file, 65536, 65536 + 512));
  const auto* same = static_cast<const char*>(other.map(file, 131072, 200'000 - 131072));
  ASSERT_NE(nullptr, bytes);
  ASSERT_NE(nullptr, same);
  EXPECT_TRUE(isZero(bytes, 65536 + 512));
  std::strcpy(bytes + 65536, "text");
  EXPECT_STREQ("text", same);
  EXPECT_EQ("text", kilntest::readFile(folder_.path() / "file").substr(131072, 4)) << "while open";
  file.close();
  EXPECT_EQ(nullptr, FileMapping().map(file, 0, 1));
  std::strcpy(bytes, "later");
  view.unmap();
  const std::string content = kilntest::readFile(folder_.path() / "file");
  EXPECT_EQ("later", content.substr(65536, 5));
  EXPECT_EQ(200'000U, content.size());
}

TEST_F(MappedFile, ViewsBeyondTheFileOrBetweenTheGrainsAreRefused) {
  MemoryMappedFile file;
  ASSERT_TRUE(file.createFile(path("file"), 65536 + 10, MemoryMappedFile::kReadOnly));
  FileMapping view;
  const std::pair<std::uint64_t, std::size_t> refused[] = {
      {0, 0}, {65536, 11}, {131072, 1}, {4096, 1}, {0, SIZE_MAX}, {UINT64_MAX - 65535, 65546}};
  for (const auto& [offset, length] : refused) {
    EXPECT_NE(nullptr, view.map(file, 65536, 10));
    EXPECT_EQ(nullptr, view.map(file, offset, length)) << offset << "+" << length;
    EXPECT_EQ(nullptr, view.data()) << offset << "+" << length;
  }
}

TEST_F(MappedFile, MemoryIsUnmappedOnceWithAPointerToAnyOfItsBytes) {
  const std::size_t lengths[] = {24, 100'000, 4096}, insides[] = {24, 99'999, 0};
  char* blocks[3];
  for (const int i : {0, 1, 2}) {
    blocks[i] = static_cast<char*>(vxOS::mapMemory(lengths[i]));
    ASSERT_NE(nullptr, blocks[i]);
    EXPECT_TRUE(isZero(blocks[i], lengths[i])) << i;
    std::memset(blocks[i], 'x', lengths[i]);
  }
  for (const int i : {1, 0, 2}) {
    EXPECT_TRUE(vxOS::unmapMemory(blocks[i] + insides[i])) << i;
    EXPECT_FALSE(vxOS::unmapMemory(blocks[i] + insides[i])) << i;
  }
  for (const void* other : {static_cast<const void*>(lengths), static_cast<const void*>(nullptr)})
    EXPECT_FALSE(vxOS::unmapMemory(other));
  for (const std::size_t impossible : {std::size_t{0}, kNoDiskHasSoMuch, SIZE_MAX})
    EXPECT_EQ(nullptr, vxOS::mapMemory(impossible)) << impossible;
}

TEST_F(MappedFile, TemporaryFilesHaveNewNames) {
  const std::string stem = (folder_.path() / "Magic7").string();
  std::set<std::string> names;
  for (const std::size_t bytes : {5000U, 24U}) {
    std::string name = stem + "XXXXXX";
    auto* start = static_cast<char*>(vxOS::mapTemporaryFile(name.data(), bytes));
    ASSERT_NE(nullptr, start);
    EXPECT_TRUE(isZero(start, bytes));
    start[bytes - 1] = 'x';
    EXPECT_TRUE(names.insert(name).second);
    EXPECT_TRUE(std::filesystem::exists(name)) << name;
    EXPECT_EQ(stem, name.substr(0, stem.size()));
    EXPECT_TRUE(vxOS::unmapMemory(start + 1));
    std::filesystem::remove(name);
    EXPECT_EQ("", folder_.names());
  }
}

TEST_F(MappedFile, TemporaryFilesThatCannotBeMadeLeaveTheNameAsItWas) {
  const std::string folder = folder_.path().string();
  const std::pair<std::string, std::size_t> refused[] = {{folder + "/XXXXXX", 0},
                                                         {folder + "/XXXXXX", kNoDiskHasSoMuch},
                                                         {folder + "/XXXXXX.", 24},
                                                         {folder + "/no/XXXXXX", 24},
                                                         {"XXXXX", 24}};
  for (const auto& [name, bytes] : refused) {
    std::string tried = name;
    EXPECT_EQ(nullptr, vxOS::mapTemporaryFile(tried.data(), bytes)) << name;
    EXPECT_EQ(name, tried);
    EXPECT_EQ("", folder_.names()) << name;
  }
}
