// TCP connections.
//
// Values that are written one after the other go out together: `write` gathers them, and they are
// sent when the buffer is full, before `read` waits for an answer, on `flush`, and when the socket
// is closed. Reads are buffered as well.
//
//     vxTCP::Server server(vxTCP::Server::kAnyPort, 1);
//     server.setLoopbackOnly();
//     std::unique_ptr<vxTCP::Socket> peer;
//     vxTCP::Socket socket(vxTCP::Address::localhost(0));
//     if (!server.listen()) {
//       socket = vxTCP::Socket(vxTCP::Address::localhost(server.getPort()));
//       if (!socket.connect(vxUtil::Interval(1.0)) && !server.accept(peer, vxUtil::Interval(1.0)))
//         puts("connected");
//     }
//
// A socket is used by one thread at a time, but for `interrupt`.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include <vx/Error.h>
#include <vx/String.h>
#include <vx/export.h>

namespace vxTCP {

/// The codes of the errors here. The messages name what the system says.
enum ErrorCode {
  kFailed = 1,       ///< The system refused.
  kClosed = 2,       ///< The peer has closed the connection.
  kTimedOut = 3,     ///< The limit has passed.
  kTooLong = 4,      ///< A text longer than `Socket::kMaxTextBytes`.
  kInterrupted = 5,  ///< `Socket::interrupt` was called.
};

/// A host, by name or number (IPv4 or IPv6), and a port.
class VX_API Address {
 public:
  /// Nothing is looked up before a socket connects.
  Address(vxString::CString host, int port) : host_(std::move(host)), port_(port) {}
  /// This machine, by the loopback network (127.0.0.1).
  static Address localhost(int port);

  /// As given to the constructor.
  const vxString::CString& host() const { return host_; }
  int port() const { return port_; }

 private:
  vxString::CString host_;
  int port_;
};

/// One end of a connection.
///
/// After a failure the connection is dead: every later call fails at once with the same error. In
/// throwing mode a call throws its `vxUtil::Error` instead of returning it.
class VX_API Socket {
 public:
  /// The longest text that `read` takes and `write` sends.
  static const std::size_t kMaxTextBytes = std::size_t{64} << 20;

  /// A socket that is not connected yet.
  explicit Socket(const Address& peer);
  /// Sends what was gathered, for at most a second, and closes the connection.
  ~Socket();
  Socket(Socket&& other) noexcept;
  Socket& operator=(Socket&& other) noexcept;

  /// Connects to the address, and ends the connection before. All addresses of a name are tried,
  /// one after the other, within the limit. Looking the name up is not limited.
  vxUtil::Error connect(vxUtil::Interval limit = {});

  /// Whether failures are thrown from now on, instead of returned as at the start.
  void setThrowMode(bool throws);
  /// The limit for each call that reads or writes; none at the start.
  void setTimeout(vxUtil::Interval limit);
  /// Limits all calls from now until the next `limitExchange` together, in the place of
  /// `setTimeout`. An exchange of several reads and writes with a slow peer thus ends in time. The
  /// default removes the limit.
  void limitExchange(vxUtil::Interval limit = {});

  /// Writes bytes.
  vxUtil::Error write(const void* data, std::size_t bytes);
  /// Writes a text: its length in bytes, 4 bytes little-endian, and the bytes.
  vxUtil::Error write(const vxString::CString& text);
  /// Sends what was gathered.
  vxUtil::Error flush();

  /// Reads exactly `bytes` bytes. On failure the content of `data` is unspecified.
  vxUtil::Error read(void* data, std::size_t bytes);
  /// Reads a text as `write` sends it. On failure `text` is unchanged.
  vxUtil::Error read(vxString::CString& text);

  /// Sends what was gathered and waits until there is something to read: bytes or the end of the
  /// connection. False when the limit passes first, which is no failure, and on failure.
  bool waitForInput(vxUtil::Interval limit = {});

  /// Ends the connection from another thread: calls that wait fail with `kInterrupted`, later calls
  /// too.
  void interrupt() noexcept;

  /// Whether the other end belongs to the same user of this machine: for loopback connections, by
  /// the system's table of sockets. Waits for at most a second until the other end is accepted.
  /// False when the peer is elsewhere or gone, and when the system does not tell.
  bool peerIsSameUser() const;

 private:
  friend class Server;
  struct VX_LOCAL Connection;
  explicit Socket(std::unique_ptr<Connection> connection);

  std::unique_ptr<Connection> connection_;
};

/// A port on which connections are accepted.
class VX_API Server {
 public:
  /// Stands for a port that the system chooses.
  static const int kAnyPort = -1;

  /// A server on `port`, at first on all networks of the machine; `kAnyPort` lets the system
  /// choose. At most about `pending` connections wait to be accepted.
  Server(int port, int pending);
  /// Closes the port. Accepted connections live on.
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// Accepts connections of this machine only (127.0.0.1). Before `listen`.
  void setLoopbackOnly();
  /// Accepts connections to this address of the machine only, a name or number. Before `listen`.
  void setAddress(const vxString::CString& host);

  /// Takes the port. A port that another process listens on is an error; one that was in use a
  /// moment ago is not.
  vxUtil::Error listen();
  /// The port, once the server listens; else 0.
  int getPort() const;

  /// Waits for a connection. When the limit passes first there is no error and `socket` is null.
  vxUtil::Error accept(std::unique_ptr<Socket>& socket, vxUtil::Interval limit = {});

 private:
  struct VX_LOCAL Listener;
  std::unique_ptr<Listener> listener_;
};

}  // namespace vxTCP
