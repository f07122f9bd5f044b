#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <kilnbase/net/FileCacheProtocol.h>

#include "tests/support/SocketPair.h"

namespace {

using kilntest::readBytes;
using kilntest::SocketPair;
using vxKilnBase::FileCacheProtocolClient;
using vxKilnBase::FileCacheProtocolServer;
using vxString::CString;
using vxUtil::Error;

constexpr std::int64_t kTime = 0x0102030405060708;

// Notes the calls and gives fixed answers.
class Daemon : public FileCacheProtocolServer {
 public:
  Error initialize(const CString& directory, int n, std::int64_t m) override {
    note("initialize %s %d %lld", directory.c_str(), n, static_cast<long long>(m));
    return refuses ? Error(-7, "no") : Error();
  }
  bool acquire(const CString& key, CString& path, std::int64_t& accessTime) override {
    note("acquire %s", key.c_str());
    if (refuses) return false;
    path = "p";
    accessTime = kTime;
    return true;
  }
  bool add(const CString& key, const CString& path) override {
    note("add %s %s", key.c_str(), path.c_str());
    return !refuses;
  }
  bool release(const CString& key, bool remove) override {
    note("release %s %d", key.c_str(), remove);
    return !refuses;
  }
  void setAccessed(const CString& key) override { note("setAccessed %s", key.c_str()); }

  std::string calls;
  bool refuses = false;

