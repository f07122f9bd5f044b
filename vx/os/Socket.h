// Sockets, on each operating system. Nothing here waits, but for `wait`, `receiveSoon` and
// `resolve`.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <vx/Containers.h>
#include <vx/String.h>

namespace vxOS::socket {

using Handle = std::intptr_t;
constexpr Handle kNone = -1;

/// The address of one end, as the system stores it.
struct Endpoint {
  alignas(8) std::array<std::byte, 128> bytes = {};
  int length = 0;
};

enum class Result {
  kDone,
  kWait,  ///< The call would have to wait.
  kFailed,
};

enum class Event { kRead, kWrite, kConnect };

/// A piece of what is to be sent.
struct Piece {
  const std::byte* data;
  std::size_t size;
};

/// All addresses of a host. An empty host stands for all networks of this machine, to listen on.
/// Empty when there are none.
vx::vector<Endpoint> resolve(const vxString::CString& host, int port);

/// A new socket that never blocks, that children do not inherit, and that sends small values
/// without delay.
Handle open(const Endpoint& endpoint);
void close(Handle socket) noexcept;
/// Ends both directions. The handle stays valid.
void shutdown(Handle socket) noexcept;

Result startConnect(Handle socket, const Endpoint& peer);
/// After `wait` for `kConnect`: whether the connection stands.
Result finishConnect(Handle socket);

/// The longest wait, in milliseconds, after which a caller has to look for a `shutdown` by another
/// thread; -1 where `shutdown` ends a wait.
extern const int kLongestWait;

/// Waits until the event can happen without waiting, an error among them. False after
/// `milliseconds` (-1: no limit) and after a signal.
bool wait(Handle socket, Event event, int milliseconds);

/// Sends from two pieces, as one; `sent` tells how much went out. No signal is raised when the peer
/// is gone.
Result send(Handle socket, Piece first, Piece second, std::size_t& sent);
/// Receives at most `size` bytes; 0 received with `kDone` is the end of the connection.
Result receive(Handle socket, std::byte* data, std::size_t size, std::size_t& received);
/// As `receive`, but may wait for the first byte for at most `kSoon` milliseconds. `shutdown` ends
/// the wait.
Result receiveSoon(Handle socket, std::byte* data, std::size_t size, std::size_t& received);
constexpr int kSoon = 200;

/// Takes the port of the endpoint for listening.
Result listen(Handle socket, const Endpoint& endpoint, int pending);
int port(Handle socket);
/// `connection` is set up as `open` sets up a socket.
Result accept(Handle listener, Handle& connection);

/// What the system said about the last `kFailed` of this thread.
vxString::CString lastError();

/// Whether the process at the other end of a loopback connection belongs to the user of this one.
bool peerIsSameUser(Handle socket);

}  // namespace vxOS::socket
