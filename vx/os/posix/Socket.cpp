#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <vx/os/Socket.h>

namespace vxOS::socket {

namespace {

using vxString::CString;

int descriptor(Handle socket) {
  return static_cast<int>(socket);
}

const sockaddr* address(const Endpoint& endpoint) {
  return reinterpret_cast<const sockaddr*>(endpoint.bytes.data());
}

Endpoint endpoint(const sockaddr* given, socklen_t length) {
  Endpoint copy;
  std::memcpy(copy.bytes.data(), given, length);
  copy.length = static_cast<int>(length);
  return copy;
}

void setOption(Handle socket, int level, int option) {
  const int on = 1;
  setsockopt(descriptor(socket), level, option, &on, sizeof on);
}

Result resultOf(ssize_t outcome) {
  if (outcome >= 0) return Result::kDone;
  const bool waits = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
  return waits ? Result::kWait : Result::kFailed;
}

Result receive(Handle socket, std::byte* data, std::size_t size, std::size_t& received, int flags) {
  const ssize_t count = recv(descriptor(socket), data, size, flags);
  received = count > 0 ? static_cast<std::size_t>(count) : 0;
  return resultOf(count);
}

// Of a connection only `receiveSoon` waits.
void prepareConnection(Handle socket) {
  const timeval soon = {0, kSoon * 1000L};
  setsockopt(descriptor(socket), SOL_SOCKET, SO_RCVTIMEO, &soon, sizeof soon);
  fcntl(descriptor(socket), F_SETFL, fcntl(descriptor(socket), F_GETFL) & ~O_NONBLOCK);
}

void addEndpoints(vx::vector<Endpoint>& endpoints, const char* host, int port, int family) {
  addrinfo wanted = {};
  wanted.ai_family = family;
  wanted.ai_socktype = SOCK_STREAM;
  wanted.ai_flags = AI_NUMERICSERV | (host == nullptr ? AI_PASSIVE : 0);
  addrinfo* found = nullptr;
  if (getaddrinfo(host, std::to_string(port).c_str(), &wanted, &found) != 0) return;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(found, &freeaddrinfo);
  for (const addrinfo* each = found; each != nullptr; each = each->ai_next)
    endpoints.push_back(endpoint(each->ai_addr, each->ai_addrlen));
}

}  // namespace

// To listen on all networks, a socket for both kinds of addresses comes first; a system without
// IPv6 has the other one.
vx::vector<Endpoint> resolve(const CString& host, int port) {
  vx::vector<Endpoint> endpoints;
  if (!host.isEmpty()) {
    addEndpoints(endpoints, host.c_str(), port, AF_UNSPEC);
  } else {
    addEndpoints(endpoints, nullptr, port, AF_INET6);
    addEndpoints(endpoints, nullptr, port, AF_INET);
  }
  return endpoints;
}

Handle open(const Endpoint& endpoint) {
  const int kind = SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK;
  const int made = ::socket(address(endpoint)->sa_family, kind, IPPROTO_TCP);
  if (made >= 0) setOption(made, IPPROTO_TCP, TCP_NODELAY);
  return made;
}

void close(Handle socket) noexcept {
  ::close(descriptor(socket));
}

void shutdown(Handle socket) noexcept {
  ::shutdown(descriptor(socket), SHUT_RDWR);
}

Result startConnect(Handle socket, const Endpoint& peer) {
  const auto length = static_cast<socklen_t>(peer.length);
  if (::connect(descriptor(socket), address(peer), length) == 0) return finishConnect(socket);
  return errno == EINPROGRESS || errno == EINTR ? Result::kWait : Result::kFailed;
}

Result finishConnect(Handle socket) {
  int error = 0;
  socklen_t size = sizeof error;
  if (getsockopt(descriptor(socket), SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0) {
    prepareConnection(socket);
    return Result::kDone;
  }
  if (error != 0) errno = error;
  return Result::kFailed;
}

const int kLongestWait = -1;

bool wait(Handle socket, Event event, int milliseconds) {
  pollfd watched = {};
  watched.fd = descriptor(socket);
  watched.events = event == Event::kRead ? POLLIN : POLLOUT;
  return poll(&watched, 1, milliseconds) > 0;
}

Result send(Handle socket, Piece first, Piece second, std::size_t& sent) {
  constexpr int kFlags = MSG_NOSIGNAL | MSG_DONTWAIT;
  iovec pieces[] = {{const_cast<std::byte*>(first.data), first.size},
                    {const_cast<std::byte*>(second.data), second.size}};
  msghdr message = {};
  message.msg_iov = pieces;
  message.msg_iovlen = 2;
  const ssize_t count = second.size == 0
                            ? ::send(descriptor(socket), first.data, first.size, kFlags)
                            : sendmsg(descriptor(socket), &message, kFlags);
  sent = count > 0 ? static_cast<std::size_t>(count) : 0;
  return resultOf(count);
}

Result receive(Handle socket, std::byte* data, std::size_t size, std::size_t& received) {
  return receive(socket, data, size, received, MSG_DONTWAIT);
}

Result receiveSoon(Handle socket, std::byte* data, std::size_t size, std::size_t& received) {
  return receive(socket, data, size, received, 0);
}

// A port whose last connections have ended a moment ago can be taken again; a port that somebody
// listens on cannot.
Result listen(Handle socket, const Endpoint& endpoint, int pending) {
  setOption(socket, SOL_SOCKET, SO_REUSEADDR);
  if (address(endpoint)->sa_family == AF_INET6) {
    const int off = 0;  // IPv4 as well
    setsockopt(descriptor(socket), IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off);
  }
  const auto length = static_cast<socklen_t>(endpoint.length);
  const bool isDone = bind(descriptor(socket), address(endpoint), length) == 0 &&
                      ::listen(descriptor(socket), pending) == 0;
  return isDone ? Result::kDone : Result::kFailed;
}

int port(Handle socket) {
  sockaddr_storage own = {};
  socklen_t length = sizeof own;
  if (getsockname(descriptor(socket), reinterpret_cast<sockaddr*>(&own), &length) != 0) return 0;
  return ntohs(own.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6&>(own).sin6_port
                                         : reinterpret_cast<const sockaddr_in&>(own).sin_port);
}

Result accept(Handle listener, Handle& connection) {
  const int made = accept4(descriptor(listener), nullptr, nullptr, SOCK_CLOEXEC);
  connection = made;
  if (made >= 0) {
    setOption(made, IPPROTO_TCP, TCP_NODELAY);
    prepareConnection(made);
  }
  // A connection that ended before it was accepted, or that the network lost, is nobody's failure.
  const bool wasLost = made < 0 && (errno == ECONNABORTED || errno == EPROTO || errno == ENETDOWN ||
                                    errno == EHOSTUNREACH || errno == ENETUNREACH);
  return wasLost ? Result::kWait : resultOf(made);
}

CString lastError() {
  return std::strerror(errno);
}

namespace {

// An end of a connection. IPv4 addresses are kept as IPv6 addresses that stand for them
// (::ffff:a.b.c.d), as a socket for both kinds tells them.
struct End {
  std::array<std::uint32_t, 4> words;  // as the machine stores them
  std::uint16_t port;

  explicit End(const sockaddr_storage& address) {
    if (address.ss_family == AF_INET) {
      const auto& four = reinterpret_cast<const sockaddr_in&>(address);
      words = {0, 0, htonl(0xFFFF), four.sin_addr.s_addr};
      port = ntohs(four.sin_port);
    } else {
      const auto& six = reinterpret_cast<const sockaddr_in6&>(address);
      std::memcpy(words.data(), &six.sin6_addr, sizeof words);
      port = ntohs(six.sin6_port);
    }
  }

  // The texts of the system's tables of sockets.
  std::string asFour() const { return hexadecimal("%08X:%04X", words[3], port); }
  std::string asSix() const {
    return hexadecimal("%08X%08X%08X%08X:%04X", words[0], words[1], words[2], words[3], port);
  }
  bool isFour() const { return words[0] == 0 && words[1] == 0 && words[2] == htonl(0xFFFF); }

 private:
  template <class... Numbers>
  static std::string hexadecimal(const char* format, Numbers... numbers) {
    return CString::format(format, numbers...).c_str();
  }
};

enum class Owner { kUs, kOther, kNotYet };

// Whose socket a line of a table is. The line holds: number, local end, remote end, state, queues,
// timer, retransmits, user, timeout, inode (proc_net_tcp in the kernel's documentation). A socket
// without an inode belongs to nobody: it is not accepted yet, or closed.
std::optional<Owner> ownerIn(const char* line, const std::string& local,
                             const std::string& remote) {
  char ends[2][64];
  unsigned state = 0;
  unsigned long user = 0, inode = 0;
  if (std::sscanf(line, " %*[^:]: %63s %63s %x %*s %*s %*s %lu %*s %lu", ends[0], ends[1], &state,
                  &user, &inode) != 5 ||
      local != ends[0] || remote != ends[1])
    return std::nullopt;
  if (inode == 0) return state == TCP_ESTABLISHED ? Owner::kNotYet : Owner::kOther;
  return user == geteuid() ? Owner::kUs : Owner::kOther;
}

std::optional<Owner> ownerInTable(const char* table, const std::string& local,
                                  const std::string& remote) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(table, "re"), &std::fclose);
  char line[512];
  while (file && std::fgets(line, sizeof line, file.get()) != nullptr) {
    if (const auto owner = ownerIn(line, local, remote)) return owner;
  }
  return std::nullopt;
}

// The peer's socket stands in the table of the kind that the peer made it with.
Owner ownerOf(const End& there, const End& here) {
  std::optional<Owner> owner;
  if (here.isFour()) owner = ownerInTable("/proc/net/tcp", there.asFour(), here.asFour());
  if (!owner) owner = ownerInTable("/proc/net/tcp6", there.asSix(), here.asSix());
  return owner.value_or(Owner::kOther);
}

}  // namespace

// The peer's socket is the one whose ends are ours the other way round.
bool peerIsSameUser(Handle socket) {
  sockaddr_storage own = {}, peer = {};
  socklen_t ownLength = sizeof own, peerLength = sizeof peer;
  if (getsockname(descriptor(socket), reinterpret_cast<sockaddr*>(&own), &ownLength) != 0 ||
      getpeername(descriptor(socket), reinterpret_cast<sockaddr*>(&peer), &peerLength) != 0)
    return false;
  const End here(own), there(peer);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
  Owner owner = ownerOf(there, here);
  while (owner == Owner::kNotYet && std::chrono::steady_clock::now() < end) {
    usleep(1000);
    owner = ownerOf(there, here);
  }
  return owner == Owner::kUs;
}

}  // namespace vxOS::socket
