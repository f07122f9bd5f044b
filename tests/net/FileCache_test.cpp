#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <kilnbase/net/FileCache.h>
#include <kilnbase/net/FileCacheProtocol.h>
#include <vx/SysInfo.h>

#include "tests/support/SocketPair.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using kilntest::kLong;
using kilntest::TemporaryFolder;
using vxKilnBase::FileCache;
using vxKilnBase::FileCacheItem;
using vxString::CString;
using vxUtil::Error;

// A daemon that knows the key "known" and refuses the key "bad". It serves one client.
class Daemon : vxKilnBase::FileCacheProtocolServer {
 public:
  Daemon() {
    server_.setLoopbackOnly();
    EXPECT_EQ(server_.listen().code(), 0);
  }
  ~Daemon() override {
    if (thread_.joinable()) thread_.join();
  }

  int port() const { return server_.getPort(); }
  void start() {
    thread_ = std::thread([this] {
      server_.accept(socket_, kLong);
      if (socket_) serve();
    });
  }
  std::vector<std::string> takeCalls() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
  }

  bool refusesToStart = false;

 private:
  void serve() {
    setSocket(*socket_);
    try {
      for (;;) readRequest();
    } catch (const Error&) {
      socket_.reset();
    }
  }
  void note(const CString& call) {
    const std::lock_guard lock(mutex_);
    calls_.emplace_back(call.c_str());
  }
  Error initialize(const CString&, int n, std::int64_t m) override {
    note(CString::format("initialize %d %lld", n, static_cast<long long>(m)));
    return refusesToStart ? Error(3, "no room") : Error();
  }
  bool acquire(const CString& key, CString& path, std::int64_t& accessTime) override {
    note("acquire " + key);
    path = "/cache/known";
    accessTime = 77;
    return key == CString("known");
  }
  bool add(const CString& key, const CString& path) override {
    note("add " + key + " " + path);
    return key != CString("bad");
  }
  bool release(const CString& key, bool remove) override {
    note("release " + key + (remove ? " remove" : ""));
    return true;
  }
  void setAccessed(const CString& key) override { note("setAccessed " + key); }

  vxTCP::Server server_{vxTCP::Server::kAnyPort, 1};
  std::unique_ptr<vxTCP::Socket> socket_;
  std::thread thread_;
  std::mutex mutex_;
  std::vector<std::string> calls_;
};

using Calls = std::vector<std::string>;

class FileCacheTest : public testing::Test {
 protected:
  std::filesystem::path lockFile() const { return folder_.path() / "@lockfile.lck"; }
  CString directory() const { return folder_.path().string().c_str(); }
  void writeLockFile(const std::string& text) const { std::ofstream(lockFile()) << text; }
  void connect(FileCache& cache) {
    writeLockFile(std::to_string(daemon_.port()) + "\n");
    daemon_.start();
    ASSERT_EQ(cache.initialize(directory(), 5, 1'000'000'000'000).code(), 0);
    ASSERT_EQ(daemon_.takeCalls(), Calls{"initialize 5 1000000000000"});
  }

  TemporaryFolder folder_;
  Daemon daemon_;
};

TEST_F(FileCacheTest, HoldsItemsAndReleasesThemOnce) {
  FileCache cache;
  connect(cache);
  auto known = cache.find("known");
  ASSERT_TRUE(known);
  EXPECT_EQ(known->getKey(), CString("known"));
  EXPECT_EQ(known->getPath(), CString("/cache/known"));
  EXPECT_EQ(known->getAccessTime(), 77);
  EXPECT_EQ(cache.find("known"), known);
  EXPECT_FALSE(cache.find("unknown"));
  EXPECT_EQ(daemon_.takeCalls(), (Calls{"acquire known", "acquire unknown"}));

  cache.setAccessed(known);
  EXPECT_GT(known->getAccessTime(), 77);
  auto second = known;
  cache.remove(std::move(known));
  EXPECT_EQ(daemon_.takeCalls(), Calls{"setAccessed known"});
  second = nullptr;
  EXPECT_EQ(daemon_.takeCalls(), Calls{"release known remove"});
  cache.find("known");
  EXPECT_EQ(daemon_.takeCalls(), (Calls{"acquire known", "release known"}));
}

