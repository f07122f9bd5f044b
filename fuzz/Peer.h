// A connection whose other end has sent the given bytes and is gone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include <vx/Tcp.h>

namespace fuzz {

/// The reader's end. The bytes fit into the system's buffers (4096 are few).
inline std::unique_ptr<vxTCP::Socket> peerThatSent(const std::uint8_t* data, std::size_t size) {
  static vxTCP::Server server(vxTCP::Server::kAnyPort, 1);
  if (server.getPort() == 0) {
    server.setLoopbackOnly();
    if (server.listen()) std::abort();
  }
  vxTCP::Socket sender(vxTCP::Address::localhost(server.getPort()));
  std::unique_ptr<vxTCP::Socket> reader;
  if (sender.connect() || server.accept(reader) || sender.write(data, size) || sender.flush())
    std::abort();
  return reader;
}

}  // namespace fuzz
