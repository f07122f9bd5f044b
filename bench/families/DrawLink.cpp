#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <memory>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <kilnbase/net/KilnDebugDrawProtocol.h>
#include <vx/File.h>

#include "families/Families.h"

namespace bench {

namespace {

using vxKilnBase::KilnDebugDrawFrame;
using vxKilnBase::KilnDebugDrawProtocol;
using vxTCP::Server;
using vxTCP::Socket;

constexpr std::size_t kBlock = 65536;
constexpr std::size_t kRecordBytes = 28;

std::size_t pointBytes(const Shape& shape) {
  return kRecordBytes * static_cast<std::size_t>(shape.rows);
}

KilnDebugDrawFrame frameOf(const Shape& shape) {
  KilnDebugDrawFrame frame;
  for (int i = 0; i < shape.rows; ++i) frame.points.push_back({i + 0.25, i + 0.5, i + 0.75});
  return frame;
}

// The records of the points as they go over the wire.
std::vector<char> recordsOf(const Shape& shape) {
  std::vector<char> bytes;
  for (const vxLinear::Point& point : frameOf(shape).points) {
    const int tag = 2;
    bytes.insert(bytes.end(), reinterpret_cast<const char*>(&tag),
                 reinterpret_cast<const char*>(&tag + 1));
    bytes.insert(bytes.end(), reinterpret_cast<const char*>(&point),
                 reinterpret_cast<const char*>(&point + 1));
  }
  return bytes;
}

// The other end: takes what comes and answers.
class Drain {
 public:
  using Exchange = void (*)(Drain&);

  Drain(const Shape& shape, Exchange exchange) : bytes_(pointBytes(shape)), exchange_(exchange) {
    server_.setLoopbackOnly();
    if (server_.listen()) throw std::runtime_error("cannot listen");
  }
  Drain(const Drain&) = delete;
  Drain& operator=(const Drain&) = delete;

  int port() const { return server_.getPort(); }
  void start() {
    if (server_.accept(socket_)) throw std::runtime_error("cannot accept");
    socket_->setThrowMode(true);
    thread_ = std::jthread([this] {
      try {
        for (;;) exchange_(*this);
      } catch (const vxUtil::Error&) {
        return;  // the sender is done
      }
    });
  }
  // The last number of the points that came.
  double last() const { return last_; }

  static void takeWrites(Drain& drain) {
    drain.takePoints();
    drain.answer();
  }
  static void takeFrame(Drain& drain) {
    std::array<int, 4> nameAndMarks;
    int tag;
    vxString::CString path;
    drain.take(nameAndMarks);
    drain.takePoints();
    drain.take(tag);
    drain.socket_->read(path);
    vxOS::File::remove(path);
    drain.take(tag);
    drain.answer();
  }

 private:
  template <class Value>
  void take(Value& value) {
    socket_->read(&value, sizeof value);
  }
  void takePoints() {
    std::size_t size = 0;
    for (std::size_t rest = bytes_; rest > 0; rest -= size)
      socket_->read(block_.data(), size = std::min(rest, kBlock));
    std::memcpy(&last_, &block_[size - sizeof last_], sizeof last_);
  }
  void answer() {
    const int acknowledgement = 9;
    socket_->write(&acknowledgement, sizeof acknowledgement);
    socket_->flush();
  }

  std::size_t bytes_;
  Exchange exchange_;
  Server server_{Server::kAnyPort, 1};
  std::unique_ptr<Socket> socket_;
  std::vector<char> block_ = std::vector<char>(kBlock);
  double last_ = 0.0;
  std::jthread thread_;
};

struct SentFrames {
  explicit SentFrames(const Shape& shape) : frame(frameOf(shape)), drain(shape, Drain::takeFrame) {
    if (!protocol.connect("127.0.0.1", drain.port())) throw std::runtime_error("cannot connect");
    drain.start();
  }
  double run() { return protocol.sendFrame(frame) ? drain.last() : 0.0; }

  KilnDebugDrawFrame frame;
  Drain drain;
  KilnDebugDrawProtocol protocol;
};

// The same bytes through a socket, as they are.
struct PlainWrites {
  explicit PlainWrites(const Shape& shape)
      : bytes(recordsOf(shape)), drain(shape, Drain::takeWrites) {
    socket = std::make_unique<Socket>(vxTCP::Address::localhost(drain.port()));
    if (socket->connect()) throw std::runtime_error("cannot connect");
    drain.start();
  }

  double run() {
    for (std::size_t at = 0; at < bytes.size(); at += kBlock)
      socket->write(&bytes[at], std::min(kBlock, bytes.size() - at));
    int acknowledgement;
    return socket->read(&acknowledgement, sizeof acknowledgement) ? 0.0 : drain.last();
  }

  std::vector<char> bytes;
  Drain drain;
  std::unique_ptr<Socket> socket;
};

// The system's calls alone.
struct PlainSend {
  explicit PlainSend(const Shape& shape)
      : bytes(recordsOf(shape)), drain(shape, Drain::takeWrites) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(drain.port()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
      throw std::runtime_error("cannot connect");
    drain.start();
  }
  ~PlainSend() { close(file); }
  PlainSend(const PlainSend&) = delete;
  PlainSend& operator=(const PlainSend&) = delete;

  double run() {
    for (std::size_t at = 0; at < bytes.size(); at += kBlock) {
      const std::size_t size = std::min(kBlock, bytes.size() - at);
      if (send(file, &bytes[at], size, 0) != static_cast<ssize_t>(size)) return 0.0;
    }
    int acknowledgement;
    const auto size = recv(file, &acknowledgement, sizeof acknowledgement, MSG_WAITALL);
    return size == sizeof acknowledgement ? drain.last() : 0.0;
  }

  std::vector<char> bytes;
  Drain drain;
  int file = socket(AF_INET, SOCK_STREAM, 0);
};

template <class Sender>
Contestant sending(const Shape& shape) {
  return contestant([sender = std::make_shared<Sender>(shape)] { return sender->run(); },
                    [](double last) { return Values{last}; });
}

// At least 0.8 of the bytes per second.
constexpr double kSendingRatio = 1.25;

}  // namespace

void addDrawLink(Suite& suite) {
  suite.add({"send points",
             {{1000000, 1}},
             {"writes"},
             [](const Shape&) { return Limits{.named = kSendingRatio}; },
             sending<SentFrames>,
             {{"writes", sending<PlainWrites>}, {"send", sending<PlainSend>}}});
}

}  // namespace bench