 private:
  template <class... Arguments>
  void note(const char* format, Arguments... arguments) {
    calls = CString::format(format, arguments...).c_str();
  }
};

std::string bytes(std::initializer_list<int> values) {
  return {values.begin(), values.end()};
}

void send(vxTCP::Socket& socket, const std::string& sent) {
  EXPECT_EQ(socket.write(sent.data(), sent.size()).code(), 0);
  EXPECT_EQ(socket.flush().code(), 0);
}

// One exchange: the client's call, its bytes, the daemon's call, and the daemon's bytes.
struct Exchange {
  std::function<std::string(FileCacheProtocolClient&)> call;
  std::string request;
  std::string daemonCall;
  std::string answer;
  std::string result;
  bool refuses = false;
};

std::string text(const Error& error) {
  return CString::format("%d %s", error.code(), error.message().c_str()).c_str();
}

std::vector<Exchange> exchanges() {
  const auto initialize = [](auto& client) { return text(client.initialize("d", -2, -3)); };
  const auto acquire = [](auto& client) {
    CString path = "before";
    std::int64_t time = -1;
    const bool found = client.acquire("k", path, time);
    return std::string(found ? "yes " : "no ") + path.c_str() + " " + std::to_string(time);
  };
  const auto add = [](auto& client) { return client.add("k", "pq") ? "yes" : "no"; };
  const auto release = [](auto& client) { return client.release("k", true) ? "yes" : "no"; };
  const auto setAccessed = [](auto& client) {
    client.setAccessed("k");
    return "";
  };
  const std::string initializeRequest =
      bytes({0, 0, 0, 0, 1, 0, 0, 0, 'd', -2, -1, -1, -1, -3, -1, -1, -1, -1, -1, -1, -1});
  const std::string acquireRequest = bytes({1, 0, 0, 0, 1, 0, 0, 0, 'k'});
  return {
      {initialize, initializeRequest, "initialize d -2 -3", std::string(8, '\0'), "0 "},
      {initialize, initializeRequest, "initialize d -2 -3",
       bytes({-7, -1, -1, -1, 2, 0, 0, 0, 'n', 'o'}), "-7 no", true},
      {acquire, acquireRequest, "acquire k",
       bytes({1, 0, 0, 0, 'p', 8, 7, 6, 5, 4, 3, 2, 1, 1, 0, 0, 0}),
       "yes p " + std::to_string(kTime)},
      {acquire, acquireRequest, "acquire k", std::string(16, '\0'), "no  0", true},
      {add, bytes({2, 0, 0, 0, 1, 0, 0, 0, 'k', 2, 0, 0, 0, 'p', 'q'}), "add k pq",
       bytes({1, 0, 0, 0}), "yes"},
      {release, bytes({3, 0, 0, 0, 1, 0, 0, 0, 'k', 1, 0, 0, 0}), "release k 1",
       bytes({0, 0, 0, 0}), "no", true},
      {setAccessed, bytes({4, 0, 0, 0, 1, 0, 0, 0, 'k'}), "setAccessed k", std::string(4, '\0'),
       ""},
  };
}

TEST(FileCacheProtocol, ClientSendsAndReadsTheseBytes) {
  for (const Exchange& exchange : exchanges()) {
    SocketPair pair;
    FileCacheProtocolClient client;
    client.setSocket(*pair.near);
    send(*pair.far, exchange.answer);
    EXPECT_EQ(exchange.call(client), exchange.result) << exchange.daemonCall;
    EXPECT_EQ(readBytes(*pair.far, exchange.request.size()), exchange.request)
        << exchange.daemonCall;
  }
}

TEST(FileCacheProtocol, DaemonReadsAndAnswersTheseBytes) {
  for (const Exchange& exchange : exchanges()) {
    SocketPair pair;
    Daemon daemon;
    daemon.refuses = exchange.refuses;
    daemon.setSocket(*pair.near);
    send(*pair.far, exchange.request);
    daemon.readRequest();
    EXPECT_EQ(daemon.calls, exchange.daemonCall);
    EXPECT_EQ(readBytes(*pair.far, exchange.answer.size()), exchange.answer) << exchange.daemonCall;
  }
}

TEST(FileCacheProtocol, DaemonDoesNothingForARequestThatIsCutOff) {
  for (const Exchange& exchange : exchanges()) {
    for (std::size_t size = 0; size < exchange.request.size(); ++size) {
      SocketPair pair;
      Daemon daemon;
      daemon.setSocket(*pair.near);
      pair.far->write(exchange.request.data(), size);
      pair.far.reset();
      EXPECT_THROW(daemon.readRequest(), Error) << exchange.daemonCall << " " << size;
      EXPECT_EQ(daemon.calls, "");
    }
  }
}

TEST(FileCacheProtocol, AnAnswerThatIsCutOffFailsTheClientForGood) {
  for (const Exchange& exchange : exchanges()) {
    for (std::size_t size = 0; size < exchange.answer.size(); ++size) {
      SocketPair pair;
      FileCacheProtocolClient client;
      client.setSocket(*pair.near);
      pair.far->write(exchange.answer.data(), size);
      pair.far.reset();
      exchange.call(client);
      CString path;
      std::int64_t time;
      EXPECT_FALSE(client.acquire("k", path, time)) << exchange.daemonCall << " " << size;
      EXPECT_FALSE(client.add("k", "p"));
      EXPECT_FALSE(client.release("k", false));
      EXPECT_NE(client.initialize("d", 1, 1).code(), 0);
    }
  }
}

TEST(FileCacheProtocol, AnUnknownRequestIsPassedOver) {
  SocketPair pair;
  Daemon daemon;
  daemon.setSocket(*pair.near);
  for (const int code : {5, -1, std::numeric_limits<int>::max()}) pair.far->write(&code, 4);
  const std::string next = exchanges().back().request;
  send(*pair.far, next);
  for (int i = 0; i < 3; ++i) {
    daemon.readRequest();
    EXPECT_EQ(daemon.calls, "");
  }
  daemon.readRequest();
  EXPECT_EQ(daemon.calls, "setAccessed k");
}

TEST(FileCacheProtocol, AnyNumberButZeroIsTrue) {
  for (const int value : {1, 2, -1, 0x01000000}) {
    SocketPair pair;
    FileCacheProtocolClient client;
    client.setSocket(*pair.near);
    pair.far->write(&value, 4);
    pair.far->flush();
    EXPECT_TRUE(client.release("k", false)) << value;
  }
}

TEST(FileCacheProtocol, ACodeOfZeroIsNoErrorWhateverTheMessage) {
  SocketPair pair;
  FileCacheProtocolClient client;
  client.setSocket(*pair.near);
  const std::string answer = bytes({0, 0, 0, 0, 2, 0, 0, 0, 'n', 'o'});
  send(*pair.far, answer);
  EXPECT_EQ(text(client.initialize("d", 0, 0)), "0 ");
}

TEST(FileCacheProtocol, ADaemonThatDoesNotAnswerIsGivenUp) {
  SocketPair pair;
  FileCacheProtocolClient client;
  client.setSocket(*pair.near);
  pair.near->setTimeout({});
  client.setLimit(vxUtil::Interval(0.05));
  EXPECT_EQ(client.initialize("d", 0, 0).code(), vxTCP::kTimedOut);
}

TEST(FileCacheProtocol, LengthsBeyondTheLimitEndTheConnection) {
  for (const std::string& length : {bytes({1, 0, 0, 4}), bytes({-1, -1, -1, -1})}) {
    SocketPair pair;
    Daemon daemon;
    daemon.setSocket(*pair.near);
    const std::string request = bytes({4, 0, 0, 0}) + length + "abcd";
    send(*pair.far, request);
    try {
      daemon.readRequest();
      FAIL() << "no exception";
    } catch (const Error& error) {
      EXPECT_EQ(error.code(), vxTCP::kTooLong);
    }
    EXPECT_EQ(daemon.calls, "");
  }
}

TEST(FileCacheProtocol, WithoutAConnectionNothingIsFound) {
  FileCacheProtocolClient client;
  CString path;
  std::int64_t time;
  EXPECT_NE(client.initialize("d", 1, 1).code(), 0);
  EXPECT_FALSE(client.acquire("k", path, time));
  client.setAccessed("k");
}

}  // namespace
