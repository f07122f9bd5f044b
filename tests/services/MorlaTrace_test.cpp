#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <thread>

#include <kilnbase/services/MorlaTrace.h>

#include "tests/support/Environment.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TraceModel.h"

namespace {

using kilntest::messageOf;
using kilntest::readFile;
using kilntest::ringIn;
using kilntest::TemporaryFolder;
using kilntest::TraceModel;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace MorlaTrace;

void addText(void* texts, const char* text) {
  static_cast<std::vector<std::string>*>(texts)->emplace_back(text);
}

std::vector<std::string> dumped() {
  std::vector<std::string> texts;
  dump(addText, &texts);
  return texts;
}

std::vector<std::string> dumpedMessages() {
  std::vector<std::string> messages;
  for (const std::string& text : dumped()) messages.push_back(messageOf(text));
  return messages;
}

class Trace : public testing::Test {
 protected:
  ~Trace() override { finalize(); }

  void start(std::size_t size, int level = 1) { kilntest::startTrace(folder.path(), size, level); }

  TemporaryFolder folder;
};

TEST_F(Trace, RoundsTheSizeOfTheRing) {
  const std::map<std::size_t, std::uintmax_t> cases = {
      {0, 512},   {511, 512}, {512, 512},        {513, 768},
      {600, 768}, {768, 768}, {0x80000000, 512}, {0x100000000 + 600, 768}};
  for (const auto& [asked, bytes] : cases) {
    const TemporaryFolder other;
    EXPECT_TRUE(initialize(other.path().string().c_str(), asked, 1));
    EXPECT_EQ(std::filesystem::file_size(ringIn(other.path())), bytes) << asked;
    const std::string name = ringIn(other.path()).filename().string();
    EXPECT_EQ(other.names(), std::string(name).append(" ").append(name).append(".pos "));
    EXPECT_EQ(name.size(), std::string("MorlaTrace-.dat").size() + 36);
    EXPECT_THAT(name, testing::StartsWith("MorlaTrace-"));
  }
}

TEST_F(Trace, KeepsLinesOfItsLevelAndThoseBelow) {
  for (int level = -1; level <= 5; ++level) {
    start(4096, level);
    trace1(UI, "%d", 1);
    trace2(UI, "%d", 2);
    trace3(UI, "%d", 3);
    trace4(UI, "%d", 4);
    EXPECT_EQ(enabled(), level > 0);
    EXPECT_EQ(dumped().size(), static_cast<std::size_t>(std::clamp(level, 0, 4))) << level;
  }
  finalize();
  EXPECT_FALSE(enabled());
  EXPECT_THAT(dumped(), IsEmpty());
}

TEST_F(Trace, PutsLocalTimeAndSubsystemBeforeTheMessage) {
  const char* const names[] = {"Picking", "SPF", "UI", "UIFunction", "Undo", "Debug"};
  start(4096);
  const std::time_t before = std::time(nullptr);
  for (int i = 0; i < 6; ++i) trace1(static_cast<Subsystem>(i), "a\nb\n%s%c\n", "c\nd", '\n');
  const std::time_t after = std::time(nullptr);
  const std::vector<std::string> lines = dumped();
  ASSERT_EQ(lines.size(), 6u);
  for (std::size_t i = 0; i < 6; ++i) {
    std::vector<std::string> expected;
    for (std::time_t time = before; time <= after; ++time) {
      char stamp[32];
      std::strftime(stamp, sizeof stamp, "%Y/%m/%d %H:%M:%S <", std::localtime(&time));
      expected.push_back(std::string(stamp) + names[i] + "> a b c d  ");
    }
    EXPECT_THAT(expected, testing::Contains(lines[i]));
  }
}

TEST_F(Trace, TakesTheTimeOfEveryLine) {
  start(4096);
  trace1(UI, "first");
  for (const std::time_t now = std::time(nullptr); std::time(nullptr) < now + 1;)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  trace1(UI, "second");
  const std::vector<std::string> lines = dumped();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_LT(lines[0].substr(0, 19), lines[1].substr(0, 19));
}

TEST_F(Trace, DropsLinesThatDoNotFitTheBufferWhole) {
  start(4096);
  const std::string longest(252 - 25, 'x');
  trace1(UI, "%s", longest.c_str());
  trace1(UI, "%sx", longest.c_str());
  trace1(UI, "before%cbehind", 0);  // a text ends at its first zero
  trace1(UI, "after");
  EXPECT_THAT(dumpedMessages(), ElementsAre(longest, "before", "after"));
}

// Small rings wrap all the time, the big one crosses borders of views.
TEST_F(Trace, HoldsTheLinesThatNoLaterLineHasOverwritten) {
  for (const std::uint32_t size : {512u, 768u, 1024u, 4096u, 65536u + 256, 200192u}) {
    TemporaryFolder own;
    kilntest::startTrace(own.path(), size, 1);
    TraceModel model(size);
    const int count = size < 65536 ? 400 : 5000;
    for (int i = 0; i < count; ++i) {
      const std::string message = kilntest::traceMessage(static_cast<std::uint64_t>(i));
      trace1(UI, "%s", message.c_str());
      model.write(message);
      if (size > 65536 && i % 500 != 499) continue;
      ASSERT_EQ(dumpedMessages(), model.messages());
    }
    const std::string bytes = readFile(ringIn(own.path()));
    for (const TraceModel::Record& record : model.records) {
      std::uint16_t length = 0;
      std::memcpy(&length, bytes.data() + record.begin, sizeof length);
      ASSERT_EQ(length, record.end - record.begin) << "at " << record.begin;
      ASSERT_EQ(messageOf(bytes.data() + record.begin + 2), record.message);
    }
  }
}

// The new file has nothing at the place where `dump` begins.
TEST_F(Trace, KeepsItsPlacesOverAnotherInitialize) {
  start(1024);
  trace1(UI, "first");
  const TemporaryFolder other;
  ASSERT_TRUE(initialize(other.path().string().c_str(), 1024, 1));
  trace1(UI, "second");
  EXPECT_THAT(dumped(), IsEmpty());
  EXPECT_EQ(messageOf(readFile(ringIn(other.path())).data() + 34 + 2), "second");
  std::vector<std::string> expected = {"second"};
  for (int i = 0; i < 22; ++i) {  // to the end of the ring, and over its beginning
    trace1(UI, "%5d", i);
    expected.push_back(std::string(i < 10 ? 4 : 3, ' ') + std::to_string(i));
  }
  EXPECT_EQ(dumpedMessages(), expected);
}

TEST_F(Trace, GoesOnWhereItWasWhenNoFileCanBeMade) {
  start(131072);
  trace1(UI, "first");
  EXPECT_FALSE(initialize((folder.path() / "missing").string().c_str(), 2048, 4));
  trace2(UI, "above the level");
  for (int i = 0; i < 500; ++i) trace1(UI, "%200d", i);  // two views
  EXPECT_EQ(dumped().size(), 501u);
}

// Another program changes the oldest line: where the lines behind it begin is not known then.
TEST_F(Trace, GivesUpTheLinesBehindALengthThatCannotBe) {
  for (const char* const length : {"\0\0", "\x23\0", "\xff\xff"}) {
    const TemporaryFolder own;
    kilntest::startTrace(own.path(), 512);
    for (int i = 0; i < 40; ++i) trace1(UI, "%4d", i);
    std::fstream file(ringIn(own.path()), std::ios::in | std::ios::out | std::ios::binary);
    const std::string position = readFile(ringIn(own.path()).string() + ".pos");
    std::uint32_t oldest = 0;
    std::memcpy(&oldest, position.data() + 64, sizeof oldest);
    file.seekp(oldest).write(length, 2).flush();
    trace1(UI, "last");
    EXPECT_THAT(dumpedMessages(), ElementsAre("last"));
  }
}

// The time of a position file tells when its process ended, wherever the process has gone.
TEST_F(Trace, WritesToThePositionFileWhenTheRingIsClosed) {
  const std::filesystem::path here = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  ASSERT_TRUE(initialize(".", 512, 1));
  std::filesystem::current_path(here);
  const std::string position = ringIn(folder.path()).string() + ".pos";
  const auto before = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24);
  std::filesystem::last_write_time(position, before);
  const TemporaryFolder other;
  ASSERT_TRUE(initialize(other.path().string().c_str(), 512, 1));
  EXPECT_GT(std::filesystem::last_write_time(position), before);
}

