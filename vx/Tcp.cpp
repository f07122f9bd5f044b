#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include <vx/Tcp.h>
#include <vx/os/Socket.h>

namespace vxTCP {

namespace {

namespace os = vxOS::socket;
using vxString::CString;
using vxUtil::Error;
using vxUtil::Interval;

constexpr std::size_t kBufferBytes = 65536;
constexpr std::size_t kLengthBytes = 4;
constexpr int kMaxPort = 65535;
const Interval kClosingLimit(1.0);

// The moment when a wait ends, or none.
class Deadline {
 public:
  explicit Deadline(Interval limit) {
    if (!limit.isUnlimited()) end_ = Clock::now() + kept(limit);
  }

  bool isOver() const { return end_ && Clock::now() >= *end_; }
  /// The rest in milliseconds, rounded up; -1 without a limit.
  int milliseconds() const {
    if (!end_) return -1;
    const double rest = std::chrono::duration<double, std::milli>(*end_ - Clock::now()).count();
    return static_cast<int>(std::clamp(std::ceil(rest), 0.0, kLongestWait));
  }
  /// Whether there is time for a wait of so many milliseconds.
  bool allows(int wanted) const { return !end_ || milliseconds() >= wanted; }
  /// The rest, but at most `longest` milliseconds; -1 for `longest` stands for no such limit.
  int slice(int longest) const {
    const int rest = milliseconds();
    if (longest < 0) return rest;
    return rest < 0 ? longest : std::min(rest, longest);
  }
  /// An equal part of the rest; the whole for one part and without a limit.
  Interval share(std::size_t parts) const {
    const int rest = milliseconds();
    return rest < 0 ? Interval()
                    : Interval(std::max(rest, 1) / (1000.0 * static_cast<double>(parts)));
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr double kLongestWait = 1e9;  // milliseconds; a wait that is longer starts again

  static Clock::duration kept(Interval limit) {
    const std::chrono::duration<double> seconds(std::min(limit.seconds(), 1e8));
    return std::chrono::duration_cast<Clock::duration>(seconds);
  }

  std::optional<Clock::time_point> end_;
};

const std::atomic<bool> kNeverInterrupted = false;

Error systemError(const char* what) {
  return {kFailed, CString::format("%s: %s", what, os::lastError().c_str())};
}

Error notConnected() {
  return {kFailed, "not connected"};
}

Error interruptedError() {
  return {kInterrupted, "interrupted"};
}

Error timedOut() {
  return {kTimedOut, "the connection does not answer in time"};
}

// Waits until the event can happen; false when the time is over or `isInterrupted` first.
// `shutdown` does not end the wait for a connection.
bool waitUntil(os::Handle socket, os::Event event, const Deadline& deadline,
               const std::atomic<bool>& isInterrupted = kNeverInterrupted) {
  constexpr int kConnectingSlice = 100;
  const int longest = event == os::Event::kConnect ? kConnectingSlice : os::kLongestWait;
  while (!isInterrupted && !os::wait(socket, event, deadline.slice(longest))) {
    if (deadline.isOver()) return false;
  }
  return !isInterrupted;
}

std::uint32_t littleEndian(const std::array<unsigned char, kLengthBytes>& bytes) {
  return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

std::array<unsigned char, kLengthBytes> littleEndian(std::uint32_t value) {
  return {static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
          static_cast<unsigned char>(value >> 16), static_cast<unsigned char>(value >> 24)};
}

// A handle that is closed.
class OwnedHandle {
 public:
  explicit OwnedHandle(os::Handle handle = os::kNone) : handle_(handle) {}
  ~OwnedHandle() {
    if (handle_ != os::kNone) os::close(handle_);
  }
  OwnedHandle(OwnedHandle&& other) noexcept : handle_(std::exchange(other.handle_, os::kNone)) {}
  OwnedHandle& operator=(OwnedHandle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }

  os::Handle get() const { return handle_; }
  bool isOpen() const { return handle_ != os::kNone; }

 private:
  os::Handle handle_;
};

}  // namespace

Address Address::localhost(int port) {
  return {"127.0.0.1", port};
}

struct Socket::Connection {
  explicit Connection(const Address& peer) : address(peer) {}

