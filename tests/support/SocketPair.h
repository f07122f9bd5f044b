// Two ends of a TCP connection.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <vx/Error.h>
#include <vx/Tcp.h>

namespace kilntest {

// Long enough for every machine; a test that waits so long has failed.
inline const vxUtil::Interval kLong(20.0);

struct SocketPair {
  SocketPair();

  std::unique_ptr<vxTCP::Socket> near, far;
};

std::string readBytes(vxTCP::Socket& socket, std::size_t size);

}  // namespace kilntest
