#include <barrier>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <kilnbase/net/FileCache.h>
#include <vx/SysInfo.h>
#include <vx/Uuid.h>

#include "tests/support/Environment.h"
#include "tests/support/SocketPair.h"
#include "tests/tools/CacheDaemon.h"
#include "tools/vxcached/Cache.h"

namespace {

namespace fs = std::filesystem;
using kilntest::CacheClient;
using kilntest::CacheDaemon;
using kilntest::eventually;
using kilntest::portIn;
using kilntest::readFile;
using kilntest::runCacheProgram;
using kilntest::TemporaryFolder;
using kilntest::text;
using vxKilnBase::FileCache;
using vxString::CString;
using vxTCP::Socket;

std::string uuid() {
  return vxOS::Uuid::generate().asString().c_str();
}

// The files of entries in a folder.
std::size_t entryFiles(const fs::path& folder) {
  std::size_t count = 0;
  for (const auto& entry : fs::directory_iterator(folder))
    count += entry.path().filename().string().front() != '@';
  return count;
}

struct VxcachedTest : testing::Test {
  TemporaryFolder folder;
};

TEST_F(VxcachedTest, KeepsEntriesFromDaemonToDaemon) {
  std::int64_t before = 0, accessTime = 0;
  CString path;
  {
    CacheDaemon daemon(folder.path(), 0, 0);
    CacheClient& first = daemon.client();
    CacheClient second(portIn(folder.path()));
    EXPECT_FALSE(second.add(folder.path(), "early", "x"));
    EXPECT_NE(second.protocol.initialize("relative", 0, 0).code(), 0);
    EXPECT_EQ(second.protocol.initialize(text(folder.path()), 0, 0).code(), 0);
    EXPECT_TRUE(first.add(folder.path(), "a", "first"));
    EXPECT_TRUE(first.add(folder.path(), "b", "second"));
    EXPECT_TRUE(second.protocol.acquire("a", path, before));
    EXPECT_EQ(second.content("b"), "second");
    EXPECT_EQ(second.content("c"), "");
    EXPECT_FALSE(second.protocol.release("b", true));
    EXPECT_TRUE(first.protocol.release("b", true));
    EXPECT_EQ(first.content("b"), "");
    // The file of an entry that another client holds stays when the entry goes.
    EXPECT_TRUE(first.protocol.release("a", true));
    EXPECT_EQ(first.content("a"), "");
    EXPECT_EQ(readFile(path.c_str()), "first");
    EXPECT_TRUE(second.protocol.release("a", false));
    EXPECT_FALSE(fs::exists(path.c_str()));
    EXPECT_TRUE(first.add(folder.path(), "a", "third"));
  }
  CacheDaemon next(folder.path(), 0, 0);
  EXPECT_EQ(next.client().content("a"), "third");
  EXPECT_TRUE(next.client().protocol.acquire("a", path, accessTime));
  EXPECT_GE(accessTime, before);
  EXPECT_EQ(entryFiles(folder.path()), 2U);  // the refused one stays
}

TEST_F(VxcachedTest, ARemovedEntryStaysRemovedWhenTheDaemonIsKilled) {
  {
    CacheDaemon daemon(folder.path(), 0, 0);
    EXPECT_TRUE(daemon.client().add(folder.path(), "a", "x"));
    CacheClient second(portIn(folder.path()));
    EXPECT_EQ(second.protocol.initialize(text(folder.path()), 0, 0).code(), 0);
    CString path;
    std::int64_t accessTime = 0;
    EXPECT_TRUE(second.protocol.acquire("a", path, accessTime));
    EXPECT_TRUE(daemon.client().protocol.release("a", true));
  }
  CacheDaemon next(folder.path(), 0, 0);
  EXPECT_EQ(next.client().content("a"), "");
}

TEST_F(VxcachedTest, EndsWithoutClientsAndWhenTold) {
  CacheDaemon idle({"--idle-timeout", "0"});
  EXPECT_EQ(idle.client().protocol.initialize(text(folder.path()), 0, 0).code(), 0);
  EXPECT_TRUE(fs::exists(folder.path() / "@lockfile.lck"));
  EXPECT_TRUE(idle.client().add(folder.path(), "x", "first"));
  EXPECT_TRUE(idle.client().add(folder.path(), "y", ""));
  EXPECT_EQ(idle.client().content("x"), "first");
  idle.dropClient();
  EXPECT_EQ(idle.process().wait(), 0);
  EXPECT_FALSE(fs::exists(folder.path() / "@lockfile.lck"));

  CacheDaemon stopped(folder.path(), 7, 0);
  EXPECT_TRUE(stopped.client().add(folder.path(), "\xC3\x9B\xC2\x9B\x9B\x1B", ""));
  TemporaryFolder other;
  const std::string output = (other.path() / "list").string();
  EXPECT_EQ(runCacheProgram({"--list", folder.path().string()}, output), 0);
  EXPECT_EQ(readFile(output).find("files: 3 of 7, bytes: 5 of no limit"), 0U) << readFile(output);
  EXPECT_NE(readFile(output).find("  \xC3\x9B\\xC2\\x9B\\x9B\\x1B"), std::string::npos);
  EXPECT_LT(readFile(output).find("  y"), readFile(output).find("  x")) << readFile(output);
  EXPECT_EQ(stopped.client().content("x"), "first");
  EXPECT_EQ(runCacheProgram({"--stop", folder.path().string()}), 0);
  EXPECT_EQ(readFile(folder.path() / "@daemon.lck"), "");
  EXPECT_EQ(stopped.process().wait(), 0);
  EXPECT_EQ(stopped.client().content("x"), "");
  EXPECT_FALSE(stopped.client().isAlive());
  EXPECT_EQ(runCacheProgram({"--list", folder.path().string()}, output), 2);
  EXPECT_EQ(runCacheProgram({"--port", "0"}, output), 2);
  EXPECT_NE(folder.names().find("@daemon.lck @index.dat "), std::string::npos) << folder.names();
}

TEST_F(VxcachedTest, TakesOnlyFilesOfItsDirectory) {
  CacheDaemon daemon(folder.path(), 0, 0);
  TemporaryFolder other;
  fs::create_directory(folder.path() / "sub");
  const std::string outside = other.write(uuid(), "x").string();
  const std::string inside = folder.write("file", "x").string();
  folder.write("sub/file", "x");
  const std::string own = folder.path().string();
  const auto isAdded = [&](const std::string& path) {
    return daemon.client().protocol.add("key", CString(path.c_str()));
  };
  for (const std::string& path :
       {outside, own + "/../" + fs::path(outside).parent_path().filename().string() + "/x",
        own + "/sub/file", own + "/sub", own + "/", own + "/.", own + "/..", own, std::string(),
        std::string("file"), fs::relative(inside).string(), own + "/missing", own + "/@daemon.lck",
        own + "/@index.dat", own + "/@lockfile.lck", own + "/@new-1"}) {
    EXPECT_FALSE(isAdded(path)) << path;
  }
  EXPECT_FALSE(daemon.client().protocol.add("key", CString(std::string_view("a\0b", 3))));
  EXPECT_TRUE(isAdded(own + "//file"));
  EXPECT_EQ(daemon.client().content("key"), "x");
  EXPECT_FALSE(daemon.client().protocol.add("other", CString(inside.c_str())));
}

TEST_F(VxcachedTest, RefusesLengthsBeyondTheLimits) {
  CacheDaemon daemon(folder.path(), 0, 0);
  const auto isAdded = [&](std::size_t size) {
    return daemon.client().add(folder.path(), std::string(size, 'k'), "x");
  };
  EXPECT_FALSE(isAdded(0));
  EXPECT_TRUE(isAdded(1));
  EXPECT_TRUE(isAdded(65536));
  EXPECT_FALSE(isAdded(65537));
  EXPECT_EQ(daemon.client().content(std::string(65536, 'k')), "x");
  const CString longest(std::string_view(std::string(Socket::kMaxTextBytes, 'k')));
  EXPECT_FALSE(daemon.client().protocol.release(longest, false));
  CacheClient second(portIn(folder.path()));
  const CString longName(std::string(32769, 'k').c_str());
  EXPECT_STREQ(second.protocol.initialize(longName, 0, 0).message().c_str(),
               "the name of the folder is too long");
  EXPECT_TRUE(daemon.client().isAlive());

  CacheClient tooLong(portIn(folder.path()));
  const unsigned char request[] = {3, 0, 0, 0, 1, 0, 0, 4};  // 64 MiB + 1
  tooLong.socket().write(request, sizeof request);
  EXPECT_TRUE(tooLong.socket().waitForInput(kilntest::kLong));
  EXPECT_THROW(kilntest::readBytes(tooLong.socket(), 1), vxUtil::Error);
  EXPECT_EQ(daemon.client().content("k"), "x");
}

// Records what a client sends.
std::vector<std::string> requests(const fs::path& folder) {
  const auto number = [](std::uint64_t value, std::size_t bytes) {
    std::string result;
    for (; bytes > 0; --bytes, value >>= 8) result += static_cast<char>(value & 0xFF);
    return result;
  };
  const auto string = [&](const std::string& given) { return number(given.size(), 4) + given; };
  return {number(0, 4) + string(folder.string()) + number(0, 4) + number(0, 8),
          number(1, 4) + string("key"),
          number(2, 4) + string("key") + string((folder / "none").string()),
          number(3, 4) + string("key") + number(1, 4),
          number(4, 4) + string("key"),
          number(5, 4)};
}

TEST_F(VxcachedTest, OutlivesMessagesThatEndAnywhere) {
  CacheDaemon daemon(folder.path(), 0, 0);
  EXPECT_TRUE(daemon.client().add(folder.path(), "key", "content"));
  const auto sent = requests(folder.path());
  for (const std::string& request : sent) {
    for (std::size_t size = 0; size <= request.size(); ++size) {
      CacheClient cut(portIn(folder.path()));
      EXPECT_FALSE(cut.protocol.release("key", false));  // the daemon serves the client
      EXPECT_TRUE(cut.isAlive());
      cut.socket().write(request.data(), size);
      cut.socket().flush();
    }
  }
  // A client that stops in the middle keeps nobody waiting.
  CacheClient stuck(portIn(folder.path()));
  stuck.socket().write(sent[0].data(), 6);
  stuck.socket().flush();
  EXPECT_EQ(daemon.client().content("key"), "content");
  EXPECT_EQ(entryFiles(folder.path()), 1U);
  EXPECT_EQ(runCacheProgram({"--stop", folder.path().string()}), 0);
  EXPECT_EQ(daemon.process().wait(), 0);
}

TEST_F(VxcachedTest, KeepsWithinItsLimitsUnderLoad) {
  constexpr int kFiles = 8;
  CacheDaemon daemon(folder.path(), kFiles, 0);
  const int port = portIn(folder.path());
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      CacheClient client(port);
      EXPECT_EQ(client.protocol.initialize(text(folder.path()), kFiles, 0).code(), 0);
      for (int j = 0; j < 100 / KILNTEST_SHARE; ++j) {
        const std::string key = std::to_string(i) + "-" + std::to_string(j);
        EXPECT_TRUE(client.add(folder.path(), key, key));
        EXPECT_EQ(client.content(key), key);
        if (j > 0) client.protocol.release(CString(key.c_str()), false);
        EXPECT_LE(entryFiles(folder.path()), kFiles + 8U);  // four are written, four are held
      }
    });
  }
  for (std::thread& each : threads) each.join();
  EXPECT_EQ(entryFiles(folder.path()), static_cast<std::size_t>(kFiles));
  // A client that is gone holds nothing.
  EXPECT_TRUE(eventually([&] {
    daemon.client().protocol.initialize(text(folder.path()), 1, 0);
    return entryFiles(folder.path()) == 1;
  }));
}

