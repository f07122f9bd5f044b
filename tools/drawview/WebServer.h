// Serves the page and its frames to browsers of this machine.
//
// The page stands under an address with a random token, on 127.0.0.1 alone. Under that address are
//   /          the page
//   /frames/N  the message of frame N
//   /socket    a WebSocket, through which the page learns of the frames and the senders
// docs/draw-recording.md tells the messages. Whoever does not know the token, asks under another
// host name (as a page does that has its own name point here), or is a page of another origin, gets
// an error. Requests, the number of connections and every wait are limited.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tools/drawview/Frames.h"

namespace drawview {

struct WebSettings {
  int port = 0;           ///< 0: the system chooses.
  std::string_view page;  ///< HTML; outlives the server.
  bool isReplay = false;
};

class WebServer {
 public:
  /// Serves the frames of `store`, in a thread of its own. Throws InputError when the port cannot
  /// be taken.
  WebServer(const WebSettings& settings, FrameStore store);
  /// Ends all connections.
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  /// The address of the page. Who knows it sees the frames.
  const std::string& address() const;

  /// Adds a frame to the store and tells the pages. From any thread.
  void add(Frame&& frame);
  /// Tells pages that connect from now on where senders connect. From any thread.
  void setListenAddress(std::string address);
  /// Tells the pages whether a sender is there. From any thread.
  void setSender(bool isConnected);

 private:
  class Service;
  std::unique_ptr<Service> service_;
};

}  // namespace drawview
