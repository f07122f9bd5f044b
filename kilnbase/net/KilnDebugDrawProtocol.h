// The connection between a program that sends debug drawings and a viewer.
#pragma once

#include <cstdint>
#include <memory>

#include <kilnbase/export.h>
#include <kilnbase/net/KilnDebugDrawFrame.h>
#include <vx/Error.h>
#include <vx/Tcp.h>

namespace vxKilnBase {

/// One end of a connection on which frames are sent, in both directions if wanted. Either end may
/// listen or connect. Kernel objects and meshes travel as temporary files, so that both ends must
/// see the same file system and run as the same user.
///
///     vxKilnBase::KilnDebugDrawFrame frame;
///     frame.points.push_back({1.0, 2.0, 3.0});
///     vxKilnBase::KilnDebugDrawProtocol viewer;
///     if (!viewer.connect("localhost", 1) || !viewer.sendFrame(frame)) puts("no viewer");
///
/// A failed exchange ends the connection, and the other end learns of the failure by that. An
/// object is for one thread at a time, but for `interrupt`. The bytes are told in
/// docs/draw-protocol.md.
class KILNBASE_API KilnDebugDrawProtocol {
 public:
  KilnDebugDrawProtocol();
  KilnDebugDrawProtocol(const KilnDebugDrawProtocol&) = delete;
  KilnDebugDrawProtocol& operator=(const KilnDebugDrawProtocol&) = delete;
  /// Ends the connection.
  ~KilnDebugDrawProtocol();

  /// Connects to a peer that listens, within the limit of `setTimeout`. Ends the connection before.
  /// False on any failure.
  bool connect(const char* host, int port);
  /// Waits for one peer to connect to a port, on all networks of this machine and without a limit.
  /// The port is free again afterwards. Ends the connection before. False on any failure.
  bool listen(int port);
  /// Goes on with a connection that was made elsewhere, for example by a server of the caller's own
  /// that takes one peer after the other, on one network, within a limit. Null ends the connection.
  void setSocket(std::unique_ptr<vxTCP::Socket> socket);

  /// The longest wait for the peer to send, take or acknowledge a part of a frame; 10 seconds at
  /// first. A peer that takes longer has failed. A receiver acknowledges a frame when it has read
  /// all files, which takes time for much geometry.
  void setTimeout(vxUtil::Interval limit);
  /// The most bytes that a received frame may have, records and files together; a longer one fails.
  /// No limit at first. In memory a frame takes at most about four times as much.
  void setFrameLimit(std::uint64_t bytes);
  /// Whether `recvFrame` opens, and deletes, the files that the peer names; true at first. Without,
  /// kernel objects and meshes are left out. For peers that may belong to somebody else.
  void setReadsFiles(bool reads);

  /// Sends a frame and waits for the acknowledgement. Before anything is sent the kernel objects
  /// and the meshes are written into files in the folder for temporary files, which the receiver
  /// deletes. On failure the result is false, and the files are deleted here. When they cannot be
  /// written nothing is sent, and the connection stays.
  bool sendFrame(const KilnDebugDrawFrame& frame);

  /// Waits until there is something to receive, or the end of the connection. False when the limit
  /// passes first, and without a connection.
  bool waitForFrame(vxUtil::Interval limit = {});
  /// Receives a frame and acknowledges it. What arrives is appended to the lists of `frame`,
  /// objects and meshes belong to the caller; the name is replaced. The wait for the beginning has
  /// no limit (see `waitForFrame`).
  ///
  /// A file that the peer names is opened only when it is a regular file of this user with one
  /// name, on this machine; no link is followed. The file is deleted when it has been read as what
  /// it should be, or is empty, which stands for no objects and for a mesh of nothing. Everything
  /// else is left alone, and fails the exchange. On failure the result is false, and the frame
  /// keeps what was appended.
  bool recvFrame(KilnDebugDrawFrame& frame);

  /// Ends the connection from another thread: a call that sends or receives fails, later ones too.
  /// Not while another thread connects, listens or sets the socket.
  void interrupt() noexcept;

 private:
  class VX_LOCAL Impl;

  Impl* impl_;
  bool owns_ = true;
};

}  // namespace vxKilnBase
