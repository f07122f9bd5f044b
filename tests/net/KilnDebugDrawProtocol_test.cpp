#include <atomic>
#include <climits>
#include <gtest/gtest.h>
#include <map>
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

// The records of a frame up to its files.
std::string plainRecords() {
  return wire(0) + text("n\xc3\xa4me") + wire(1, 2, 0, 1, -2, 3) + wire(2, Point{1, 2, 3}) +
         wire(2, Point{4, 5, -0.0}) + wire(3, Point{1, 1, 1}, Point{1, 3, -3}) +
         wire(4, Point{7, 8, 9}) + text("</script>") + wire(4, Point{0, 0, 0}) + text("");
}

// The files of a frame and their tags.
std::vector<std::pair<int, std::string>> files() {
  return {{5, fileOf(kilntest::objects())},
          {6, fileOf(kilntest::compactMesh())},
          {7, fileOf(kilntest::topoMesh())}};
}

// A protocol, its peer as a plain socket, and a folder of temporary files.
class KilnDebugDrawProtocolTest : public ::testing::Test {
 protected:
  KilnDebugDrawProtocolTest() {
    kilntest::setEnvironment("TMPDIR", folder.path().string());
    connect();
  }
  ~KilnDebugDrawProtocolTest() override { received.clear(true); }

  void connect(Interval limit = kLong) {
    kilntest::SocketPair pair;
    peer = std::move(pair.far);
    protocol.setTimeout(limit);
    protocol.setSocket(std::move(pair.near));
  }
  void send(const std::string& bytes) {
    peer->write(bytes.data(), bytes.size());
    peer->flush();
  }
  // The content of the file whose path comes next.
  std::string readNamedFile() {
    CString path;
    EXPECT_EQ(peer->read(path).code(), 0);
    return kilntest::readFile(path.c_str());
  }
  // The record of a file with these bytes.
  std::string record(int tag, const std::string& bytes) {
    return wire(tag) + text(folder.write(std::to_string(tag), bytes).string());
  }
  std::string wholeFrame() {
    std::string bytes = plainRecords();
    for (const auto& [tag, content] : files()) bytes += record(tag, content);
    return bytes + kEnd;
  }
  // Whether a frame of these bytes, and then nothing more, is received.
  bool receives(const std::string& bytes) {
    connect();
    send(bytes);
    if (!bytes.ends_with(kEnd)) peer.reset();
    return protocol.recvFrame(received);
  }
  void expectRefused(const std::string& bytes) {
    char byte;
    EXPECT_FALSE(receives(bytes + kEnd)) << ::testing::PrintToString(bytes);
    EXPECT_NE(peer->read(&byte, 1).code(), 0);
  }

  kilntest::KeptEnvironment kept{"TMPDIR"};
  kilntest::TemporaryFolder folder;
  std::unique_ptr<Socket> peer;
  KilnDebugDrawProtocol protocol;
  Frame received;
};

TEST_F(KilnDebugDrawProtocolTest, ReceivesAndSendsTheseBytes) {
  EXPECT_TRUE(receives(wholeFrame()));
  EXPECT_EQ(readBytes(*peer, 4), wire(9));
  EXPECT_EQ(folder.names(), "");
  EXPECT_EQ(received.marks.back(), (Frame::Mark{-2, 3}));
  EXPECT_EQ(received.lines.front(), vxLinear::ParamLine({1, 1, 1}, {0, 2, -4}));
  EXPECT_EQ(dynamic_cast<vxgk::Curve&>(*received.curves.front()), kilntest::quarter());
  EXPECT_EQ(*received.topoMeshes.front(), kilntest::topoMesh());
  std::atomic<bool> isSent = false;
  std::thread sender([&] {
    EXPECT_TRUE(protocol.sendFrame(received));
    isSent = true;
  });
  EXPECT_EQ(readBytes(*peer, plainRecords().size()), plainRecords());
  for (const auto& [tag, content] : files()) {
    EXPECT_EQ(readBytes(*peer, 4), wire(tag));
    EXPECT_EQ(readNamedFile(), content) << tag;
  }
  EXPECT_EQ(readBytes(*peer, 4), kEnd);
  EXPECT_FALSE(peer->waitForInput(Interval(0.05)));
  EXPECT_FALSE(isSent);
  send(wire(77));
  sender.join();
}

