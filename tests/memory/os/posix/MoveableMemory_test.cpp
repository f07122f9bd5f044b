#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <kilnbase/memory/MoveableMemory.h>

#include "tests/support/TemporaryFolder.h"

// An administrator may write everywhere, and so becomes somebody else for a while.
TEST(PosixMoveableMemory, AFolderThatIsNotWritableIsAnError) {
  const kilntest::TemporaryFolder folder;
  const vxString::CString path = folder.path().c_str();
  chmod(path.c_str(), 0555);
  const uid_t user = geteuid();
  ASSERT_EQ(0, user == 0 ? seteuid(65534) : 0);
  vxKilnBase::MoveableMemory memory;
  const vxUtil::Error error = memory.initialize(path.asWide(), L"p");
  ASSERT_EQ(0, seteuid(user));
  chmod(path.c_str(), 0755);
  EXPECT_EQ(1, error.code());
  EXPECT_EQ("directory not writeable: " + path + "\n", error.message());
  EXPECT_EQ(nullptr, memory.get());
}
