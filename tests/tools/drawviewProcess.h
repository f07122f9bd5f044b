// A drawview that runs as a program of its own.
#pragma once

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

#include <kilnbase/net/KilnDebugDrawProtocol.h>
#include <vx/Tcp.h>

namespace kilntest {

// A port on which nobody listens.
inline int freePort() {
  vxTCP::Server server(vxTCP::Server::kAnyPort, 1);
  server.setLoopbackOnly();
  EXPECT_EQ(server.listen().code(), 0);
  return server.getPort();
}

// Connects to a program that has just been started.
inline bool connectsSoon(vxKilnBase::KilnDebugDrawProtocol& sender, int port) {
  for (int i = 0; i < 2000; ++i) {
    if (sender.connect("127.0.0.1", port)) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

}  // namespace kilntest