TEST_F(FileCacheTest, AddReplacesTheItemThatFindKnows) {
  FileCache cache;
  connect(cache);
  EXPECT_FALSE(cache.add("bad", "p"));
  auto older = cache.add("key", "p");
  auto newer = cache.add("key", "q");
  EXPECT_EQ(cache.find("key"), newer);
  EXPECT_EQ(daemon_.takeCalls(), (Calls{"add bad p", "add key p", "add key q"}));
  older = nullptr;
  EXPECT_FALSE(cache.find("key"));
  EXPECT_EQ(daemon_.takeCalls(), (Calls{"release key", "acquire key"}));
  EXPECT_EQ(newer->getPath(), CString("q"));
  EXPECT_GT(newer->getAccessTime(), 77);
}

TEST_F(FileCacheTest, ItemsOutliveTheCacheSilently) {
  vx::Reference<FileCacheItem> item;
  {
    FileCache cache;
    connect(cache);
    item = cache.find("known");
  }
  EXPECT_EQ(item->getPath(), CString("/cache/known"));
  daemon_.takeCalls();
  item = nullptr;
  EXPECT_EQ(daemon_.takeCalls(), Calls{});
}

TEST_F(FileCacheTest, CopiesAreHandlesOnTheSameCache) {
  FileCache survivor;
  {
    FileCache cache;
    connect(cache);
    FileCache copy = cache;
    EXPECT_TRUE(copy.find("known"));
    survivor = cache;
    const FileCache* self = &survivor;
    survivor = *self;
    EXPECT_TRUE(survivor.find("known"));
    FileCache owner = std::move(cache);
    owner = copy;  // of itself
    owner = std::move(copy);
    EXPECT_TRUE(owner.find("known"));
  }
  EXPECT_FALSE(survivor.find("known"));
  EXPECT_FALSE(survivor.add("key", "p"));
  EXPECT_NE(survivor.initialize(directory(), 1, 1).code(), 0);
}

TEST_F(FileCacheTest, GeneratesPathsInTheDirectory) {
  FileCache cache;
  connect(cache);
  const CString path = cache.generatePath();
  EXPECT_EQ(std::filesystem::path(path.c_str()).parent_path(), folder_.path());
  EXPECT_NE(path, cache.generatePath());
  EXPECT_FALSE(std::filesystem::exists(path.c_str()));
  EXPECT_EQ(daemon_.takeCalls(), Calls{});
}

TEST_F(FileCacheTest, FindsNothingUntilItIsInitialized) {
  FileCache cache;
  EXPECT_FALSE(cache.find("known"));
  EXPECT_FALSE(cache.add("key", "p"));
  cache.setAccessed(nullptr);
  cache.remove(nullptr);
  daemon_.refusesToStart = true;
  writeLockFile(std::to_string(daemon_.port()));
  daemon_.start();
  const Error error = cache.initialize(directory(), 0, 0);
  EXPECT_EQ(error.code(), 3);
  EXPECT_EQ(error.message(), CString("no room"));
  EXPECT_FALSE(cache.find("known"));
}

// Without a daemon at the port of the lock file the cache starts one.
TEST_F(FileCacheTest, AStaleLockFileIsDeletedAndADaemonStarted) {
  int freePort;
  {
    vxTCP::Server server(vxTCP::Server::kAnyPort, 1);
    ASSERT_EQ(server.listen().code(), 0);
    freePort = server.getPort();
  }
  APP_setBinaryFolder(directory());  // there is no program there
  for (const std::string& text :
       {std::string(), std::string("no port"), std::to_string(freePort)}) {
    writeLockFile(text);
    FileCache cache;
    EXPECT_NE(cache.initialize(directory(), 1, 1).code(), 0) << text;
    EXPECT_FALSE(std::filesystem::exists(lockFile())) << text;
  }
  APP_setBinaryFolder("");
}

}  // namespace
