#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <vx/Tcp.h>

#include "tests/support/SocketPair.h"

namespace {

using kilntest::kLong;
using kilntest::readBytes;
using kilntest::SocketPair;
using vxString::CString;
using vxTCP::Address;
using vxTCP::Server;
using vxTCP::Socket;
using vxUtil::Error;
using vxUtil::Interval;

const Interval kShort(0.05);

std::string pattern(std::size_t size) {
  std::string bytes(size, '\0');
  std::uint32_t state = 12345;
  for (char& byte : bytes) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return bytes;
}

TEST(Tcp, KeepsBytesAcrossPiecesOfAllSizes) {
  SocketPair pair;
  const std::string sent = pattern(1'000'000);
  std::thread writer([&] {
    for (std::size_t at = 0, size = 1; at < sent.size();
         at += size, size = size * 7 % 199'999 + 1) {
      size = std::min(size, sent.size() - at);
      EXPECT_EQ(pair.near->write(sent.data() + at, size).code(), 0);
    }
    EXPECT_EQ(pair.near->flush().code(), 0);
  });
  std::string received;
  for (std::size_t size = 1; received.size() < sent.size(); size = size * 5 % 180'001 + 1)
    received += readBytes(*pair.far, std::min(size, sent.size() - received.size()));
  writer.join();
  EXPECT_TRUE(received == sent);
}

TEST(Tcp, GathersSmallValuesUntilAnAnswerIsAwaited) {
  SocketPair pair;
  pair.near->write("ab", 2);
  pair.near->write("cd", 2);
  EXPECT_FALSE(pair.far->waitForInput(kShort));
  std::thread answer([&] {
    EXPECT_EQ(readBytes(*pair.far, 4), "abcd");
    pair.far->write("!", 1);
    pair.far->flush();
  });
  EXPECT_TRUE(pair.near->waitForInput(kLong));
  EXPECT_EQ(readBytes(*pair.near, 1), "!");
  answer.join();
}

TEST(Tcp, SendsWhatWasGatheredWhenItCloses) {
  SocketPair pair;
  pair.near->write("last", 4);
  pair.near.reset();
  EXPECT_EQ(readBytes(*pair.far, 4), "last");
  EXPECT_TRUE(pair.far->waitForInput(kLong));
  char more;
  EXPECT_EQ(pair.far->read(&more, 1).code(), vxTCP::kClosed);
}

TEST(Tcp, FramesTextsByALittleEndianLength) {
  SocketPair pair;
  const std::string binary("a\0b", 3);
  pair.near->write(CString(std::string_view(binary)));
  pair.near->write(CString());
  pair.near->flush();
  EXPECT_EQ(readBytes(*pair.far, 7), std::string("\3\0\0\0a\0b", 7));
  EXPECT_EQ(readBytes(*pair.far, 4), std::string(4, '\0'));

  pair.far->write("\3\0\0\0x\0y\0\0\0\0", 11);
  pair.far->flush();
  CString text = "before";
  EXPECT_EQ(pair.near->read(text).code(), 0);
  EXPECT_EQ(text.view(), std::string_view("x\0y", 3));
  EXPECT_EQ(pair.near->read(text).code(), 0);
  EXPECT_TRUE(text.isEmpty());
}

TEST(Tcp, TakesTextsUpToTheLimitOnly) {
  SocketPair pair;
  const std::string longest = pattern(Socket::kMaxTextBytes);
  std::thread writer([&] {
    pair.near->write(CString(std::string_view(longest)));
    pair.near->write("\1\0\0\4", 4);  // one byte more
    pair.near->flush();
  });
  CString text;
  EXPECT_EQ(pair.far->read(text).code(), 0);
  EXPECT_TRUE(text.view() == longest);
  EXPECT_EQ(pair.far->read(text).code(), vxTCP::kTooLong);
  EXPECT_TRUE(text.view() == longest);
  writer.join();
  EXPECT_EQ(pair.near->write(CString(std::string_view(longest + "!"))).code(), vxTCP::kTooLong);
}

TEST(Tcp, FailsForGoodAfterAFailure) {
  SocketPair pair;
  pair.far->write("abc", 3);
  pair.far.reset();
  char bytes[4];
  EXPECT_EQ(pair.near->read(bytes, 4).code(), vxTCP::kClosed);
  EXPECT_EQ(pair.near->read(bytes, 1).code(), vxTCP::kClosed);
  EXPECT_EQ(pair.near->write(bytes, 1).code(), vxTCP::kClosed);
  EXPECT_EQ(pair.near->flush().code(), vxTCP::kClosed);
  EXPECT_FALSE(pair.near->waitForInput(kLong));
}

TEST(Tcp, WritesToAVanishedPeerFailWithoutASignal) {
  SocketPair pair;
  pair.far.reset();
  const std::string bytes(100'000, 'x');
  Error error;
  for (int i = 0; i < 1000 && !error; ++i) error = pair.near->write(bytes.data(), bytes.size());
  EXPECT_NE(error.code(), 0);
}

TEST(Tcp, ThrowsInThrowingMode) {
  SocketPair pair;
  pair.near->setThrowMode(true);
  pair.near->setTimeout(kShort);
  char byte;
  try {
    pair.near->read(&byte, 1);
    FAIL() << "no exception";
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), vxTCP::kTimedOut);
  }
  EXPECT_THROW(pair.near->write("x", 1), Error);
  EXPECT_THROW(pair.near->write(CString("x")), Error);
}

TEST(Tcp, ASlowPeerDoesNotStretchAnExchange) {
  SocketPair pair;
  std::thread slow([&] {
    for (int i = 0; i < 200 && !pair.far->write("x", 1) && !pair.far->flush(); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
  });
  pair.near->limitExchange(Interval(0.1));
  char byte;
  int count = 0;
  while (!pair.near->read(&byte, 1)) ++count;
  EXPECT_LT(count, 200);
  EXPECT_EQ(pair.near->read(&byte, 1).code(), vxTCP::kTimedOut);
  slow.join();
}

TEST(Tcp, AStalledReaderEndsTheWrite) {
  SocketPair pair;
  pair.near->setTimeout(kShort);
  const std::string bytes(1 << 20, 'x');
  Error error;
  for (int i = 0; i < 1000 && !error; ++i) error = pair.near->write(bytes.data(), bytes.size());
  EXPECT_EQ(error.code(), vxTCP::kTimedOut);
}

TEST(Tcp, InterruptEndsAWaitOfAnotherThread) {
  SocketPair pair;
  pair.near->limitExchange(Interval(0.005));
  pair.near->limitExchange();  // no limit
  std::thread other([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    pair.near->interrupt();
  });
  char byte;
  EXPECT_EQ(pair.near->read(&byte, 1).code(), vxTCP::kInterrupted);
  other.join();
}

TEST(Tcp, InterruptEndsReadsOfWhatHasArrived) {
  SocketPair pair;
  pair.far->write("ab", 2);
  pair.far->flush();
  EXPECT_EQ(readBytes(*pair.near, 1), "a");
  pair.near->interrupt();
  char byte;
  EXPECT_EQ(pair.near->read(&byte, 1).code(), vxTCP::kInterrupted);
  EXPECT_EQ(pair.near->write("x", 1).code(), vxTCP::kInterrupted);
}

TEST(Tcp, ANewConnectionHasNothingOfTheOneBefore) {
  Server server(Server::kAnyPort, 2);
  server.setLoopbackOnly();
  ASSERT_EQ(server.listen().code(), 0);
  Socket near(Address::localhost(server.getPort()));
  std::unique_ptr<Socket> first, second;
  ASSERT_EQ(near.connect(kLong).code(), 0);
  ASSERT_EQ(server.accept(first, kLong).code(), 0);
  first->write("old", 3);
  first->flush();
  EXPECT_EQ(readBytes(near, 1), "o");
  near.write("stale", 5);
  ASSERT_EQ(near.connect(kLong).code(), 0);
  ASSERT_EQ(server.accept(second, kLong).code(), 0);
  second->write("new", 3);
  second->flush();
  EXPECT_EQ(readBytes(near, 3), "new");
  near.write("fresh", 5);
  near.flush();
  EXPECT_EQ(readBytes(*second, 5), "fresh");
}

TEST(Tcp, AnswersOfTheServer) {
  Server server(Server::kAnyPort, 1);
  std::unique_ptr<Socket> socket;
  EXPECT_NE(server.accept(socket, kShort).code(), 0) << "does not listen yet";
  EXPECT_EQ(server.getPort(), 0);
  server.setLoopbackOnly();
  ASSERT_EQ(server.listen().code(), 0);
  for (const Address& nobody :
       {Address("127.0.0.2", server.getPort()), Address("127.0.0.1", 65536 + server.getPort())})
    EXPECT_NE(Socket(nobody).connect(kLong).code(), 0) << nobody.host().c_str();
  const Error error = server.accept(socket, kShort);
  EXPECT_EQ(error.code(), 0);
  EXPECT_EQ(socket, nullptr);

  Server second(server.getPort(), 1);
  second.setLoopbackOnly();
  EXPECT_NE(second.listen().code(), 0) << "the port is taken";
}

TEST(Tcp, APortCanBeTakenAgainAtOnce) {
  int port;
  {
    Server server(Server::kAnyPort, 1);
    ASSERT_EQ(server.listen().code(), 0);
    port = server.getPort();
    Socket client(Address("localhost", port));
    ASSERT_EQ(client.connect(kLong).code(), 0);
    std::unique_ptr<Socket> socket;
    ASSERT_EQ(server.accept(socket, kLong).code(), 0);
    socket.reset();  // the end that closes first keeps the port in the system's memory
  }
  Server again(port, 1);
  EXPECT_EQ(again.listen().code(), 0);
}

TEST(Tcp, ConnectsToNobody) {
  for (const Address& address : {Address("127.0.0.1", 0), Address("127.0.0.1", 65536),
                                 Address("127.0.0.1", -1), Address("no.such.host.invalid", 80)}) {
    Socket socket(address);
    EXPECT_NE(socket.connect(kLong).code(), 0) << address.host().c_str() << address.port();
    EXPECT_EQ(socket.write("x", 1).message(), CString("not connected"));
  }
}

TEST(Tcp, KnowsThatThePeerIsOurs) {
  SocketPair pair;
  EXPECT_TRUE(pair.near->peerIsSameUser());
  EXPECT_TRUE(pair.far->peerIsSameUser());

  Server everywhere(Server::kAnyPort, 1);  // a socket for both kinds of addresses
  ASSERT_EQ(everywhere.listen().code(), 0);
  Socket near(Address::localhost(everywhere.getPort()));
  ASSERT_EQ(near.connect(kLong).code(), 0);
  std::unique_ptr<Socket> far;
  ASSERT_EQ(everywhere.accept(far, kLong).code(), 0);
  EXPECT_TRUE(near.peerIsSameUser());
  EXPECT_TRUE(far->peerIsSameUser());
}

}  // namespace