// Each client starts a daemon, unless another client was faster.
TEST_F(VxcachedTest, OneDaemonServesAllWhoStartAtOnce) {
  constexpr int kClients = KILNTEST_SHARE > 1 ? 6 : 32;
  const CString directory = text(folder.path() / "made");
  std::barrier everybodyHasAdded(kClients);
  std::vector<std::thread> threads;
  for (int i = 0; i < kClients; ++i) {
    threads.emplace_back([&, i] {
      FileCache cache;
      EXPECT_EQ(cache.initialize(directory, 0, 0).message(), CString());
      const auto key = [](int number) { return CString::format("%d", number % kClients); };
      const CString path = cache.generatePath();
      std::ofstream(path.c_str()) << key(i).c_str();
      EXPECT_TRUE(cache.add(key(i), path));
      everybodyHasAdded.arrive_and_wait();
      const auto neighbour = cache.find(key(i + 1));
      ASSERT_TRUE(neighbour);
      EXPECT_EQ(readFile(neighbour->getPath().c_str()), key(i + 1).c_str());
    });
  }
  for (std::thread& each : threads) each.join();
  EXPECT_EQ(runCacheProgram({"--stop", directory.c_str()}), 0);
}

TEST_F(VxcachedTest, PutsItsLockFileBack) {
  CacheDaemon daemon(folder.path(), 0, 0);
  const fs::path lock = folder.path() / "@lockfile.lck";
  const int port = portIn(folder.path());
  for (const char* content : {"", "1\n", "no port"}) {
    std::ofstream(lock) << content;
    EXPECT_TRUE(eventually([&] { return portIn(folder.path()) == port; }));
  }
  fs::remove(lock);
  FileCache cache;  // starts a second daemon, which passes on to the first
  ASSERT_EQ(cache.initialize(text(folder.path()), 0, 0).message(), CString());
  EXPECT_EQ(portIn(folder.path()), port);
  EXPECT_TRUE(daemon.client().add(folder.path(), "a", "x"));
  const auto item = cache.find("a");
  ASSERT_TRUE(item);
  EXPECT_EQ(fs::path(item->getPath().c_str()).parent_path(), folder.path());
}

