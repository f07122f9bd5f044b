// The viewer of live senders: what they send is encoded, recorded and shown.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <kilnbase/net/KilnDebugDrawFrame.h>

#include "tools/drawview/CommandLine.h"
#include "tools/drawview/Receiver.h"
#include "tools/drawview/Recording.h"
#include "tools/drawview/WebServer.h"

namespace drawview {

class Viewer {
 public:
  /// Takes the ports, makes the recording and waits for senders. Frames take at most `mostBytes`.
  /// Throws InputError; then a recording that was there is as before.
  explicit Viewer(const Options& options, std::uint64_t mostBytes = kMostFrameBytes);

  const std::string& address() const { return server_.address(); }
  /// Where senders connect: HOST:PORT.
  std::string listenAddress() const { return listenHost_ + ":" + std::to_string(senderPort()); }
  int senderPort() const { return receiver_.port(); }

  /// What the user is to know, since the last call; sentences.
  std::vector<std::string> takeNotes();
  /// Whether a sender has come, and gone with all its frames recorded.
  bool hasServed() const { return hasServed_; }
  bool hasSender() const { return hasSender_; }
  /// Whether the recording lacks a frame because it could not be written.
  bool hasLostRecording() const { return hasLostRecording_; }

 private:
  void add(const vxKilnBase::KilnDebugDrawFrame& frame);
  void record(std::string_view name, std::string_view message);
  void setSender(bool isConnected);
  void note(std::string text);

  std::string listenHost_;
  std::uint64_t mostBytes_;
  std::uint64_t lastNumber_ = 0;
  std::mutex guard_;  // of `notes_`
  std::vector<std::string> notes_;
  std::atomic<bool> hasLostRecording_ = false;
  std::atomic<bool> hasSender_ = false;
  std::atomic<bool> hasServed_ = false;
  WebServer server_;
  std::optional<RecordingWriter> recording_;
  Receiver receiver_;  // the last: its thread uses the others
};

}  // namespace drawview
