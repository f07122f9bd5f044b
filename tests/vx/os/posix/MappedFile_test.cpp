#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vx/MappedFile.h>

#include "tests/support/TemporaryFolder.h"

using vxOS::MemoryMappedFile;

namespace {

struct stat factsOf(const std::string& path) {
  struct stat facts = {};
  EXPECT_EQ(0, stat(path.c_str(), &facts)) << path;
  return facts;
}

}  // namespace

TEST(PosixMappedFile, SpaceIsTakenAtOnceForThisUserAlone) {
  constexpr std::size_t kBytes = 70'000'000;
  const kilntest::TemporaryFolder folder;
  const std::string ring = (folder.path() / "ring").string();
  std::string temporary = (folder.path() / "XXXXXX").string();
  MemoryMappedFile file;
  const int next = dup(0);  // the number of the next descriptor
  close(next);
  ASSERT_TRUE(file.createFile(ring.c_str(), kBytes, MemoryMappedFile::kReadWrite));
  EXPECT_EQ(FD_CLOEXEC, fcntl(next, F_GETFD));
  void* bytes = vxOS::mapTemporaryFile(temporary.data(), kBytes);
  for (const std::string& path : {ring, temporary}) {
    EXPECT_EQ(S_IFREG | 0600U, factsOf(path).st_mode);
    EXPECT_EQ(off_t{kBytes}, factsOf(path).st_size);
    EXPECT_LE(off_t{kBytes}, factsOf(path).st_blocks * 512);
  }
  EXPECT_TRUE(vxOS::unmapMemory(bytes));
}

TEST(PosixMappedFile, TheLimitOfTheProcessIsAnErrorAndNoSignal) {
  const kilntest::TemporaryFolder folder;
  rlimit before;
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit limit = {10'000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &limit);
  MemoryMappedFile file;
  const std::string path = (folder.path() / "file").string();
  EXPECT_FALSE(file.createFile(path.c_str(), 10'001, MemoryMappedFile::kReadWrite));
  EXPECT_EQ("", folder.names());
  EXPECT_TRUE(file.createFile(path.c_str(), 10'000, MemoryMappedFile::kReadWrite));
  setrlimit(RLIMIT_FSIZE, &before);
}

TEST(PosixMappedFile, TemporaryFilesThatAreStillMappedGoAtTheNormalEndOfTheirProcess) {
  const kilntest::TemporaryFolder folder;
  std::string ours = (folder.path() / "oursXXXXXX").string();
  void* bytes = vxOS::mapTemporaryFile(ours.data(), 24);
  const std::string before = folder.names();
  for (const bool isNormal : {true, false}) {
    const pid_t child = fork();
    if (child == 0) {
      std::string other = (folder.path() / "otherXXXXXX").string();
      if (vxOS::mapTemporaryFile(other.data(), 24) == nullptr) std::abort();
      isNormal ? std::exit(0) : _exit(0);
    }
    ASSERT_EQ(child, waitpid(child, nullptr, 0));
    EXPECT_EQ(isNormal, before == folder.names()) << folder.names();
  }
  EXPECT_TRUE(vxOS::unmapMemory(bytes));
  EXPECT_EQ(24, factsOf(ours).st_size);
}
