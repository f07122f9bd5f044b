// The program vxcached and its clients, for tests.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <kilnbase/net/FileCacheProtocol.h>
#include <vx/Tcp.h>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace kilntest {

// One connection with a daemon.
class CacheClient {
 public:
  explicit CacheClient(std::unique_ptr<vxTCP::Socket> socket) : socket_(std::move(socket)) {
    protocol.setSocket(*socket_);
  }
  // A client of the daemon at the port; its connection must stand.
  explicit CacheClient(int port);

  // Whether the connection has not failed yet.
  bool isAlive();
  vxTCP::Socket& socket() { return *socket_; }
  // Writes a file with a new name and adds it.
  bool add(const std::filesystem::path& folder, const std::string& key, const std::string& content);
  // The content of the key's file, "" when there is none; the entry is released.
  std::string content(const std::string& key);

  vxKilnBase::FileCacheProtocolClient protocol;

 private:
  std::unique_ptr<vxTCP::Socket> socket_;
};

// A running daemon with its first client.
class CacheDaemon {
 public:
  // Starts the program; it is killed at the end.
  explicit CacheDaemon(const std::vector<std::string>& options = {});
  // Starts it and initializes its first client.
  CacheDaemon(const std::filesystem::path& folder, int n, std::int64_t m);

  ChildProcess& process() { return *process_; }
  CacheClient& client() { return *client_; }
  void dropClient() { client_.reset(); }

 private:
  std::unique_ptr<ChildProcess> process_;
  std::unique_ptr<CacheClient> client_;
};

std::string cacheProgram();
// The port in the lock file of the directory; 0 when there is none.
int portIn(const std::filesystem::path& folder);
vxString::CString text(const std::filesystem::path& path);
// Runs the program to its end: its exit code.
int runCacheProgram(const std::vector<std::string>& arguments, const std::string& output = "");
// Waits until the condition holds; false when that takes too long.
template <class Condition>
bool eventually(Condition condition);

}  // namespace kilntest

#include <chrono>
#include <thread>

template <class Condition>
bool kilntest::eventually(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}
