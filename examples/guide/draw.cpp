// The program of docs/guide/draw.md.
#include <memory>
#include <thread>

#include <kilnbase/net/KilnDebugDrawProtocol.h>
#include <vx/Error.h>
#include <vx/KernelObject.h>
#include <vx/Mesh.h>
#include <vx/Tcp.h>

#include "examples/guide/expect.h"

namespace {

using guide::expect;
using vxKilnBase::KilnDebugDrawFrame;
using vxKilnBase::KilnDebugDrawProtocol;

//! [shortest]
// Draws the frame in the viewer that waits on this port. Without a viewer nothing happens.
bool show(const KilnDebugDrawFrame& frame, int port) {
  KilnDebugDrawProtocol viewer;
  return viewer.connect("127.0.0.1", port) && viewer.sendFrame(frame);
}
//! [shortest]

//! [owner]
class Drawing {  // owns the objects and meshes of its frame
 public:
  Drawing() = default;
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;
  ~Drawing() { frame.clear(true); }
  KilnDebugDrawFrame frame;
};
//! [owner]

void fill(KilnDebugDrawFrame& frame) {
  //! [fill]
  frame.name = "offset, pass 2";
  frame.points.push_back({1.0, 2.0, 3.0});
  frame.lines.push_back({{1.0, 2.0, 3.0}, {0.0, 0.0, 0.5}});  // from a point, along a vector
  frame.labels.push_back({{1.0, 2.0, 3.0}, "start"});
  auto curve = std::make_unique<vxgk::Curve>(1, vx::vector<double>{0, 0, 1, 1},
                                             vx::vector<vxLinear::Point>{{0, 0, 0}, {4, 2, 0}});
  frame.curves.push_back(curve.release());
  const vx::vector<vxLinear::Point> corners = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  auto mesh = std::make_unique<vxGeom::CompactMesh>(
      corners, vx::vector<vxGeom::CompactMesh::Triangle>{{0, 1, 2}});
  frame.compactMeshes.push_back(mesh.release());
  //! [fill]
}

void noViewer() {
  KilnDebugDrawFrame frame;
  expect(!show(frame, 1));
}

//! [viewer]
// A viewer of one frame: what drawview does for every program that comes.
class Viewer {
 public:
  Viewer() : server_(vxTCP::Server::kAnyPort, 1) {
    server_.setLoopbackOnly();
    expect(!server_.listen());
    thread_ = std::thread([this] { receive(); });
  }
  ~Viewer() {
    if (thread_.joinable()) thread_.join();
  }
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

  int port() const { return server_.getPort(); }
  bool wait() {
    thread_.join();
    return hasReceived_;
  }

  Drawing received;

 private:
  void receive() {
    std::unique_ptr<vxTCP::Socket> peer;
    if (server_.accept(peer, kLongest) || !peer || !peer->peerIsSameUser()) return;
    KilnDebugDrawProtocol sender;
    sender.setSocket(std::move(peer));
    sender.setFrameLimit(1 << 20);  // what arrives is bounded
    hasReceived_ = sender.waitForFrame(kLongest) && sender.recvFrame(received.frame);
  }

  static constexpr double kLongestSeconds = 20.0;
  inline static const vxUtil::Interval kLongest{kLongestSeconds};
  vxTCP::Server server_;
  bool hasReceived_ = false;
  std::thread thread_;
};
//! [viewer]

void there() {
  //! [there]
  Viewer viewer;
  Drawing drawing;
  fill(drawing.frame);
  expect(show(drawing.frame, viewer.port()));  // true: the viewer has read everything
  expect(viewer.wait());
  const KilnDebugDrawFrame& seen = viewer.received.frame;
  expect(seen.name == "offset, pass 2");
  expect(seen.labels.front().text == "start");
  expect(seen.getListSize(KilnDebugDrawFrame::kCurves) == 1);
  expect(*seen.compactMeshes.front() == *drawing.frame.compactMeshes.front());
  //! [there]
}

void marks() {
  //! [marks]
  KilnDebugDrawFrame all, step;
  all.points.push_back({0, 0, 0});
  step.points.push_back({1, 0, 0});
  step.marks.push_back({KilnDebugDrawFrame::kPoints, 0});
  all.add(step);  // appends the lists; marks follow their elements
  expect(all.points.size() == 2);
  expect(all.marks.front().index == 1);
  //! [marks]
}

}  // namespace

int main() {
  noViewer();
  there();
  marks();
}
