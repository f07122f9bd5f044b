#include <chrono>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <thread>

#include <vx/Filename.h>
#include <vx/SysInfo.h>

#include "tests/support/ChildProcess.h"
#include "tests/support/Reports.h"
#include "tests/support/TraceModel.h"
#include "tools/tracelog/RingFile.h"

namespace {

using kilntest::messageOf;
using kilntest::TemporaryFolder;

std::uint64_t finishedLines(const TemporaryFolder& folder) {
  const std::string bytes = kilntest::readFile(folder.path() / "count");
  std::uint64_t count = 0;
  if (bytes.size() == sizeof count) std::memcpy(&count, bytes.data(), sizeof count);
  return count;
}

std::vector<std::string> messagesIn(const TemporaryFolder& folder) {
  tracelog::RingFile ring(kilntest::ringIn(folder.path()));
  std::vector<std::string> messages;
  for (const tracelog::Line& line : ring.readNewLines()) messages.push_back(messageOf(line.text));
  EXPECT_FALSE(ring.isDamaged());
  EXPECT_TRUE(ring.canFollow());
  return messages;
}

TEST(TraceKill, LeavesEveryFinishedLineWholeAndInOrder) {
  const int kills = std::getenv("KILNTEST_LONG") != nullptr ? 1000 : 200;
  std::mt19937 random(10);
  const std::string child(APP_getBinaryPath("trace_child").view());
  for (int i = 0; i < kills; ++i) {
    const TemporaryFolder folder;
    const std::uint32_t size = i % 2 == 0 ? 512 : 131072;  // two views
    kilntest::ChildProcess process({child, folder.path().string(), std::to_string(size)});
    while (finishedLines(folder) == 0) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
    EXPECT_TRUE(tracelog::isLive(kilntest::ringIn(folder.path())));
    process.kill();
    EXPECT_FALSE(tracelog::isLive(kilntest::ringIn(folder.path())));
    kilntest::TraceModel model(size);
    const std::uint64_t count = finishedLines(folder);
    for (std::uint64_t k = 0; k < count; ++k) model.write(kilntest::traceMessage(k));
    ASSERT_THAT(model.possibleWhileWriting(kilntest::traceMessage(count)),
                testing::Contains(messagesIn(folder)))
        << "kill " << i;
  }
}

// On a processor of its own, the process writes the whole ring many times while it is read once.
TEST(TraceKill, ShowsLinesOfAProcessThatTracesAllTheTime) {
  const TemporaryFolder folder;
  kilntest::RecordedReports reports;
  kilntest::ChildProcess process(
      {std::string(APP_getBinaryPath("trace_child").view()), folder.path().string(), "1024"});
  while (finishedLines(folder) == 0) std::this_thread::yield();
  bool isReported = false;
  for (int i = 0; i < 1000 && !isReported; ++i) {
    tracelog::RingFile ring(kilntest::ringIn(folder.path()));
    EXPECT_THAT(ring.readNewLines(), testing::Not(testing::IsEmpty()));
    EXPECT_FALSE(ring.isDamaged());
    EXPECT_TRUE(ring.canFollow());
    isReported = !reports.takeAll().empty();
  }
  process.kill();
}

}  // namespace
