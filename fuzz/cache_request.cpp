// The daemon's half of the file cache protocol reads requests.
#include <kilnbase/net/FileCacheProtocol.h>

#include "fuzz/Peer.h"

namespace {

using vxString::CString;

class Server : public vxKilnBase::FileCacheProtocolServer {
 public:
  vxUtil::Error initialize(const CString& directory, int n, std::int64_t) override {
    return {n, directory};
  }
  bool acquire(const CString& key, CString& path, std::int64_t& accessTime) override {
    path = key;
    accessTime = static_cast<std::int64_t>(key.length());
    return !key.isEmpty();
  }
  bool add(const CString& key, const CString& path) override { return key == path; }
  bool release(const CString&, bool remove) override { return remove; }
  void setAccessed(const CString&) override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto socket = fuzz::peerThatSent(data, size);
  Server server;
  server.setSocket(*socket);
  try {
    for (;;) server.readRequest();
  } catch (const vxUtil::Error&) {
    return 0;
  }
}