TEST_F(VxcachedTest, APassedOnClientMaySpellItsFolderAnew) {
  CacheDaemon daemon(folder.path(), 0, 0), passing(folder.path(), 0, 0);
  for (CacheDaemon* each : {&daemon, &passing}) {
    CacheClient& client = each->client();
    const fs::path spelled = folder.path() / "." / "";
    EXPECT_EQ(client.protocol.initialize(text(spelled), 0, 0).message(), CString());
    EXPECT_TRUE(client.add(spelled, "key", "content"));
    EXPECT_NE(client.protocol.initialize(text(folder.path().parent_path()), 0, 0).code(), 0);
    EXPECT_EQ(client.content("key"), "content");
  }
}

// The port of a dead daemon may be that of the daemon of another directory now.
TEST_F(VxcachedTest, ServesClientsThatAnOutdatedLockFileLeadsToAnotherDaemon) {
  TemporaryFolder other;
  CacheDaemon daemon(folder.path(), 0, 0);
  EXPECT_TRUE(daemon.client().add(folder.path(), "a", "here"));
  for (const std::string& stale : {std::to_string(portIn(folder.path())), std::string("1")}) {
    other.write("@lockfile.lck", stale);
    FileCache cache;
    ASSERT_EQ(cache.initialize(text(other.path()), 0, 0).message(), CString());
    EXPECT_FALSE(cache.find("a"));
    const CString path = cache.generatePath();
    std::ofstream(path.c_str()) << "there";
    EXPECT_TRUE(cache.add("b", path));
    EXPECT_NE(portIn(other.path()), portIn(folder.path()));
    EXPECT_EQ(runCacheProgram({"--stop", other.path().string()}), 0);
  }
  EXPECT_EQ(daemon.client().content("b"), "");
  EXPECT_EQ(entryFiles(other.path()), 1U);
}