  /// The limit of the call that begins now.
  Deadline limit() const { return exchange ? *exchange : Deadline(timeout); }
  Error fail(Error error) {
    if (!failure) failure = interrupted ? interruptedError() : std::move(error);
    return failure;
  }
  /// Why nothing can be sent or received any more; no error while the connection stands.
  const Error& state() {
    if (interrupted && !failure) failure = interruptedError();
    return failure;
  }
  bool waitFor(os::Event event, const Deadline& deadline) const {
    return waitUntil(socket.get(), event, deadline, interrupted);
  }
  /// Receives what is there or comes soon. An answer that comes soon is thus received by one call
  /// of the system.
  os::Result receiveSoon(std::byte* data, std::size_t size, std::size_t& received,
                         const Deadline& deadline) const {
    const bool maySoon = !interrupted && deadline.allows(os::kSoon);
    return (maySoon ? os::receiveSoon : os::receive)(socket.get(), data, size, received);
  }
  Error closedByPeer() { return fail({kClosed, "the peer has closed the connection"}); }

  Error connectTo(const os::Endpoint& peer, const Deadline& deadline);
  Error sendGathered(os::Piece more, const Deadline& deadline);
  Error receiveSome(std::byte* data, std::size_t size, std::size_t& received,
                    const Deadline& deadline);
  Error readAll(std::byte* data, std::size_t size, const Deadline& deadline);
  Error readText(CString& text, std::size_t size, const Deadline& deadline);
  std::size_t takeBuffered(std::byte* data, std::size_t size);

  Address address;
  OwnedHandle socket;
  std::atomic<bool> interrupted = false;
  bool throws = false;
  Error failure = notConnected();
  Interval timeout;
  std::optional<Deadline> exchange;

