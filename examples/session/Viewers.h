// Where the frames of a session go: to a viewer that runs, and into a recording.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <kilnbase/net/KilnDebugDrawProtocol.h>

namespace session {

/// A viewer of the draw link. After a failure nothing is sent any more.
class FrameLink {
 public:
  /// Connects to a viewer of the same user on this machine. False when nobody listens.
  bool connect(int port, vxUtil::Interval limit);
  void send(const vxKilnBase::KilnDebugDrawFrame& frame);
  void disconnect() { protocol_.setSocket(nullptr); }

  int framesSent() const { return framesSent_; }
  bool hasFailed() const { return hasFailed_; }

 private:
  vxKilnBase::KilnDebugDrawProtocol protocol_;
  int framesSent_ = 0;
  bool isConnected_ = false;
  bool hasFailed_ = false;
};

/// A recording that a drawview of its own writes, beside this process and without a page that
/// anybody sees.
class Recorder {
 public:
  /// Starts the viewer. What stands in `file` stays until `finish`.
  explicit Recorder(const std::filesystem::path& file);

  void send(const vxKilnBase::KilnDebugDrawFrame& frame) { link_.send(frame); }
  /// Waits until the viewer has written everything, which then takes the place of `file`. The
  /// result tells whether there is a whole recording of all frames.
  bool finish();
  /// Has drawview write the recording as a page: its text, or "" when that fails.
  std::string exportPage() const;

  /// What is wrong, as a sentence; empty when nothing is.
  const std::string& problem() const { return problem_; }
  int framesSent() const { return link_.framesSent(); }

 private:
  bool isWritten() const;

  std::filesystem::path file_;
  std::filesystem::path unfinished_;
  std::string problem_;
  FrameLink link_;
};

}  // namespace session
