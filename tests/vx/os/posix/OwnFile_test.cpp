#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vx/OwnFile.h>

#include "tests/support/TemporaryFolder.h"

using vxString::CString;

TEST(OwnFile, OpensRegularFilesOfThisUserOnly) {
  const kilntest::TemporaryFolder folder;
  const std::string root = folder.path().string() + "/";
  folder.write("file", "abc");
  folder.write("twice", "abc");
  folder.write("others", "abc");
  EXPECT_EQ(link((root + "twice").c_str(), (root + "again").c_str()), 0);
  EXPECT_EQ(symlink("file", (root + "link").c_str()), 0);
  EXPECT_EQ(mkfifo((root + "pipe").c_str(), 0600), 0);
  EXPECT_EQ(geteuid() == 0 ? chown((root + "others").c_str(), 65534, 65534) : 0, 0);
  for (const std::string& path :
       {root + "twice", root + "link", root + "pipe", root, root + "none", root + "none/file",
        std::string("/dev/null"), std::string(), root + std::string("file\0", 5)}) {
    vxOS::OwnFile file;
    EXPECT_NE(file.open(CString(std::string_view(path))).code(), 0) << path;
    EXPECT_FALSE(file.isOpen()) << path;
  }
  vxOS::OwnFile others, file;
  EXPECT_EQ(others.open((root + "others").c_str()).code() != 0, geteuid() == 0);
  EXPECT_EQ(file.open((root + "file").c_str()).code(), 0);
  EXPECT_EQ(file.size(), 3U);
  EXPECT_EQ(std::fgetc(file.stream()), 'a');
}

TEST(OwnFile, DeletesTheFileThatIsOpenAndNoOther) {
  const kilntest::TemporaryFolder folder;
  vxOS::OwnFile file;
  EXPECT_EQ(file.open(folder.write("file", "abc").c_str()).code(), 0);
  std::filesystem::rename(folder.path() / "file", folder.path() / "moved");
  EXPECT_NE(file.remove().code(), 0);
  folder.write("file", "other");
  EXPECT_NE(file.remove().code(), 0);
  std::filesystem::rename(folder.path() / "moved", folder.path() / "file");
  EXPECT_EQ(file.remove().code(), 0);
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(folder.names(), "");
}
