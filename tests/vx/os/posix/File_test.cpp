#include <cerrno>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vx/File.h>

#include "tests/support/Environment.h"
#include "tests/support/TemporaryFolder.h"

using vxOS::File;
using vxString::CString;

namespace {

// An administrator may do everything, and so becomes somebody else for a while.
class NoAdministrator {
 public:
  NoAdministrator() { EXPECT_EQ(0, user_ == 0 ? seteuid(65534) : 0); }
  ~NoAdministrator() { EXPECT_EQ(0, seteuid(user_)); }
  NoAdministrator(const NoAdministrator&) = delete;
  NoAdministrator& operator=(const NoAdministrator&) = delete;

 private:
  uid_t user_ = geteuid();
};

}  // namespace

TEST(PosixFile, WhatIsForbiddenIsNotWritableOrAnErrorThatNamesThePath) {
  const kilntest::KeptEnvironment kept("TMPDIR");
  const kilntest::TemporaryFolder folder;
  const CString root = folder.path().c_str(), closed = root + "/closed";
  chmod(folder.write("read", "").c_str(), 0444);
  mkdir(closed.c_str(), 0);
  chmod(closed.c_str(), 0666);  // without leave to enter
  mkfifo((root + "/pipe").c_str(), 0);
  chmod(root.c_str(), 0555);
  kilntest::setEnvironment("TMPDIR", root.c_str());
  {
    const NoAdministrator user;
    for (const CString& path : {root, root + "/read", closed}) {
      vxOS::FileStatus status;
      EXPECT_EQ(0, File::query(path, status).code());
      EXPECT_TRUE(status.exists) << path.c_str();
      EXPECT_FALSE(File::isWritable(path)) << path.c_str();
    }
    vxOS::FileStatus status;
    EXPECT_EQ(0, File::query(root + "/pipe", status).code());
    EXPECT_EQ(unsigned{S_IFIFO}, status.type);
    const vxUtil::Error error = File::query(closed + "/in/it", status);
    EXPECT_EQ("cannot look at \"" + closed + "/in/it\": Permission denied", error.message());
    EXPECT_EQ(EACCES, error.code());
    EXPECT_EQ(EACCES, File::makeDirectoryAll(root + "/new/folder").code());
    EXPECT_EQ(CString(), vxOS::createTmpFilename());
  }
  chmod(root.c_str(), 0777);
  const CString made = vxOS::createTmpFilename();
  struct stat facts;
  ASSERT_EQ(0, stat(made.c_str(), &facts));
  EXPECT_EQ(0600U, facts.st_mode & 07777);
}

TEST(PosixFile, AFileInThePlaceOfAParentIsNoFolder) {
  const kilntest::TemporaryFolder folder;
  const CString file = folder.write("file", "").string().c_str();
  EXPECT_EQ(EEXIST, File::makeDirectoryAll(file).code());
  for (const char* below : {"/a", "/a/b"})
    EXPECT_EQ(ENOTDIR, File::makeDirectoryAll(file + below).code()) << below;
}
