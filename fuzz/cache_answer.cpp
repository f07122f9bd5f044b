// The application's half of the file cache protocol reads answers. The first byte chooses the
// requests.
#include <kilnbase/net/FileCacheProtocol.h>

#include "fuzz/Peer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const auto socket = fuzz::peerThatSent(data + 1, size - 1);
  vxKilnBase::FileCacheProtocolClient client;
  client.setSocket(*socket);
  vxString::CString path;
  std::int64_t accessTime = 0;
  for (int request = 0; request < 8; ++request) {
    switch ((data[0] + request) % 5) {
      case 0:
        client.initialize("folder", 1, 1);
        break;
      case 1:
        client.acquire("key", path, accessTime);
        break;
      case 2:
        client.add("key", path);
        break;
      case 3:
        client.release("key", true);
        break;
      default:
        client.setAccessed("key");
    }
  }
  return 0;
}