TEST_F(Trace, WritesALogWithTheMonthFromZero) {
  const kilntest::KeptEnvironment keptName("USERNAME");
  const kilntest::KeptEnvironment keptUser("USER");
  start(1024);
  trace1(Undo, "one");
  trace1(Debug, "two");
  dumpLog();  // without a directory
  const std::filesystem::path logs = folder.path() / "logs";
  initLog(logs.string().c_str(), "wing");
  kilntest::setEnvironment("USERNAME", "anna");
  kilntest::setEnvironment("USER", "bob");
  for (const std::string expected : {"anna", "bob", "Unknown User"}) {
    const std::time_t now = std::time(nullptr);
    dumpLog();
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%d%Y%H", std::localtime(&now));
    const std::string month = std::to_string(100 + std::localtime(&now)->tm_mon).substr(1);
    const std::filesystem::path log = std::filesystem::directory_iterator(logs)->path();
    const std::string begin =
        std::string("MorlaTraceLog-").append(expected).append("-wing-").append(month).append(stamp);
    EXPECT_THAT(log.filename().string(), testing::StartsWith(begin));
    EXPECT_EQ(log.filename().string().size(), begin.size() + 2 + 4);
    EXPECT_THAT(readFile(log), testing::ContainsRegex("<Undo> one\r?\n.*<Debug> two\r?\n$"));
    std::filesystem::remove(log);
    kilntest::unsetEnvironment(expected == "anna" ? "USERNAME" : "USER");
  }
  initLog(nullptr, nullptr);
}

}  // namespace
