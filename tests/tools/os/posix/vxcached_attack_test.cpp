// What another user of the machine, or links in the directory, could try.
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <kilnbase/net/FileCache.h>
#include <vx/Filename.h>

#include "tests/tools/CacheDaemon.h"
#include "tools/vxcached/Cache.h"

namespace {

namespace fs = std::filesystem;
using kilntest::CacheDaemon;
using kilntest::TemporaryFolder;
using kilntest::text;
using vxString::CString;

mode_t modeOf(const fs::path& path) {
  struct stat facts = {};
  EXPECT_EQ(lstat(path.c_str(), &facts), 0) << path;
  return facts.st_mode & 0777;
}

TEST(VxcachedAttack, LinksAreNoFiles) {
  TemporaryFolder folder, other;
  CacheDaemon daemon(folder.path(), 0, 0);
  const fs::path outside = other.write("secret", "secret");
  fs::create_symlink(outside, folder.path() / "symbolic");
  fs::create_symlink(other.path(), folder.path() / "folder");
  fs::create_hard_link(outside, folder.path() / "hard");
  mkfifo((folder.path() / "pipe").c_str(), 0600);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(folder.write("theirs", "").c_str(), 1, 1), 0);
  }
  for (const char* name : {"symbolic", "hard", "pipe", "theirs", "folder/secret"}) {
    EXPECT_FALSE(daemon.client().protocol.add("key", text(folder.path() / name))) << name;
  }
  vxOS::Directory directory;
  ASSERT_EQ(directory.open(text(folder.path())).code(), 0);
  for (const char* name : {"symbolic", "pipe", "folder"})
    EXPECT_EQ(directory.read(name, 9), CString()) << name;
  EXPECT_EQ(directory.read("hard", 3), CString("sec"));
  // A file that becomes a link after it was added is not there, and the link's target stays.
  ASSERT_TRUE(daemon.client().add(folder.path(), "key", "content"));
  CString path;
  std::int64_t accessTime = 0;
  ASSERT_TRUE(daemon.client().protocol.acquire("key", path, accessTime));
  fs::remove(path.c_str());
  fs::create_symlink(outside, path.c_str());
  EXPECT_FALSE(daemon.client().protocol.acquire("key", path, accessTime));
  daemon.dropClient();
  daemon.process().terminate();
  EXPECT_EQ(daemon.process().wait(), 0);
  EXPECT_EQ(kilntest::readFile(outside), "secret");
}

TEST(VxcachedAttack, TheDaemonsFilesArePrivateAndNoLinks) {
  TemporaryFolder folder, other;
  const fs::path made = folder.path() / "a" / "made";
  const fs::path target = other.write("target", "target");
  {
    CacheDaemon daemon(made, 0, 0);
    EXPECT_EQ(modeOf(made), 0700U);
    EXPECT_EQ(modeOf(made.parent_path()), 0700U);
    for (const char* name : {"@daemon.lck", "@lockfile.lck", "@index.dat", "@daemon.sock"})
      EXPECT_EQ(modeOf(made / name), 0600U) << name;
  }
  for (const char* name : {"@daemon.lck", "@index.dat"}) {
    fs::remove(made / name);
    fs::create_symlink(target, made / name);
    CacheDaemon daemon;
    EXPECT_NE(daemon.client().protocol.initialize(text(made), 0, 0).code(), 0) << name;
    fs::remove(made / name);
  }
  fs::remove(made / "@lockfile.lck");
  fs::create_symlink(target, made / "@lockfile.lck");
  CacheDaemon daemon(made, 0, 0);
  EXPECT_GT(kilntest::portIn(made), 0);
  EXPECT_EQ(kilntest::readFile(target), "target");
}

TEST(VxcachedAttack, RefusesDirectoriesThatOthersCanChange) {
  TemporaryFolder folder;
  const fs::path cache = folder.path() / "cache";
  fs::create_directory(cache);
  const auto message = [](const fs::path& path) {
    CacheDaemon daemon;
    return std::string(daemon.client().protocol.initialize(text(path), 0, 0).message().c_str());
  };
  for (const mode_t mode : {0770U, 0707U, 0777U, 01777U}) {
    chmod(cache.c_str(), mode);
    EXPECT_NE(message(cache).find("can be written by other users"), std::string::npos) << mode;
  }
  chmod(cache.c_str(), 0755);
  chmod(folder.path().c_str(), 0777);
  EXPECT_NE(message(cache).find("other users can rename it"), std::string::npos);
  chmod(folder.path().c_str(), 01777);
  EXPECT_EQ(message(cache), "");
  if (geteuid() == 0) {
    ASSERT_EQ(lchown(cache.c_str(), 1, 1), 0);
    EXPECT_NE(message(cache).find("belongs to another user"), std::string::npos);
    fs::create_directory(folder.path() / "own");
    fs::create_symlink(folder.path() / "own", folder.path() / "link");
    EXPECT_EQ(message(folder.path() / "link"), "");
    ASSERT_EQ(lchown((folder.path() / "link").c_str(), 1, 1), 0);
    EXPECT_NE(message(folder.path() / "link").find("link of another user"), std::string::npos);
    EXPECT_NE(message(folder.path() / "link" / "below").find("link of another user"),
              std::string::npos);
    ASSERT_EQ(lchown(folder.path().c_str(), 1, 1),
              0);  // a tree of another user, as containers have
    EXPECT_EQ(message(folder.path() / "own"), "");
  }
}