TEST_F(KilnDebugDrawProtocolTest, FileOfNoObjectsIsEmpty) {
  Frame frame;
  frame.curves.push_back(nullptr);
  frame.topoMeshes.push_back(nullptr);
  std::thread sender([&] { EXPECT_TRUE(protocol.sendFrame(frame)); });
  EXPECT_EQ(readBytes(*peer, 20), wire(0, 0, 1, 0, 5));
  EXPECT_EQ(readNamedFile(), "");
  EXPECT_EQ(readBytes(*peer, 4), kEnd);
  send(wire(9));
  sender.join();
  EXPECT_EQ(folder.names().size(), 15U);
  EXPECT_TRUE(receives(record(5, "") + kEnd));
  EXPECT_EQ(readBytes(*peer, 4), wire(9));
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "5"));
}

TEST_F(KilnDebugDrawProtocolTest, FramesTravelBothWaysBetweenTwoProtocols) {
  auto server = std::make_unique<vxTCP::Server>(vxTCP::Server::kAnyPort, 1);
  EXPECT_EQ(server->listen().code(), 0);
  const int port = server->getPort();
  EXPECT_FALSE(KilnDebugDrawProtocol().listen(port));
  server.reset();
  Frame frame;
  frame.name = "there and back";
  std::thread other([&] {
    KilnDebugDrawProtocol listening;
    Frame got;
    EXPECT_TRUE(listening.listen(port));
    EXPECT_FALSE(KilnDebugDrawProtocol().connect("127.0.0.1", port));
    EXPECT_TRUE(listening.waitForFrame());
    EXPECT_TRUE(listening.recvFrame(got));
    EXPECT_TRUE(listening.sendFrame(got));
    EXPECT_FALSE(listening.recvFrame(got));
  });
  while (!protocol.connect("127.0.0.1", port)) std::this_thread::yield();
  EXPECT_FALSE(protocol.waitForFrame(Interval(0.01)));
  EXPECT_TRUE(protocol.sendFrame(frame));
  EXPECT_TRUE(protocol.recvFrame(received));
  EXPECT_EQ(received.name, frame.name);
  protocol.setSocket(nullptr);
  other.join();
  EXPECT_EQ(folder.names(), "");
}

TEST_F(KilnDebugDrawProtocolTest, ReceivedFramesAreAppendedAndUnknownPartsSkipped) {
  auto objects = kilntest::objects();
  objects.insert(objects.begin(),
                 std::make_unique<vxgk::ForeignObject>(12, std::vector(3, std::byte{})));
  for (int i = 1; i <= 2; ++i) {
    EXPECT_TRUE(
        receives(wire(9, 10, INT_MAX) + plainRecords() + record(5, fileOf(objects)) + kEnd));
    EXPECT_EQ(received.getListSize(Frame::kPoints), 2 * i);
    for (const auto list :
         {Frame::kCurves, Frame::kSurfaces, Frame::kTrimmedSurfaces, Frame::kShells})
      EXPECT_EQ(received.getListSize(list), i) << list;
  }
}

TEST_F(KilnDebugDrawProtocolTest, CutAtEveryByteFailsAndKeepsWhatCame) {
  const std::size_t size = wholeFrame().size();
  for (std::size_t cut = 0; cut < size; ++cut) {
    received.clear(true);
    EXPECT_FALSE(receives(wholeFrame().substr(0, cut))) << cut;
    EXPECT_EQ(received.points.size(), (cut >= 65U ? 1U : 0U) + (cut >= 93U ? 1U : 0U)) << cut;
  }
  EXPECT_EQ(received.topoMeshes.size(), 1U);
}

