#include <gtest/gtest.h>

#include <vx/OwnFile.h>

#include "tests/support/TemporaryFolder.h"

using vxString::CString;

TEST(OwnFile, OpensRegularFilesOnDrivesOnly) {
  const kilntest::TemporaryFolder folder;
  const std::string root = folder.path().string() + "\\";
  folder.write("file", "abc");
  folder.write("twice", "abc");
  std::filesystem::create_hard_link(root + "twice", root + "again");
  for (const std::string& path :
       {root + "twice", root, root + "none", root + "none\\file", root + "file:stream",
        root + "NUL", std::string("NUL"), std::string("\\\\.\\pipe\\none"),
        std::string("\\\\127.0.0.1\\share\\file"),
        std::string("\\\\?\\UNC\\127.0.0.1\\share\\file"), std::string("\\\\.\\C:\\file"),
        std::string("\\\\?\\GLOBALROOT\\Device\\Null"), std::string(),
        root + std::string("file\0", 5)}) {
    vxOS::OwnFile file;
    EXPECT_NE(file.open(CString(std::string_view(path))).code(), 0) << path;
    EXPECT_FALSE(file.isOpen()) << path;
  }
  for (const std::string& path : {root + "file", "\\\\?\\" + root + "file"}) {
    vxOS::OwnFile file;
    EXPECT_EQ(file.open(path.c_str()).code(), 0) << path;
    EXPECT_EQ(file.size(), 3U);
    EXPECT_EQ(std::fgetc(file.stream()), 'a');
  }
}

TEST(OwnFile, DeletesTheFileThatIsOpen) {
  const kilntest::TemporaryFolder folder;
  vxOS::OwnFile file;
  EXPECT_EQ(file.open(folder.write("file", "abc").string().c_str()).code(), 0);
  EXPECT_EQ(file.remove().code(), 0);
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(folder.names(), "");
}