TEST(VxcachedAttack, EndsCleanlyOnSigtermWithClients) {
  TemporaryFolder folder;
  CacheDaemon daemon(folder.path(), 0, 0);
  kilntest::CacheClient second(kilntest::portIn(folder.path()));
  EXPECT_EQ(second.protocol.initialize(text(folder.path()), 0, 0).code(), 0);
  EXPECT_TRUE(daemon.client().add(folder.path(), "key", "content"));
  vxTCP::Socket elsewhere(vxTCP::Address("127.0.0.2", kilntest::portIn(folder.path())));
  EXPECT_NE(elsewhere.connect().code(), 0) << "listens on the loopback address only";
  daemon.process().terminate();
  EXPECT_EQ(daemon.process().wait(), 0);
  EXPECT_FALSE(fs::exists(folder.path() / "@lockfile.lck"));
  EXPECT_FALSE(fs::exists(folder.path() / "@daemon.sock"));
  EXPECT_EQ(second.content("key"), "");
}

// Two daemons must not serve one directory.
TEST(VxcachedAttack, EndsWhenItsLockedFileIsGone) {
  TemporaryFolder folder;
  CacheDaemon first(folder.path(), 0, 0);
  EXPECT_TRUE(first.client().add(folder.path(), "early", "content"));
  fs::remove(folder.path() / "@daemon.lck");
  EXPECT_FALSE(first.client().add(folder.path(), "late", "content"));
  first.client().protocol.release("early", true);
  CacheDaemon second(folder.path(), 0, 0);
  EXPECT_TRUE(second.client().add(folder.path(), "key", "content"));
  EXPECT_EQ(first.process().wait(), 0);
  second.dropClient();
  second.process().kill();
  CacheDaemon third(folder.path(), 0, 0);
  for (const char* key : {"early", "key"}) EXPECT_EQ(third.client().content(key), "content");
  third.dropClient();
  TemporaryFolder other;
  fs::rename(folder.path(), other.path() / "moved");
  EXPECT_EQ(third.process().wait(), 0);  // before the idle time has passed
}

// Whoever may read the directory can lock the directory, and a lock file that others may read.
TEST(VxcachedAttack, LocksOnlyWhatNobodyElseCanOpen) {
  TemporaryFolder folder;
  const int directory = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(flock(directory, LOCK_EX), 0);
  chmod(folder.write("@daemon.lck", "").c_str(), 0644);
  CacheDaemon daemon(folder.path(), 0, 0);
  EXPECT_EQ(modeOf(folder.path() / "@daemon.lck"), 0600U);
  close(directory);
  // The lock of a file that is deleted before is no lock of the directory.
  vxOS::Directory opened;
  vxOS::DirectoryFile lock;
  bool isTaken = false;
  ASSERT_EQ(opened.open(text(folder.path())).code(), 0);
  ASSERT_EQ(lock.open(opened, "lock").code(), 0);
  opened.remove("lock");
  EXPECT_EQ(lock.tryLock(opened, isTaken).code(), 0);
  EXPECT_TRUE(isTaken);
}

TEST(VxcachedAttack, ARemovalThatTheDiskHasNoRoomForIsSavedLater) {
  TemporaryFolder folder;
  vxcached::Log log;
  vxcached::Cache cache(log);
  vxcached::Cache::Client client;
  bool isTaken = true;
  ASSERT_EQ(cache.lock(text(folder.path()), isTaken).message(), CString());
  ASSERT_EQ(cache.open(1).message(), CString());
  for (const char* name : {"a", "b"}) folder.write(name, "x");
  ASSERT_TRUE(cache.add(client, "a", "a"));
  for (int i = 0; i < 10001; ++i) cache.setAccessed("a");  // The index is to be written anew next.
  const fs::path index = folder.path() / "@index.dat";
  const std::uintmax_t before = fs::file_size(index);
  rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  const auto setRoom = [&](rlim_t bytes) {
    const rlimit room = {bytes, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &room);
  };
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setRoom(before + 5);
  EXPECT_TRUE(cache.release(client, "a", true));
  EXPECT_EQ(fs::file_size(index), before);
  setRoom(16);
  EXPECT_FALSE(cache.add(client, "b", "b"));
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(fs::file_size(index), before);
  for (int i = 0; i < 2; ++i) cache.saveRest();
  cache.setAccessed("a");  // Nothing is tried again at once.
  EXPECT_EQ(fs::file_size(index), before + 4 + 8 + 1 + 8);
  EXPECT_EQ(folder.names(), "@daemon.lck @index.dat @lockfile.lck b ");
}

TEST(VxcachedAttack, APipeAsLockFileHoldsNobodyUp) {
  TemporaryFolder folder;
  ASSERT_EQ(mkfifo((folder.path() / "@lockfile.lck").c_str(), 0600), 0);
  vxKilnBase::FileCache cache;
  EXPECT_EQ(cache.initialize(text(folder.path()), 0, 0).message(), CString());
  EXPECT_EQ(kilntest::runCacheProgram({"--stop", folder.path().string()}), 0);
}

}  // namespace
