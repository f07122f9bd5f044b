#include <aclapi.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <windows.h>

#include <vx/File.h>

#include "tests/support/Environment.h"
#include "tests/support/TemporaryFolder.h"

using vxOS::File;
using vxString::CString;

TEST(WindowsFile, ReadOnlyFilesAreNotWritableAndFoldersDrivesAndLockedFilesAre) {
  const kilntest::TemporaryFolder folder;
  const CString root = folder.path().string().c_str();
  const CString file = folder.write("file", "").string().c_str();
  EXPECT_TRUE(File::isWritable(file));
  for (const CString& path : {root, file})
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_FALSE(File::isWritable(file));
  EXPECT_TRUE(File::isWritable(root));
  for (const CString& path : {root, file}) SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  const HANDLE locked =
      CreateFileA(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_TRUE(File::isWritable(file));
  CloseHandle(locked);
  for (const char* drive : {"C:\\", "c:/"}) EXPECT_TRUE(File::isWritable(drive)) << drive;
  EXPECT_TRUE(File::isWritable("NUL"));
}

TEST(WindowsFile, TemporaryFilesAreForTheirUserAlone) {
  const kilntest::TemporaryFolder folder;
  const kilntest::KeptEnvironment kept("TMPDIR");
  kilntest::setEnvironment("TMPDIR", folder.path().string());
  ACL* list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_EQ(0U, GetNamedSecurityInfoA(vxOS::createTmpFilename().c_str(), SE_FILE_OBJECT,
                                      DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr,
                                      &descriptor));
  for (WORD i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    ASSERT_NE(0, GetAce(list, i, &entry));
    EXPECT_EQ(0, IsWellKnownSid(&static_cast<ACCESS_ALLOWED_ACE*>(entry)->SidStart, WinWorldSid));
  }
  LocalFree(descriptor);
}

TEST(WindowsFile, AFileInThePlaceOfAParentIsNoFolder) {
  const kilntest::TemporaryFolder folder;
  const CString file = folder.write("file", "").string().c_str();
  EXPECT_EQ(ERROR_ALREADY_EXISTS, vxOS::File::makeDirectoryAll(file).code());
  for (const char* below : {"/a", "/a/b"})
    EXPECT_EQ(ERROR_DIRECTORY, vxOS::File::makeDirectoryAll(file + below).code()) << below;
}
