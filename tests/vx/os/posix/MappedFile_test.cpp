#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
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

// Runs a function in a process of its own, which `end` ends.
template <class Function>
void inAnotherProcess(Function function, void (*end)(int)) {
  const pid_t child = fork();
  if (child == 0) {
    function();
    end(0);
  }
  ASSERT_EQ(child, waitpid(child, nullptr, 0));
}

}  // namespace

TEST(PosixMappedFile, SpaceIsTakenAtOnceForThisUserAlone) {
  const kilntest::TemporaryFolder folder;
  const std::string ring = (folder.path() / "ring").string();
  std::string temporary = (folder.path() / "XXXXXX").string();
  MemoryMappedFile file;
  ASSERT_TRUE(file.createFile(ring.c_str(), 1'000'000, MemoryMappedFile::kReadWrite));
  void* bytes = vxOS::mapTemporaryFile(temporary.data(), 1'000'000);
  for (const std::string& path : {ring, temporary}) {
    EXPECT_EQ(S_IFREG | 0600U, factsOf(path).st_mode);
    EXPECT_EQ(1'000'000, factsOf(path).st_size);
    EXPECT_LE(1'000'000, factsOf(path).st_blocks * 512);
  }
  int open = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    const std::string target = std::filesystem::read_symlink(entry, gone).string();
    if (target.rfind(folder.path().string(), 0) != 0) continue;
    ++open;
    EXPECT_EQ(FD_CLOEXEC, fcntl(std::stoi(entry.path().filename()), F_GETFD));
  }
  EXPECT_EQ(1, open);
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
  const auto mapAnother = [&] {
    std::string other = (folder.path() / "otherXXXXXX").string();
    if (vxOS::mapTemporaryFile(other.data(), 24) == nullptr) std::abort();
  };
  const std::string before = folder.names();
  inAnotherProcess(mapAnother, std::exit);
  EXPECT_EQ(before, folder.names());
  inAnotherProcess(mapAnother, _exit);
  EXPECT_NE(before, folder.names());
  EXPECT_TRUE(vxOS::unmapMemory(bytes));
  EXPECT_EQ(24, factsOf(ours).st_size);
}
