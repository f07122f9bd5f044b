// Receives frames from one sender after the other.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <kilnbase/net/KilnDebugDrawProtocol.h>
#include <vx/Tcp.h>

#include "tools/drawview/Frames.h"

namespace drawview {

struct ReceiverSettings {
  std::string host = "127.0.0.1";
  int port = 0;  ///< 0: the system chooses.
  /// The most bytes that a frame may have on its way.
  std::uint64_t mostFrameBytes = kMostFrameBytes;
};

/// What happens to the senders; called by the receiver's thread.
struct ReceiverEvents {
  std::function<void(const vxKilnBase::KilnDebugDrawFrame&)> frame;  ///< A whole one.
  std::function<void(bool isConnected)> sender;
  std::function<void(const char* what)> trouble;  ///< A sentence for the user.
};

/// Waits for senders in a thread of its own. A sender that ends, crashes or breaks the rules makes
/// room for the next one; what it has sent of a frame is dropped. On a loopback address only
/// senders of the same user are served. On another address everybody is served who reaches it, but
/// the files that a sender names are read only for senders of the same user on this machine.
class Receiver {
 public:
  /// Takes the port. Throws InputError when that fails.
  explicit Receiver(const ReceiverSettings& settings);
  /// Ends the connection.
  ~Receiver();
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  /// Serves senders from now on.
  void start(ReceiverEvents events);
  int port() const { return server_.getPort(); }

 private:
  void run();
  void welcome(std::unique_ptr<vxTCP::Socket> socket);
  void serve(std::unique_ptr<vxTCP::Socket> socket, bool isSameUser);
  bool receive(vxKilnBase::KilnDebugDrawProtocol& sender);
  bool isLoopback() const;

  ReceiverSettings settings_;
  ReceiverEvents events_;
  vxTCP::Server server_;
  std::atomic<bool> mustStop_ = false;
  std::mutex guard_;                                      // of `current_`
  vxKilnBase::KilnDebugDrawProtocol* current_ = nullptr;  // who is being served
  std::thread thread_;
};

}  // namespace drawview
