#include <atomic>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include <kilnbase/net/KilnDebugDrawProtocol.h>
#include <vx/SysInfo.h>

#include "tests/support/ChildProcess.h"
#include "tests/support/Environment.h"
#include "tests/support/SocketPair.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/drawviewProcess.h"
#include "tools/drawview/Viewer.h"

namespace {

using drawview::Options;
using drawview::Viewer;
using kilntest::TemporaryFolder;
using vxKilnBase::KilnDebugDrawFrame;
using vxKilnBase::KilnDebugDrawProtocol;

KilnDebugDrawFrame frameNamed(const std::string& name, std::size_t points = 1) {
  KilnDebugDrawFrame frame;
  frame.name = name.c_str();
  for (std::size_t i = 0; i < points; ++i) frame.points.push_back({1.0, 2.0, 3.0});
  return frame;
}

class DrawviewSenders : public testing::Test {
 protected:
  DrawviewSenders() {
    options_.listenPort = 0;
    options_.record = folder_.path() / "frames";
    kilntest::setEnvironment("TMPDIR", folder_.path().string());
  }

  // The names in the recording once it has `count` frames.
  std::vector<std::string> recordedNames(std::size_t count) const {
    drawview::RecordingContents contents;
    for (int i = 0; i < 2000 && contents.frames.size() < count; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      std::ifstream file(options_.record, std::ios::binary);
      contents = drawview::scanRecording(file);
    }
    EXPECT_TRUE(contents.damages.empty());
    std::vector<std::string> names;
    for (const auto& frame : contents.frames) names.push_back(frame.name);
    return names;
  }

  const kilntest::KeptEnvironment kept_{"TMPDIR"};
  TemporaryFolder folder_;
  Options options_;
};

// Sends the bytes, and ends the connection.
void sendBytes(const Viewer& viewer, const std::string& bytes) {
  vxTCP::Socket socket(vxTCP::Address::localhost(viewer.senderPort()));
  EXPECT_FALSE(socket.connect(kilntest::kLong));
  EXPECT_FALSE(socket.write(bytes.data(), bytes.size()));
  EXPECT_FALSE(socket.flush());
  socket.waitForInput(vxUtil::Interval(0.2));  // for the end, when the viewer ends the connection
}

TEST_F(DrawviewSenders, AreServedAfterOthersThatCrashOrLie) {
  Viewer viewer(options_);
  const std::string beginning("\0\0\0\0\1\0\0\0x", 9);  // the name "x"
  const std::string lies[] = {
      "",
      beginning,
      beginning + std::string("\1\0\0\0\xff\xff\xff\x7f", 8),
      beginning + std::string("\0\0\0\0\xff\xff\xff\xff", 8),
      beginning + std::string("\6\0\0\0\x0b\0\0\0/etc/passwd", 19),
  };
  for (const std::string& bytes : lies) {
    sendBytes(viewer, bytes);
    KilnDebugDrawProtocol sender;
    ASSERT_TRUE(sender.connect("127.0.0.1", viewer.senderPort()));
    EXPECT_TRUE(sender.sendFrame(frameNamed("whole")));
  }
  EXPECT_THAT(recordedNames(5), testing::ElementsAre("whole", "whole", "whole", "whole", "whole"));
  EXPECT_THAT(viewer.takeNotes(),
              testing::Each(testing::AnyOf(testing::HasSubstr("broke off within a frame"),
                                           testing::HasSubstr("its sender has ended"))));
}

TEST_F(DrawviewSenders, LoseFramesThatAreTooLarge) {
  constexpr std::uint64_t kMemory = 65536;
  Viewer viewer(options_, kMemory);
  KilnDebugDrawProtocol sender;
  ASSERT_TRUE(sender.connect("127.0.0.1", viewer.senderPort()));
  EXPECT_TRUE(sender.sendFrame(frameNamed("small", 2000)));
  // On its way shorter than in memory, as the message has escapes for every byte of the name.
  EXPECT_TRUE(sender.sendFrame(frameNamed(std::string(20000, '\1'))));
  EXPECT_TRUE(sender.sendFrame(frameNamed("small too")));
  EXPECT_THAT(recordedNames(2), testing::ElementsAre("small", "small too"));
  EXPECT_FALSE(sender.sendFrame(frameNamed("large", 20000)));
  EXPECT_THAT(viewer.takeNotes(),
              testing::Contains(testing::HasSubstr("larger than the memory for all frames")));
}

TEST_F(DrawviewSenders, FindNoViewerWhoseRecordingCannotBeMade) {
  std::ofstream(options_.record) << "dear";
  EXPECT_THROW(Viewer viewer(options_), drawview::InputError);
  options_.force = true;
  const Viewer viewer(options_);
  options_.listenPort = viewer.senderPort();
  Options other = options_;
  other.record = folder_.write("other", "dear");
  EXPECT_THROW(Viewer second(other), drawview::InputError);
  EXPECT_EQ(kilntest::readFile(other.record), "dear");
}

TEST_F(DrawviewSenders, LeaveAWholeRecordingWhenTheViewerIsKilled) {
  const int kills = std::getenv("KILNTEST_LONG") != nullptr ? 200 : 10;
  const std::string program(APP_getBinaryPath("drawview").view());
  for (int i = 0; i < kills; ++i) {
    std::filesystem::remove(options_.record);
    const int port = kilntest::freePort();
    kilntest::ChildProcess process(
        {program, "--listen", std::to_string(port), "--record", options_.record.string()});
    KilnDebugDrawProtocol sender;
    ASSERT_TRUE(kilntest::connectsSoon(sender, port));
    std::atomic<std::size_t> sent = 0;
    std::thread killer([&process, &sent, i] {
      for (int k = 0; k < 20000 && sent == 0; ++k)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      std::this_thread::sleep_for(std::chrono::milliseconds(7 * i % 20));
      process.kill();
    });
    while (sender.sendFrame(frameNamed("frame", 1000))) ++sent;
    killer.join();
    std::ifstream file(options_.record, std::ios::binary);
    const auto contents = drawview::scanRecording(file);
    EXPECT_TRUE(contents.damages.empty());
    EXPECT_GT(sent, 0u);
    EXPECT_GE(contents.frames.size() + 1, sent);
  }
}

}  // namespace