TEST_F(VxcachedTest, ClearsAwayWhatNobodyNames) {
  using namespace std::chrono_literals;
  {
    CacheDaemon daemon(folder.path(), 0, 0);
    EXPECT_TRUE(daemon.client().add(folder.path(), "a", "x"));
  }
  const std::string unnamed = uuid(), temporary = "@new-1", foreign = "X" + uuid(), late = uuid();
  const auto writeOld = [this](const std::string& name) {
    fs::last_write_time(folder.write(name, "x"), fs::file_time_type::clock::now() - 25h);
  };
  const auto exists = [this](const std::string& name) { return fs::exists(folder.path() / name); };
  for (const std::string& name : {unnamed, temporary, foreign}) writeOld(name);
  const std::string fresh = uuid();
  folder.write(fresh, "x");
  std::this_thread::sleep_for(20ms);  // the step of the file system's clock
  vxcached::Log log;
  vxcached::Cache cache(log);
  bool isTaken = true;
  ASSERT_EQ(cache.lock(text(folder.path()), isTaken).message(), CString());
  ASSERT_EQ(cache.open(1).message(), CString());
  std::this_thread::sleep_for(20ms);
  writeOld(late);  // as a copy that keeps the time of its original
  const std::int64_t now = std::time(nullptr);
  cache.clearAway(now);
  EXPECT_FALSE(exists(unnamed));
  EXPECT_FALSE(exists(temporary));
  EXPECT_TRUE(exists(fresh));
  EXPECT_TRUE(exists(late));
  cache.clearAway(now + 86460);
  EXPECT_FALSE(exists(fresh));
  EXPECT_FALSE(exists(late));
  EXPECT_TRUE(exists(foreign));
  EXPECT_EQ(entryFiles(folder.path()), 2U);        // with that of the entry
  for (const std::string port : {"1\n", "2\n"}) {  // its own, and that of another daemon
    folder.write("@lockfile.lck", port);
    cache.retire();
    cache.keepPortFile();
    EXPECT_EQ(exists("@lockfile.lck"), port == "2\n") << port;
  }
}

TEST_F(VxcachedTest, CanBeStartedByHand) {
  TemporaryFolder other;
  const std::string output = (other.path() / "output").string();
  const kilntest::KeptEnvironment kept("MORLA_FILE_CACHE_MANUAL_START");
  kilntest::setEnvironment("MORLA_FILE_CACHE_MANUAL_START", "1");
  const std::string child = APP_getBinaryPath("cache_child").c_str();
  kilntest::ChildProcess client({child, folder.path().string()}, output);
  const std::string start = "Run: vxcached --port ";
  EXPECT_TRUE(eventually([&] { return readFile(output).find('\n') != std::string::npos; }));
  const std::string line = readFile(output);
  ASSERT_EQ(line.find(start), 0U) << line;
  const std::string port = line.substr(start.size(), line.find_first_of("\r\n") - start.size());
  kilntest::ChildProcess daemon({kilntest::cacheProgram(), "--port", port});
  EXPECT_EQ(client.wait(), 0);
}

}  // namespace
