#include "tests/tools/CacheDaemon.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

#include <vx/SysInfo.h>
#include <vx/Uuid.h>

#include "tests/support/SocketPair.h"

namespace kilntest {

using vxString::CString;
using vxTCP::Server;
using vxTCP::Socket;

namespace {

std::unique_ptr<Socket> connected(int port) {
  auto socket = std::make_unique<Socket>(vxTCP::Address::localhost(port));
  EXPECT_EQ(socket->connect(kLong).code(), 0);
  return socket;
}

}  // namespace

std::string cacheProgram() {
  return APP_getBinaryPath("vxcached").c_str();
}

int portIn(const std::filesystem::path& folder) {
  return std::atoi(readFile(folder / "@lockfile.lck").c_str());
}

CString text(const std::filesystem::path& path) {
  return CString(path.string().c_str());
}

int runCacheProgram(const std::vector<std::string>& arguments, const std::string& output) {
  std::vector<std::string> command = {cacheProgram()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return ChildProcess(command, output).wait();
}

CacheClient::CacheClient(int port) : CacheClient(connected(port)) {}

bool CacheClient::isAlive() {
  try {
    socket_->flush();
    return true;
  } catch (const vxUtil::Error&) {
    return false;
  }
}

bool CacheClient::add(const std::filesystem::path& folder, const std::string& key,
                      const std::string& content) {
  const auto path = folder / vxOS::Uuid::generate().asString().c_str();
  std::ofstream(path, std::ios::binary) << content;
  return protocol.add(CString(std::string_view(key)), text(path));
}

std::string CacheClient::content(const std::string& key) {
  const CString name{std::string_view(key)};
  CString path;
  std::int64_t accessTime = 0;
  if (!protocol.acquire(name, path, accessTime)) return "";
  std::string found = readFile(path.c_str());
  protocol.release(name, false);
  return found;
}

CacheDaemon::CacheDaemon(const std::vector<std::string>& options) {
  Server server(Server::kAnyPort, 1);
  server.setLoopbackOnly();
  EXPECT_EQ(server.listen().code(), 0);
  std::vector<std::string> command = {cacheProgram(), "--port", std::to_string(server.getPort())};
  command.insert(command.end(), options.begin(), options.end());
  process_ = std::make_unique<ChildProcess>(command);
  std::unique_ptr<Socket> socket;
  EXPECT_EQ(server.accept(socket, kLong).code(), 0);
  client_ = std::make_unique<CacheClient>(std::move(socket));
}

CacheDaemon::CacheDaemon(const std::filesystem::path& folder, int n, std::int64_t m)
    : CacheDaemon() {
  EXPECT_EQ(client_->protocol.initialize(text(folder), n, m).message(), CString());
}

}  // namespace kilntest
