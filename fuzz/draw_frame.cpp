// The receiver of the draw link reads a frame. Few names of files exist.
#include <kilnbase/net/KilnDebugDrawProtocol.h>

#include "fuzz/Peer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vxKilnBase::KilnDebugDrawProtocol protocol;
  protocol.setSocket(fuzz::peerThatSent(data, size));
  vxKilnBase::KilnDebugDrawFrame frame;
  while (protocol.recvFrame(frame)) {
  }
  frame.clear(true);
  return 0;
}