  std::array<std::byte, kBufferBytes> gathered;  // the first `gatheredBytes` are to be sent
  std::size_t gatheredBytes = 0;
  std::array<std::byte, kBufferBytes> buffered;  // [bufferedStart, bufferedEnd) is to be read
  std::size_t bufferedStart = 0;
  std::size_t bufferedEnd = 0;
};

// Connects to one address. What an earlier connection left goes.
Error Socket::Connection::connectTo(const os::Endpoint& peer, const Deadline& deadline) {
  OwnedHandle made(os::open(peer));
  if (!made.isOpen()) return systemError("cannot connect");
  os::Result result = os::startConnect(made.get(), peer);
  while (result == os::Result::kWait) {
    if (!waitUntil(made.get(), os::Event::kConnect, deadline, interrupted)) return timedOut();
    result = os::finishConnect(made.get());
  }
  if (result != os::Result::kDone) return systemError("cannot connect");
  socket = std::move(made);
  gatheredBytes = bufferedStart = bufferedEnd = 0;
  failure = {};
  return {};
}

// Sends the gathered bytes and `more`.
Error Socket::Connection::sendGathered(os::Piece more, const Deadline& deadline) {
  os::Piece first = {gathered.data(), gatheredBytes};
  while (!state() && first.size + more.size > 0) {
    std::size_t sent = 0;
    const os::Result result = os::send(socket.get(), first, more, sent);
    if (result == os::Result::kFailed) return fail(systemError("cannot send"));
    const std::size_t ofFirst = std::min(sent, first.size);
    first = {first.data + ofFirst, first.size - ofFirst};
    more = {more.data + (sent - ofFirst), more.size - (sent - ofFirst)};
    if (result == os::Result::kWait && !waitFor(os::Event::kWrite, deadline))
      return fail(timedOut());
  }
  gatheredBytes = 0;
  return failure;
}

// Receives at least one byte.
Error Socket::Connection::receiveSome(std::byte* data, std::size_t size, std::size_t& received,
                                      const Deadline& deadline) {
  if (gatheredBytes > 0 && sendGathered({}, deadline)) return failure;
  os::Result result = receiveSoon(data, size, received, deadline);
  while (result == os::Result::kWait) {
    if (!waitFor(os::Event::kRead, deadline)) return fail(timedOut());
    result = os::receive(socket.get(), data, size, received);
  }
  if (result == os::Result::kFailed) return fail(systemError("cannot receive"));
  return received == 0 ? closedByPeer() : Error();
}

std::size_t Socket::Connection::takeBuffered(std::byte* data, std::size_t size) {
  const std::size_t count = std::min(size, bufferedEnd - bufferedStart);
  std::copy_n(buffered.begin() + static_cast<std::ptrdiff_t>(bufferedStart), count, data);
  bufferedStart += count;
  return count;
}

Error Socket::Connection::readAll(std::byte* data, std::size_t size, const Deadline& deadline) {
  while (!state()) {
    const std::size_t taken = takeBuffered(data, size);
    data += taken;
    size -= taken;
    if (size == 0) break;
    std::size_t received = 0;
    if (size >= buffered.size()) {
      if (!receiveSome(data, size, received, deadline)) data += received, size -= received;
    } else if (!receiveSome(buffered.data(), buffered.size(), received, deadline)) {
      bufferedStart = 0;
      bufferedEnd = received;
    }
  }
  return failure;
}

// Memory is taken as the bytes arrive, so that a length alone costs none.
Error Socket::Connection::readText(CString& text, std::size_t size, const Deadline& deadline) {
  if (size <= bufferedEnd - bufferedStart) {
    const std::byte* start = buffered.data() + bufferedStart;
    text = CString(std::string_view(reinterpret_cast<const char*>(start), size));
    bufferedStart += size;
    return {};
  }
  std::string bytes;
  while (!failure && bytes.size() < size) {
    const std::size_t start = bytes.size();
    bytes.resize(start + std::min(size - start, std::max(kBufferBytes, start)));
    readAll(reinterpret_cast<std::byte*>(bytes.data() + start), bytes.size() - start, deadline);
  }
  if (!failure) text = CString(std::string_view(bytes));
  return failure;
}

// Programs for Windows that take the address of a constant link with the definition here.
const std::size_t Socket::kMaxTextBytes;
const int Server::kAnyPort;

Socket::Socket(const Address& peer) : connection_(std::make_unique<Connection>(peer)) {}

Socket::Socket(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}

Socket::Socket(Socket&& other) noexcept = default;

Socket& Socket::operator=(Socket&& other) noexcept {
  std::swap(connection_, other.connection_);
  return *this;
}

Socket::~Socket() {
  if (connection_ && connection_->gatheredBytes > 0)
    connection_->sendGathered({}, Deadline(kClosingLimit));
}

namespace {

// What a call returns, or throws.
Error outcome(const Error& error, bool throws) {
  if (error && throws) throw error;
  return error;
}

}  // namespace

Error Socket::connect(Interval limit) {
  Connection& own = *connection_;
  const Deadline deadline(limit);
  const CString& host = own.address.host();
  const int port = own.address.port();
  own.socket = OwnedHandle();
  own.failure = notConnected();
  Error error(kFailed, CString::format("no host \"%s\" with a port %d", host.c_str(), port));
  vx::vector<os::Endpoint> peers;
  if (port > 0 && port <= kMaxPort) peers = os::resolve(host, port);
  for (std::size_t i = 0; i < peers.size() && !own.interrupted && !deadline.isOver(); ++i) {
    error = own.connectTo(peers[i], Deadline(deadline.share(peers.size() - i)));
    if (!error) return {};
  }
  return outcome(own.interrupted ? interruptedError() : error, own.throws);
}

void Socket::setThrowMode(bool throws) {
  connection_->throws = throws;
}

void Socket::setTimeout(Interval limit) {
  connection_->timeout = limit;
}

void Socket::limitExchange(Interval limit) {
  connection_->exchange.reset();
  if (!limit.isUnlimited()) connection_->exchange.emplace(limit);
}

Error Socket::write(const void* data, std::size_t bytes) {
  Connection& own = *connection_;
  const auto* first = static_cast<const std::byte*>(data);
  if (own.state()) return outcome(own.failure, own.throws);
  if (bytes > kBufferBytes - own.gatheredBytes)
    return outcome(own.sendGathered({first, bytes}, own.limit()), own.throws);
  std::copy_n(first, bytes, own.gathered.data() + own.gatheredBytes);
  own.gatheredBytes += bytes;
  return {};
}

Error Socket::write(const CString& text) {
  Connection& own = *connection_;
  if (text.length() > kMaxTextBytes)
    return outcome(own.fail({kTooLong, "a text too long to send"}), own.throws);
  const auto length = littleEndian(static_cast<std::uint32_t>(text.length()));
  if (Error error = write(length.data(), length.size())) return error;
  return write(text.c_str(), text.length());
}

Error Socket::flush() {
  Connection& own = *connection_;
  return outcome(own.sendGathered({}, own.limit()), own.throws);
}

Error Socket::read(void* data, std::size_t bytes) {
  Connection& own = *connection_;
  if (bytes <= own.bufferedEnd - own.bufferedStart && !own.state()) {  // needs no clock
    own.takeBuffered(static_cast<std::byte*>(data), bytes);
    return {};
  }
  return outcome(own.readAll(static_cast<std::byte*>(data), bytes, own.limit()), own.throws);
}

Error Socket::read(CString& text) {
  Connection& own = *connection_;
  const Deadline deadline = own.limit();
  std::array<unsigned char, kLengthBytes> length;
  own.readAll(reinterpret_cast<std::byte*>(length.data()), length.size(), deadline);
  if (!own.failure && littleEndian(length) > kMaxTextBytes)
    own.fail({kTooLong, "the peer sends a text that is too long"});
  if (!own.failure) own.readText(text, littleEndian(length), deadline);
  return outcome(own.failure, own.throws);
}

bool Socket::waitForInput(Interval limit) {
  Connection& own = *connection_;
  if (!own.state() && own.bufferedStart < own.bufferedEnd) return true;
  if (own.state() || own.sendGathered({}, own.limit())) return false;
  const Deadline deadline(limit);
  own.bufferedStart = own.bufferedEnd = 0;
  // The end and a failure are told again to the next call that reads.
  if (own.receiveSoon(own.buffered.data(), own.buffered.size(), own.bufferedEnd, deadline) !=
      os::Result::kWait)
    return !own.interrupted;
  return own.waitFor(os::Event::kRead, deadline);
}

void Socket::interrupt() noexcept {
  connection_->interrupted = true;
  if (connection_->socket.isOpen()) os::shutdown(connection_->socket.get());
}

bool Socket::peerIsSameUser() const {
  return connection_->socket.isOpen() && os::peerIsSameUser(connection_->socket.get());
}

struct Server::Listener {
  int port;
  int pending;
  CString host;  // empty: all networks
  OwnedHandle socket;
};

Server::Server(int port, int pending)
    : listener_(new Listener{port, pending, CString(), OwnedHandle()}) {}

Server::~Server() = default;

void Server::setLoopbackOnly() {
  listener_->host = "127.0.0.1";
}

void Server::setAddress(const CString& host) {
  listener_->host = host;
}

Error Server::listen() {
  const int port = listener_->port == kAnyPort ? 0 : listener_->port;
  Error error(kFailed, CString::format("cannot listen on port %d", port));
  if (port < 0 || port > kMaxPort) return error;
  for (const os::Endpoint& endpoint : os::resolve(listener_->host, port)) {
    OwnedHandle socket(os::open(endpoint));
    if (socket.isOpen() &&
        os::listen(socket.get(), endpoint, listener_->pending) == os::Result::kDone) {
      listener_->socket = std::move(socket);
      return {};
    }
    error = systemError("cannot listen");
  }
  return error;
}

int Server::getPort() const {
  return listener_->socket.isOpen() ? os::port(listener_->socket.get()) : 0;
}

Error Server::accept(std::unique_ptr<Socket>& socket, Interval limit) {
  socket.reset();
  if (!listener_->socket.isOpen()) return {kFailed, "the server does not listen"};
  const Deadline deadline(limit);
  os::Handle handle = os::kNone;
  os::Result result;
  while ((result = os::accept(listener_->socket.get(), handle)) == os::Result::kWait) {
    if (!waitUntil(listener_->socket.get(), os::Event::kRead, deadline)) return {};
  }
  if (result == os::Result::kFailed) return systemError("cannot accept");
  OwnedHandle owned(handle);
  auto connection = std::make_unique<Socket::Connection>(Address::localhost(0));
  connection->socket = std::move(owned);
  connection->failure = {};
  socket.reset(new Socket(std::move(connection)));
  return {};
}

}  // namespace vxTCP
