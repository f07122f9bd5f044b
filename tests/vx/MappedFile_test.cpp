#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

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
  const struct {
    CString path;
    std::size_t size;
  } impossible[] = {{path("old"), 100},
                    {path("a"), 0},
                    {path("b"), kNoDiskHasSoMuch},
                    {path("c"), SIZE_MAX},
                    {path("no/folder"), 100},
                    {path("d") + CString(std::string_view("\0", 1)), 100},
                    {"", 100}};
  for (const auto& [name, size] : impossible) {
    ASSERT_TRUE(file.createFile(path("new"), 100, MemoryMappedFile::kReadWrite));
    EXPECT_EQ(100U, file.size());
    EXPECT_FALSE(file.createFile(name, size, MemoryMappedFile::kReadWrite)) << name.c_str();
    EXPECT_FALSE(file.isOpen()) << name.c_str();
    EXPECT_EQ(0U, file.size()) << name.c_str();
    EXPECT_EQ(std::string(100, '\0'), kilntest::readFile(folder_.path() / "new"));
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
  EXPECT_EQ(65536U, view.offset());
  EXPECT_EQ(65536U + 512U, view.length());
  std::strcpy(bytes + 65536, "text");
  EXPECT_STREQ("text", same);
  EXPECT_EQ("text", kilntest::readFile(folder_.path() / "file").substr(131072, 4)) << "while open";
  file.close();
  EXPECT_EQ(nullptr, FileMapping().map(file, 0, 1));
  std::strcpy(bytes, "later");
  view.unmap();
  EXPECT_EQ(nullptr, view.data());
  const std::string content =
      kilntest::readFile(folder_.path() / "file");  // `other` is there still
  EXPECT_EQ("later", content.substr(65536, 5));
  EXPECT_EQ("text", content.substr(131072, 4));
  EXPECT_EQ(200'000U, content.size());
}

TEST_F(MappedFile, ViewsBeyondTheFileOrBetweenTheGrainsAreRefused) {
  MemoryMappedFile file;
  ASSERT_TRUE(file.createFile(path("file"), 65536 + 10, MemoryMappedFile::kReadOnly));
  FileMapping view;
  const struct {
    std::uint64_t offset;
    std::size_t length;
  } refused[] = {{0, 0},
                 {65536, 11},
                 {131072, 1},
                 {4096, 1},
                 {0, SIZE_MAX},
                 {65536, SIZE_MAX - 65535},
                 {UINT64_MAX - 65535, 65546},
                 {65546, 0}};
  for (const auto& [offset, length] : refused) {
    const auto* bytes = static_cast<const char*>(view.map(file, 65536, 10));
    ASSERT_NE(nullptr, bytes);
    EXPECT_TRUE(isZero(bytes, 10));
    EXPECT_EQ(nullptr, view.map(file, offset, length)) << offset << "+" << length;
    EXPECT_EQ(nullptr, view.data()) << offset << "+" << length;
    EXPECT_EQ(0U, view.length()) << offset << "+" << length;
  }
}

TEST_F(MappedFile, MemoryIsUnmappedOnceWithAPointerToAnyOfItsBytes) {
  char* blocks[] = {static_cast<char*>(vxOS::mapMemory(24)),
                    static_cast<char*>(vxOS::mapMemory(100'000)),
                    static_cast<char*>(vxOS::mapMemory(4096))};
  const std::size_t lengths[] = {24, 100'000, 4096}, insides[] = {24, 99'999, 0};
  for (const int i : {0, 1, 2}) {
    ASSERT_NE(nullptr, blocks[i]);
    EXPECT_TRUE(isZero(blocks[i], lengths[i])) << i;
    std::memset(blocks[i], 'x', lengths[i]);
  }
  for (const int i : {1, 0, 2}) {
    EXPECT_TRUE(vxOS::unmapMemory(blocks[i] + insides[i])) << i;
    EXPECT_FALSE(vxOS::unmapMemory(blocks[i] + insides[i])) << i;
  }
  EXPECT_FALSE(vxOS::unmapMemory(lengths));
  EXPECT_FALSE(vxOS::unmapMemory(nullptr));
  for (const std::size_t impossible : {std::size_t{0}, kNoDiskHasSoMuch, SIZE_MAX})
    EXPECT_EQ(nullptr, vxOS::mapMemory(impossible)) << impossible;
}

TEST_F(MappedFile, TemporaryFilesHaveNewNamesAndGo) {
  const std::string pattern = (folder_.path() / "Magic7XXXXXX").string();
  std::string first = pattern, second = pattern;
  auto* bytes = static_cast<char*>(vxOS::mapTemporaryFile(first.data(), 5000));
  auto* others = static_cast<char*>(vxOS::mapTemporaryFile(second.data(), 24));
  ASSERT_NE(nullptr, bytes);
  ASSERT_NE(nullptr, others);
  EXPECT_NE(first, second);
  for (const std::string& name : {first, second}) {
    EXPECT_EQ(pattern.substr(0, pattern.size() - 6), name.substr(0, pattern.size() - 6));
    EXPECT_THAT(folder_.names(), testing::HasSubstr(name.substr(pattern.size() - 6)));
  }
  EXPECT_TRUE(isZero(bytes, 5000));
  bytes[4999] = 'x';
  EXPECT_TRUE(vxOS::unmapMemory(others + 24));
  EXPECT_EQ('x', bytes[4999]);
  EXPECT_TRUE(vxOS::unmapMemory(bytes + 1));
  for (const std::string& name : {first, second}) std::filesystem::remove(name);
  EXPECT_EQ("", folder_.names());
}

TEST_F(MappedFile, TemporaryFilesThatCannotBeMadeLeaveTheNameAsItWas) {
  const std::string good = (folder_.path() / "XXXXXX").string();
  const struct {
    std::string name;
    std::size_t bytes;
  } refused[] = {{good, 0},
                 {good, kNoDiskHasSoMuch},
                 {good, SIZE_MAX},
                 {good + "X.", 24},
                 {good.substr(0, good.size() - 7) + "x/XXXXXX", 24},
                 {"XXXXX", 24},
                 {"", 24}};
  for (const auto& [name, bytes] : refused) {
    std::string tried = name;
    EXPECT_EQ(nullptr, vxOS::mapTemporaryFile(tried.data(), bytes)) << name;
    EXPECT_EQ(name, tried);
    EXPECT_EQ("", folder_.names()) << name;
  }
}
