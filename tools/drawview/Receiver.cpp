#include "tools/drawview/Receiver.h"

#include <chrono>
#include <exception>
#include <utility>

#include "tools/drawview/InputError.h"

namespace drawview {

using vxKilnBase::KilnDebugDrawFrame;
using vxKilnBase::KilnDebugDrawProtocol;
using vxUtil::Interval;

namespace {

constexpr int kMostWaiting = 16;
const Interval kTick(0.1);
constexpr std::chrono::milliseconds kPause(100);

// A frame whose objects go with it.
class OwnedFrame {
 public:
  OwnedFrame() = default;
  ~OwnedFrame() { frame.clear(true); }
  OwnedFrame(const OwnedFrame&) = delete;
  OwnedFrame& operator=(const OwnedFrame&) = delete;

  bool isEmpty() const {
    int size = static_cast<int>(frame.marks.size());
    for (int type = KilnDebugDrawFrame::kPoints; type <= KilnDebugDrawFrame::kTopoMeshes; ++type)
      size += frame.getListSize(static_cast<KilnDebugDrawFrame::DataType>(type)) > 0 ? 1 : 0;
    return size == 0 && frame.name.isEmpty();
  }

  KilnDebugDrawFrame frame;
};

}  // namespace

Receiver::Receiver(const ReceiverSettings& settings)
    : settings_(settings), server_(settings.port, kMostWaiting) {
  server_.setAddress(settings.host.c_str());
  if (const vxUtil::Error error = server_.listen())
    throw InputError("cannot wait for senders on " + settings.host + " port " +
                     std::to_string(settings.port) + ": " + error.message().c_str());
}

void Receiver::start(ReceiverEvents events) {
  events_ = std::move(events);
  thread_ = std::thread([this] { run(); });
}

Receiver::~Receiver() {
  mustStop_ = true;
  {
    const std::lock_guard lock(guard_);
    if (current_ != nullptr) current_->interrupt();
  }
  if (thread_.joinable()) thread_.join();
}

void Receiver::run() {
  while (!mustStop_) {
    std::unique_ptr<vxTCP::Socket> socket;
    if (server_.accept(socket, kTick))
      std::this_thread::sleep_for(kPause);  // the system may be short of descriptors
    if (socket) welcome(std::move(socket));
  }
}

void Receiver::welcome(std::unique_ptr<vxTCP::Socket> socket) {
  const bool isSameUser = socket->peerIsSameUser();
  if (isSameUser || !isLoopback())
    serve(std::move(socket), isSameUser);
  else
    events_.trouble("a connection was refused: its sender has ended or belongs to another user");
}

bool Receiver::isLoopback() const {
  return settings_.host.starts_with("127.") || settings_.host == "::1" ||
         settings_.host == "localhost";
}

void Receiver::serve(std::unique_ptr<vxTCP::Socket> socket, bool isSameUser) {
  KilnDebugDrawProtocol sender;
  sender.setReadsFiles(isSameUser);
  sender.setSocket(std::move(socket));
  sender.setFrameLimit(settings_.mostFrameBytes);
  {
    const std::lock_guard lock(guard_);
    current_ = &sender;
  }
  events_.sender(true);
  while (!mustStop_ && receive(sender)) {
  }
  {
    const std::lock_guard lock(guard_);
    current_ = nullptr;
  }
  events_.sender(false);
}

// False when the sender has ended.
bool Receiver::receive(KilnDebugDrawProtocol& sender) {
  OwnedFrame received;
  try {
    if (!sender.waitForFrame(kTick)) return true;
    if (sender.recvFrame(received.frame)) {
      events_.frame(received.frame);
      return true;
    }
    if (!received.isEmpty() && !mustStop_)
      events_.trouble("a sender broke off within a frame, which is dropped");
  } catch (const std::exception&) {
    events_.trouble("there is not enough memory for a frame, which is dropped");
  }
  return false;
}

}  // namespace drawview
