#include "tests/support/SocketPair.h"

#include <gtest/gtest.h>

namespace kilntest {

using vxTCP::Server;
using vxTCP::Socket;

SocketPair::SocketPair() {
  Server server(Server::kAnyPort, 1);
  server.setLoopbackOnly();
  EXPECT_EQ(server.listen().code(), 0);
  near = std::make_unique<Socket>(vxTCP::Address::localhost(server.getPort()));
  EXPECT_EQ(near->connect(kLong).code(), 0);
  EXPECT_EQ(server.accept(far, kLong).code(), 0);
  near->setTimeout(kLong);
  far->setTimeout(kLong);
}

std::string readBytes(Socket& socket, std::size_t size) {
  std::string bytes(size, '?');
  EXPECT_EQ(socket.read(bytes.data(), size).code(), 0);
  return bytes;
}

}  // namespace kilntest
