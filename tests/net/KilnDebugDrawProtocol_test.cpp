#include <atomic>
#include <climits>
#include <gtest/gtest.h>
#include <thread>

#include <kilnbase/net/KilnDebugDrawProtocol.h>

#include "tests/support/Environment.h"
#include "tests/support/Geometry.h"
#include "tests/support/SocketPair.h"

namespace {

using kilntest::fileOf;
using kilntest::kLong;
using kilntest::readBytes;
using vxKilnBase::KilnDebugDrawProtocol;
using vxLinear::Point;
using vxString::CString;
using vxTCP::Socket;
using vxUtil::Interval;
using Frame = vxKilnBase::KilnDebugDrawFrame;

// The bytes of values on the wire.
template <class... Values>
std::string wire(const Values&... values) {
  std::string bytes;
  (bytes.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
  return bytes;
}

std::string text(const std::string& characters) {
  return wire(static_cast<int>(characters.size())) + characters;
}

const std::string kEnd = wire(8);

// A protocol, its peer as a plain socket, and a folder of temporary files.
class KilnDebugDrawProtocolTest : public ::testing::Test {
 protected:
  KilnDebugDrawProtocolTest() {
    kilntest::setEnvironment("TMPDIR", folder.path().string());
    connect();
  }
  ~KilnDebugDrawProtocolTest() override { received.clear(true); }

  void connect() {
    kilntest::SocketPair pair;
    peer = std::move(pair.far);
    protocol.setTimeout(kLong);
    protocol.setSocket(std::move(pair.near));
  }
  void send(const std::string& bytes) {
    peer->write(bytes.data(), bytes.size());
    peer->flush();
  }
  std::string readText() {
    CString read;
    EXPECT_EQ(peer->read(read).code(), 0);
    return read.c_str();
  }
  // The path of a file with these bytes, as a text on the wire.
  std::string file(const std::string& name, const std::string& bytes) {
    return text(folder.write(name, bytes).string());
  }
  // Whether a frame of these bytes, and then nothing more, is received.
  bool receives(const std::string& bytes) {
    connect();
    send(bytes);
    if (!bytes.ends_with(kEnd)) peer.reset();
    return protocol.recvFrame(received);
  }
  bool peerSeesTheEnd() {
    char byte;
    return peer->read(&byte, 1).code() != 0;
  }

  kilntest::KeptEnvironment kept{"TMPDIR"};
  kilntest::TemporaryFolder folder;
  std::unique_ptr<Socket> peer;
  KilnDebugDrawProtocol protocol;
  Frame received;
};

// All kinds of objects and meshes, which it owns.
struct FullFrame : Frame {
  FullFrame() {
    name = "n\xc3\xa4me";
    marks = {{0, 1}, {-2, 3}};
    points = {{1, 2, 3}, {4, 5, -0.0}};
    lines.push_back({{1, 1, 1}, {0, 2, -4}});
    labels = {{{7, 8, 9}, "</script>"}, {{0, 0, 0}, ""}};
    auto made = kilntest::objects();
    curves.push_back(made[0].release());
    surfaces.push_back(made[1].release());
    trimmedSurfaces.push_back(made[2].release());
    shells.push_back(made[3].release());
    compactMeshes.push_back(new vxGeom::CompactMesh(kilntest::compactMesh()));
    topoMeshes.push_back(new vxGeom::TopoMesh(kilntest::topoMesh()));
  }
  FullFrame(const FullFrame&) = delete;
  FullFrame& operator=(const FullFrame&) = delete;
  ~FullFrame() { clear(true); }
};

// The records of `FullFrame` up to its files.
std::string plainRecords() {
  return wire(0) + text("n\xc3\xa4me") + wire(1, 2, 0, 1, -2, 3) + wire(2, Point{1, 2, 3}) +
         wire(2, Point{4, 5, -0.0}) + wire(3, Point{1, 1, 1}, Point{1, 3, -3}) +
         wire(4, Point{7, 8, 9}) + text("</script>") + wire(4, Point{0, 0, 0}) + text("");
}

void expectEqual(const Frame& frame, const Frame& expected) {
  EXPECT_EQ(frame.name, expected.name);
  EXPECT_EQ(frame.marks, expected.marks);
  EXPECT_EQ(frame.points, expected.points);
  EXPECT_EQ(frame.lines, expected.lines);
  EXPECT_EQ(frame.labels, expected.labels);
  for (int type = 0; type < 9; ++type) {
    const auto list = static_cast<Frame::DataType>(type);
    EXPECT_EQ(frame.getListSize(list), expected.getListSize(list)) << type;
  }
}

TEST_F(KilnDebugDrawProtocolTest, SendsTheseBytes) {
  const FullFrame frame;
  std::atomic<int> sent = -1;
  std::thread sender([&] { sent = protocol.sendFrame(frame) ? 1 : 0; });
  EXPECT_EQ(readBytes(*peer, plainRecords().size()), plainRecords());
  EXPECT_EQ(readBytes(*peer, 4), wire(5));
  EXPECT_EQ(kilntest::readFile(readText()), fileOf(kilntest::objects()));
  EXPECT_EQ(readBytes(*peer, 4), wire(6));
  EXPECT_EQ(kilntest::readFile(readText()), fileOf(kilntest::compactMesh()));
  EXPECT_EQ(readBytes(*peer, 4), wire(7));
  EXPECT_EQ(kilntest::readFile(readText()), fileOf(kilntest::topoMesh()));
  EXPECT_EQ(readBytes(*peer, 4), kEnd);
  EXPECT_FALSE(peer->waitForInput(Interval(0.05)));
  EXPECT_EQ(sent, -1);
  send(wire(77));
  sender.join();
  EXPECT_EQ(sent, 1);
}

TEST_F(KilnDebugDrawProtocolTest, EmptyFrameHasAnEmptyFile) {
  Frame frame;
  frame.curves.push_back(nullptr);
  frame.topoMeshes.push_back(nullptr);
  std::thread sender([&] { EXPECT_TRUE(protocol.sendFrame(frame)); });
  EXPECT_EQ(readBytes(*peer, 20), wire(0, 0, 1, 0, 5));
  const std::string path = readText();
  EXPECT_TRUE(std::filesystem::is_empty(path));
  EXPECT_EQ(readBytes(*peer, 4), kEnd);
  send(wire(9));
  sender.join();
  EXPECT_TRUE(receives(wire(0, 0, 1, 0, 5) + text(path) + kEnd));
  EXPECT_EQ(readBytes(*peer, 4), wire(9));
  EXPECT_EQ(folder.names(), "");
}

TEST_F(KilnDebugDrawProtocolTest, FramesTravelBothWaysBetweenTwoProtocols) {
  auto server = std::make_unique<vxTCP::Server>(vxTCP::Server::kAnyPort, 1);
  EXPECT_EQ(server->listen().code(), 0);
  const int port = server->getPort();
  EXPECT_FALSE(KilnDebugDrawProtocol().listen(port));
  server.reset();
  const FullFrame frame;
  std::thread other([&] {
    KilnDebugDrawProtocol listening;
    Frame got;
    EXPECT_TRUE(listening.listen(port));
    EXPECT_FALSE(KilnDebugDrawProtocol().connect("127.0.0.1", port));
    EXPECT_TRUE(listening.waitForFrame());
    EXPECT_TRUE(listening.recvFrame(got));
    EXPECT_TRUE(listening.sendFrame(got));
    EXPECT_FALSE(listening.recvFrame(got));
    got.clear(true);
  });
  while (!protocol.connect("127.0.0.1", port)) std::this_thread::yield();
  EXPECT_FALSE(protocol.waitForFrame(Interval(0.01)));
  EXPECT_TRUE(protocol.sendFrame(frame));
  EXPECT_TRUE(protocol.recvFrame(received));
  expectEqual(received, frame);
  EXPECT_EQ(dynamic_cast<vxgk::Curve&>(*received.curves.front()), kilntest::quarter());
  EXPECT_EQ(*received.topoMeshes.front(), kilntest::topoMesh());
  protocol.setSocket(nullptr);
  other.join();
  EXPECT_FALSE(protocol.sendFrame(frame));
  EXPECT_FALSE(protocol.recvFrame(received));
  EXPECT_EQ(folder.names(), "");
}

TEST_F(KilnDebugDrawProtocolTest, ReceivedFramesAreAppendedAndUnknownPartsSkipped) {
  auto objects = kilntest::objects();
  objects.insert(objects.begin(),
                 std::make_unique<vxgk::ForeignObject>(12, std::vector(3, std::byte{})));
  received.points.push_back({});
  EXPECT_TRUE(receives(wire(9, 10, INT_MAX) + plainRecords() + wire(5) +
                       file("a", fileOf(objects)) + wire(5) +
                       file("b", fileOf(kilntest::objects())) + kEnd));
  EXPECT_EQ(readBytes(*peer, 4), wire(9));
  EXPECT_EQ(folder.names(), "");
  EXPECT_EQ(received.points, (std::list<Point>{{}, {1, 2, 3}, {4, 5, -0.0}}));
  for (const auto* list :
       {&received.curves, &received.surfaces, &received.trimmedSurfaces, &received.shells})
    EXPECT_EQ(list->size(), 2U);
}

TEST_F(KilnDebugDrawProtocolTest, CutAtEveryByteFailsAndKeepsWhatCame) {
  const auto whole = [this] {
    return plainRecords() + wire(6) + file("a", fileOf(kilntest::compactMesh())) + wire(7) +
           file("b", fileOf(kilntest::topoMesh())) + wire(5) +
           file("c", fileOf(kilntest::objects())) + kEnd;
  };
  const std::size_t size = whole().size();
  for (std::size_t cut = 0; cut < size; ++cut) {
    received.clear(true);
    received.marks.clear();
    EXPECT_FALSE(receives(whole().substr(0, cut))) << cut;
    EXPECT_EQ(received.points.size(), (cut >= 65U ? 1U : 0U) + (cut >= 93U ? 1U : 0U)) << cut;
  }
  expectEqual(received, FullFrame());
  EXPECT_FALSE(received.shells.empty());
}

TEST_F(KilnDebugDrawProtocolTest, LyingFramesEndTheConnection) {
  const std::string label = wire(4, Point{});
  for (const std::string& bytes :
       {wire(-1), wire(INT_MIN), wire(0, -1), wire(0, INT_MAX), wire(1, -1), label + wire(-2),
        wire(5, -1), wire(5) + text(""), wire(6) + text(std::string("a\0b", 3))}) {
    EXPECT_FALSE(receives(bytes + kEnd)) << ::testing::PrintToString(bytes);
    EXPECT_TRUE(peerSeesTheEnd());
  }
  protocol.setFrameLimit(1000);
  EXPECT_TRUE(receives(wire(0) + text(std::string(988, 'x')) + kEnd));
  EXPECT_FALSE(receives(wire(0) + text(std::string(989, 'x')) + kEnd));
  EXPECT_FALSE(receives(
      wire(6) + file("file", fileOf(kilntest::compactMesh()) + std::string(999, 'x')) + kEnd));
  EXPECT_FALSE(receives(wire(1, INT_MAX) + std::string(2000, '\0') + kEnd));
}

TEST_F(KilnDebugDrawProtocolTest, FilesThatAreNotWhatTheyShouldBeStay) {
  const std::string objects = fileOf(kilntest::objects()),
                    compact = fileOf(kilntest::compactMesh()), topo = fileOf(kilntest::topoMesh());
  const std::vector<std::pair<int, std::string>> files = {
      {5, "text"},
      {5, compact},
      {5, objects.substr(0, objects.size() - 32)},
      {5, objects + "x"},
      {6, ""},
      {6, topo},
      {6, objects},
      {6, compact + "x"},
      {7, ""},
      {7, compact},
      {7, topo.substr(0, topo.size() - 1)}};
  for (const auto& [tag, bytes] : files) {
    EXPECT_FALSE(receives(wire(tag) + file("file", bytes) + kEnd)) << tag << " " << bytes.size();
    EXPECT_TRUE(peerSeesTheEnd());
    EXPECT_EQ(kilntest::readFile(folder.path() / "file"), bytes);
  }
  EXPECT_FALSE(receives(wire(5) + text(folder.path().string()) + kEnd));
  EXPECT_EQ(received.getListSize(Frame::kCompactMeshes), 0);
}

TEST_F(KilnDebugDrawProtocolTest, FailingSenderRemovesItsFiles) {
  const FullFrame frame;
  peer.reset();
  EXPECT_FALSE(protocol.sendFrame(frame));
  EXPECT_EQ(folder.names(), "");
  connect();
  kilntest::setEnvironment("TMPDIR", (folder.path() / "none").string());
  EXPECT_FALSE(protocol.sendFrame(frame));
  EXPECT_FALSE(peer->waitForInput(Interval(0.01)));
}

TEST_F(KilnDebugDrawProtocolTest, StalledPeerEndsTheConnection) {
  Frame large;
  large.points.resize(1'000'000);
  for (const Frame& frame : {Frame(), large}) {
    connect();
    protocol.setTimeout(Interval(0.05));
    EXPECT_FALSE(protocol.sendFrame(frame));
    EXPECT_EQ(folder.names(), "");
    EXPECT_FALSE(protocol.sendFrame(Frame()));
  }
  connect();
  protocol.setTimeout(Interval(0.05));
  send(wire(0, 3));
  EXPECT_FALSE(protocol.recvFrame(received));
  EXPECT_TRUE(peerSeesTheEnd());
}

TEST_F(KilnDebugDrawProtocolTest, InterruptEndsAWait) {
  std::thread waiting([&] { EXPECT_FALSE(protocol.recvFrame(received)); });
  protocol.interrupt();
  waiting.join();
  EXPECT_FALSE(protocol.sendFrame(Frame()));
}

}  // namespace