TEST_F(KilnDebugDrawProtocolTest, LyingFramesEndTheConnection) {
  for (const std::string& bytes :
       {wire(-1), wire(INT_MIN), wire(0, -1), wire(0, INT_MAX), wire(1, -1), wire(4, Point{}, -2),
        wire(5, -1), wire(5) + text(""), wire(6) + text(std::string("a\0b", 3)),
        wire(5) + text(folder.path().string())})
    expectRefused(bytes);
  protocol.setFrameLimit(1000);
  EXPECT_TRUE(receives(wire(0) + text(std::string(988, 'x')) + kEnd));
  expectRefused(wire(0) + text(std::string(989, 'x')));
  expectRefused(record(5, fileOf(kilntest::objects())));
  expectRefused(wire(1, INT_MAX) + std::string(2000, '\0'));
}

TEST_F(KilnDebugDrawProtocolTest, EmptyFilesStandForNothingAndGo) {
  EXPECT_TRUE(receives(record(5, "") + record(6, "") + record(7, "") + kEnd));
  EXPECT_EQ(folder.names(), "");
  EXPECT_EQ(*received.compactMeshes.front(), vxGeom::CompactMesh());
  EXPECT_EQ(*received.topoMeshes.front(), vxGeom::TopoMesh());
}

TEST_F(KilnDebugDrawProtocolTest, LeavesFilesAloneWhenToldSo) {
  protocol.setReadsFiles(false);
  EXPECT_TRUE(receives(record(5, "") + record(6, "compact") + record(7, "topo") + kEnd));
  EXPECT_EQ(folder.names(), "5 6 7 ");
  EXPECT_EQ(received.getListSize(Frame::kCompactMeshes), 0);
}

TEST_F(KilnDebugDrawProtocolTest, FilesThatAreNotWhatTheyShouldBeStay) {
  const std::string objects = files()[0].second, compact = files()[1].second,
                    topo = files()[2].second;
  const std::map<int, std::vector<std::string>> wrong = {
      {5, {"text", compact, objects.substr(0, objects.size() - 32), objects + "x"}},
      {6, {topo, objects, compact + "x"}},
      {7, {compact, topo.substr(0, topo.size() - 1)}}};
  for (const auto& [tag, contents] : wrong) {
    for (const std::string& bytes : contents) {
      expectRefused(record(tag, bytes));
      EXPECT_EQ(kilntest::readFile(folder.path() / std::to_string(tag)), bytes) << tag;
    }
  }
  EXPECT_EQ(received.getListSize(Frame::kCompactMeshes), 0);
}

TEST_F(KilnDebugDrawProtocolTest, FailingSenderRemovesItsFiles) {
  EXPECT_TRUE(receives(wholeFrame()));
  peer.reset();
  EXPECT_FALSE(protocol.sendFrame(received));
  EXPECT_EQ(folder.names(), "");
  connect();
  kilntest::setEnvironment("TMPDIR", (folder.path() / "none").string());
  EXPECT_FALSE(protocol.sendFrame(received));
  EXPECT_FALSE(peer->waitForInput(Interval(0.01)));
}

TEST_F(KilnDebugDrawProtocolTest, StalledPeerEndsTheConnection) {
  Frame large;
  large.points.resize(1'000'000);
  for (const Frame& frame : {Frame(), large}) {
    connect(Interval(0.05));
    EXPECT_FALSE(protocol.sendFrame(frame));
    EXPECT_EQ(folder.names(), "");
    EXPECT_FALSE(protocol.sendFrame(Frame()));
  }
  connect(Interval(0.05));
  send(wire(0, 3));
  EXPECT_FALSE(protocol.recvFrame(received));
  char byte;
  EXPECT_EQ(peer->read(&byte, 1).code(), vxTCP::kClosed);
}

TEST_F(KilnDebugDrawProtocolTest, InterruptEndsAWait) {
  std::thread waiting([&] { EXPECT_FALSE(protocol.recvFrame(received)); });
  protocol.interrupt();
  waiting.join();
  EXPECT_FALSE(protocol.sendFrame(Frame()));
}

}  // namespace
