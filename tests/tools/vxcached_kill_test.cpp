#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/CacheDaemon.h"

namespace {

using kilntest::CacheClient;
using kilntest::CacheDaemon;
using kilntest::portIn;
using kilntest::readFile;
using kilntest::TemporaryFolder;
using kilntest::text;
using vxString::CString;

std::int64_t now() {
  return static_cast<std::int64_t>(std::time(nullptr));
}

// What a client was told about a key of its own. A call that the daemon did not live to answer has
// happened or not, so that there may be two truths.
struct Known {
  std::set<std::string> contents = {""};  // "": no entry
  std::int64_t earliest = 0;              // of the last access
};

// A client that uses keys of its own, until the daemon is gone.
class Worker {
 public:
  Worker(std::filesystem::path folder, int number)
      : folder_(std::move(folder)), number_(number), random_(static_cast<unsigned>(number)) {}

  void run(CacheClient& client) {
    while (client.isAlive()) {
      const std::string key = std::to_string(number_) + "-" + std::to_string(random_() % 8);
      Known& known = keys_[key];
      switch (random_() % 8) {
        case 0:
          remove(client, key, known);
          break;
        case 1:
        case 2:
          access(client, key, known);
          break;
        case 3:
          expectKnown(client.content(key), client, key);
          break;
        default:
          add(client, key, known);
      }
    }
  }

  // Asks the next daemon about everything.
  void check(CacheClient& client) {
    for (auto& [key, known] : keys_) {
      CString path;
      std::int64_t accessTime = 0;
      const CString name(key.c_str());
      const bool isFound = client.protocol.acquire(name, path, accessTime);
      const std::string content = isFound ? readFile(path.c_str()) : "";
      expectKnown(content, client, key);
      EXPECT_TRUE(!isFound || accessTime >= known.earliest) << key;
      client.protocol.release(name, false);
      known.contents = {content};
    }
  }

  std::size_t accepted() const { return accepted_; }

 private:
  void expectKnown(const std::string& content, CacheClient& client, const std::string& key) {
    if (!client.isAlive()) return;
    EXPECT_TRUE(keys_[key].contents.contains(content)) << key << " " << content;
  }
  void add(CacheClient& client, const std::string& key, Known& known) {
    const std::string content =
        key + ":" + std::to_string(++lastContent_) + std::string(random_() % 3000, '.');
    const std::int64_t start = now();
    if (client.add(folder_, key, content)) {
      known = {{content}, start};
      ++accepted_;
      client.protocol.release(CString(key.c_str()), false);
    } else {
      EXPECT_FALSE(client.isAlive()) << key;
      known.contents.insert(content);
    }
  }
  void remove(CacheClient& client, const std::string& key, Known& known) {
    CString path;
    std::int64_t accessTime = 0;
    const CString name(key.c_str());
    if (!client.protocol.acquire(name, path, accessTime)) return;
    client.protocol.release(name, true);
    if (client.isAlive())
      known.contents = {""};
    else
      known.contents.insert("");
  }
  void access(CacheClient& client, const std::string& key, Known& known) {
    const std::int64_t start = now();
    client.protocol.setAccessed(CString(key.c_str()));
    if (client.isAlive()) known.earliest = start;
  }

  std::filesystem::path folder_;
  int number_;
  std::mt19937 random_;
  std::map<std::string, Known> keys_;
  int lastContent_ = 0;
  std::size_t accepted_ = 0;
};

TEST(VxcachedKill, LosesNothingThatWasAnswered) {
  const int kills = (std::getenv("KILNTEST_LONG") != nullptr ? 2000 : 200) / KILNTEST_SHARE;
  TemporaryFolder folder;
  std::vector<Worker> workers;
  for (int i = 0; i < 3; ++i) workers.emplace_back(folder.path(), i);
  std::mt19937 random(1);
  for (int kill = 0; kill < kills && !testing::Test::HasFailure(); ++kill) {
    CacheDaemon daemon(folder.path(), 0, 0);
    for (Worker& each : workers) each.check(daemon.client());
    std::vector<std::thread> threads;
    for (Worker& each : workers) {
      const auto client = std::make_shared<CacheClient>(portIn(folder.path()));
      ASSERT_EQ(client->protocol.initialize(text(folder.path()), 0, 0).code(), 0);
      threads.emplace_back([&each, client] { each.run(*client); });
    }
    std::this_thread::sleep_for(
        std::chrono::microseconds((1000 + random() % 20000) * KILNTEST_SHARE));
    daemon.process().kill();
    for (std::thread& each : threads) each.join();
  }
  for (const Worker& each : workers) EXPECT_GT(each.accepted(), static_cast<std::size_t>(kills));
}

}  // namespace
