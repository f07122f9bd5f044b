#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sstream>

#include <vx/FileLock.h>

#include "tests/support/Reports.h"
#include "tests/support/TraceModel.h"
#include "tools/tracelog/Program.h"
#include "tools/tracelog/Ring.h"

namespace {

namespace fs = std::filesystem;
using kilntest::readFile;
using testing::HasSubstr;
using testing::IsEmpty;
using tracelog::Contents;
using tracelog::Line;
using tracelog::readPosition;
using tracelog::readRing;

// A ring whose newest line stands between the others, and its position file.
struct Files {
  std::string ring;
  std::string position;
};

Files wrappedFiles(std::uint64_t lines = 125) {
  const kilntest::TemporaryFolder folder;
  kilntest::startTrace(folder.path(), 1024);
  for (std::uint64_t i = 0; i < lines; ++i)
    MorlaTrace::trace1(MorlaTrace::UI, "%s", kilntest::traceMessage(i).substr(0, 70).c_str());
  MorlaTrace::finalize();
  const fs::path ring = kilntest::ringIn(folder.path());
  return {readFile(ring), readFile(ring.string() + ".pos")};
}

// A ring with lines of given times.
std::string ringOf(const std::vector<std::string>& texts) {
  std::string ring;
  for (const std::string& text : texts) {
    const std::size_t pad = (text.size() + 1) % 2;
    ring += static_cast<char>(2 + text.size() + 1 + pad);
    ring.append(1, '\0').append(text).append(1 + pad, '\0');
  }
  ring.resize(512);
  return ring;
}

std::string positionFile(const tracelog::TracePosition& position) {
  const auto words = vxKilnBase::detail::traceWords(position);
  std::string file(vxKilnBase::detail::kTracePositionMagic);
  file.resize(vxKilnBase::detail::kTraceCopyOffsets[0]);
  file.append(reinterpret_cast<const char*>(words.data()), sizeof words);
  file.resize(vxKilnBase::detail::kTracePositionBytes);
  return file;
}

const std::string kFirst = "2011/01/31 23:59:59 <UI> first";
const std::string kSecond = "2011/02/01 00:00:00 <Undo> second";
const std::string kThird = "2011/02/01 00:00:01 <UIFunction> third \x1b[2J \xc3\xa9 \xc2\x9b \xff";

std::vector<std::string> textsOf(const std::vector<Line>& lines) {
  std::vector<std::string> texts;
  for (const Line& line : lines) texts.emplace_back(line.text);
  return texts;
}

// Reads changed bytes. Every line but those that hold bytes from `begin` to `end` must be there;
// with a position, in their order and without other lines. (Without one, the bytes behind the text
// of the last record may look like lines.)
void expectLinesOutside(std::uint32_t begin, std::uint32_t end, const std::vector<Line>& lines,
                        const Contents& read) {
  const auto isTouched = [&](const Line& line) {
    return line.offset < end && begin < line.offset + line.length;
  };
  std::vector<Line> expected = lines;
  std::erase_if(expected, isTouched);
  std::vector<Line> shown = read.lines;
  std::erase_if(shown, isTouched);
  if (read.positionFits)
    EXPECT_EQ(textsOf(shown), textsOf(expected)) << "changed at " << begin;
  else
    EXPECT_THAT(textsOf(shown), testing::IsSupersetOf(textsOf(expected))) << "changed at " << begin;
}

TEST(TraceRing, ShowsWhatStandsOutsideOfAnyChangedByte) {
  const Files files = wrappedFiles();
  const auto position = readPosition(files.position);
  ASSERT_TRUE(position);
  const std::vector<Line> lines = readRing(files.ring, position).lines;
  ASSERT_EQ(lines.size(), position->held);
  for (std::uint32_t i = 0; i < files.ring.size(); ++i) {
    for (const int mask : {1, 2, 4, 8, 16, 32, 64, 128, 255, 256}) {
      std::string ring = files.ring;
      ring[i] = static_cast<char>(mask == 256 ? 0 : ring[i] ^ mask);
      expectLinesOutside(i, i + 1, lines, readRing(ring, position));
      expectLinesOutside(i, i + 1, lines, readRing(ring, std::nullopt));
    }
  }
  for (std::size_t i = 0; i < files.position.size(); ++i) {
    for (int mask = 1; mask < 256; ++mask) {
      std::string changed = files.position;
      changed[i] = static_cast<char>(changed[i] ^ mask);
      expectLinesOutside(0, 0, lines, readRing(files.ring, readPosition(changed)));
    }
  }
}

TEST(TraceRing, ShowsWhatStandsBeforeAnyCut) {
  const Files files = wrappedFiles();
  const auto position = readPosition(files.position);
  const std::vector<Line> lines = readRing(files.ring, position).lines;
  for (std::uint32_t size = 0; size < files.ring.size(); ++size) {
    const std::string ring = files.ring.substr(0, size);
    const Contents read = readRing(ring, position);
    expectLinesOutside(size, 1024, lines, read);
    EXPECT_FALSE(read.positionFits && read.damages.empty()) << size;
    expectLinesOutside(size, 1024, lines, readRing(ring, std::nullopt));
  }
  for (std::size_t size = 0; size < files.position.size(); ++size)
    EXPECT_FALSE(readPosition(files.position.substr(0, size))) << size;
}

// Positions of other rings, and bytes of all kinds.
TEST(TraceRing, ReadsWhateverBytesThereAre) {
  std::mt19937 random(1);
  const Files files = wrappedFiles();
  for (int i = 0; i < 20000; ++i) {
    std::string ring = files.ring;
    for (auto k = random() % 64; k > 0; --k)
      ring[random() % ring.size()] =
          static_cast<char>(random() % 3 == 0 ? random() : random() % 80);
    const auto number = [&] { return static_cast<std::uint32_t>(random() % 1100); };
    const tracelog::TracePosition position = {number(), number(), number(), number() % 40,
                                              random() % 2 == 0 ? 1024 : number()};
    std::size_t bytes = 0;
    for (const Line& line : readRing(ring, position).lines) bytes += line.length;
    EXPECT_LE(bytes, ring.size());
  }
}

TEST(TraceRing, FindsTheOldestLineWithoutAPosition) {
  const Files files = wrappedFiles();
  const Contents byPosition = readRing(files.ring, readPosition(files.position));
  const Contents without = readRing(files.ring, std::nullopt);
  EXPECT_EQ(textsOf(without.lines), textsOf(byPosition.lines));
  EXPECT_THAT(without.damages, IsEmpty());
  EXPECT_FALSE(without.positionFits);
}

// A clock that was set back leaves no bytes of an overwritten line, the newest line does.
TEST(TraceRing, TakesAGapForTheSeamRatherThanTimeAlone) {
  const std::string oldest = kSecond + " once";
  std::string ring = ringOf({kSecond, kFirst, kThird, kSecond, oldest});
  ring[ring.find(kThird) + kThird.size() + 2] = 5;
  EXPECT_EQ(textsOf(readRing(ring, std::nullopt).lines),
            (std::vector<std::string>{oldest, kSecond, kFirst, kThird}));
}

// The files were copied one after the other, and the process went on between.
TEST(TraceRing, DoesNotTrustAnEarlierPosition) {
  const Files files = wrappedFiles();
  const std::vector<Line> lines = readRing(files.ring, readPosition(files.position)).lines;
  for (std::uint64_t count = 116; count < 125; ++count) {
    const Contents read = readRing(files.ring, readPosition(wrappedFiles(count).position));
    EXPECT_EQ(textsOf(read.lines), textsOf(lines)) << count;
    EXPECT_THAT(read.damages, IsEmpty());
    EXPECT_FALSE(read.positionFits);
  }
  const std::string newest = "2011/02/01 00:00:01 <UI> third" + std::string(190, 'x');
  std::string ring = ringOf({newest, kFirst});
  ring.replace(ring.find(kFirst) - 2, 2, "\x20\x01");  // to the end of the ring
  EXPECT_EQ(textsOf(readRing(ring, tracelog::TracePosition{0, 0, 20, 2, 512}).lines),
            (std::vector<std::string>{kFirst, newest}));
}

// A line that has been overwritten stands behind the text of a record that goes on to the end.
TEST(TraceRing, TakesNoLineFromTheSlackOfTheLastRecord) {
  std::string ring = ringOf({kFirst + std::string(190, 'x'), kSecond, kThird});
  const std::string longer("\x20\x01", 2);
  ring.replace(ring.find(kSecond) - 2, 2, longer);
  const tracelog::TracePosition position = {0, 0, 9, 2, 512};
  EXPECT_EQ(textsOf(readRing(ring, position).lines).back(), kSecond);
  ring[ring.find(kSecond)] = 'x';
  EXPECT_EQ(readRing(ring, position).lines.size(), 1u);
}

class Tracelog : public testing::Test {
 protected:
  static constexpr const char* kName = "MorlaTrace-0b51a8a0-5c1e-4d8f-9a55-3a1c2f0de6b7.dat";
  static constexpr const char* kOther = "MorlaTrace-1c51a8a0-5c1e-4d8f-9a55-3a1c2f0de6b7.dat";

  // Runs the program with "@name" standing for a path in the folder; the output is in `out`, the
  // messages in `messages`.
  int run(std::vector<std::string> arguments) {
    std::vector<const char*> argv = {"tracelog"};
    for (std::string& argument : arguments) {
      if (argument.starts_with('@')) argument = (folder.path() / argument.substr(1)).string();
      argv.push_back(argument.c_str());
    }
    testing::internal::CaptureStdout();
    const int code = tracelog::runProgram(static_cast<int>(argv.size()), argv.data());
    out = testing::internal::GetCapturedStdout();
    messages = testing::PrintToString(reports.takeAll());
    return code;
  }

  void age(const std::string& name, int days) {
    fs::last_write_time(folder.path() / name,
                        fs::file_time_type::clock::now() - std::chrono::hours(24 * days));
  }

  kilntest::TemporaryFolder folder;
  kilntest::RecordedReports reports;
  std::string out;
  std::string messages;
};

TEST_F(Tracelog, ShowsLinesOldestFirstAndHarmless) {
  folder.write(kName, ringOf({kThird, kFirst, kSecond}));
  const std::string third =
      "2011/02/01 00:00:01 <UIFunction> third \\x1b[2J \xc3\xa9 \\xc2\\x9b \\xff\n";
  const struct {
    std::vector<std::string> arguments;
    std::string expected;
  } cases[] = {{{"@"}, kFirst + "\n" + kSecond + "\n" + third},
               {{std::string("@") + kName, "@", std::string("@./") + kName},
                kFirst + "\n" + kSecond + "\n" + third},
               {{std::string("@") + kName + ".pos"}, kFirst + "\n" + kSecond + "\n" + third},
               {{"@", "--subsystem", "UI"}, kFirst + "\n"},
               {{"@", "-s", "UI", "-s", "Undo"}, kFirst + "\n" + kSecond + "\n"},
               {{"@", "--grep", "ir"}, kFirst + "\n" + third},
               {{"@", "--grep", "ir", "--subsystem", "Undo"}, ""}};
  for (const auto& [arguments, expected] : cases) {
    EXPECT_EQ(run(arguments), 0);
    EXPECT_EQ(out, expected) << testing::PrintToString(arguments);
    EXPECT_EQ(messages, "{}");
  }
  folder.write(kOther, ringOf({kFirst}));
  EXPECT_EQ(run({"@"}), 0);
  EXPECT_EQ(out, std::string("0b51a8a0 ") + kFirst + "\n1c51a8a0 " + kFirst + "\n0b51a8a0 " +
                     kSecond + "\n0b51a8a0 " + third);
}

TEST_F(Tracelog, NamesDamageAndShowsTheRest) {
  std::string ring = ringOf({kFirst, kSecond, kThird});
  ring[34] = 9;
  folder.write(kName, ring);
  EXPECT_EQ(run({"@"}), 1);
  EXPECT_THAT(out, testing::StartsWith(kFirst + "\n2011/02/01 00:00:01"));
  EXPECT_THAT(messages, HasSubstr("offset 34: a length that cannot be; 36 bytes left out"));

  folder.write(kName, ringOf({kFirst}));
  folder.write(std::string(kName) + ".pos", "no position");
  EXPECT_EQ(run({"@"}), 1);
  EXPECT_EQ(out, kFirst + "\n");
  EXPECT_THAT(messages, HasSubstr("position file does not fit"));
}

TEST_F(Tracelog, RefusesWhatItCannotUse) {
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } cases[] = {{{}, "sources"},
               {{"@missing"}, "no file and no folder"},
               {{"@\x1b[2J"}, "\\x1b[2J"},
               {{"@", "--subsystem", "ui"}, "ui"},
               {{"@", "--prune", "0"}, "--prune"},
               {{"@", "--prune", "3", "--follow"}, "--follow"},
               {{"@", "--frobnicate"}, "--frobnicate"}};
  for (const auto& [arguments, message] : cases) {
    EXPECT_EQ(run(arguments), 2);
    EXPECT_THAT(messages, HasSubstr(message));
  }
}

TEST_F(Tracelog, RemovesOldRingsAloneAndNoOtherFiles) {
  const std::string position = std::string(kName) + ".pos";
  const std::string ring = ringOf({kFirst});
  for (const std::string& name : {std::string(kName), position, std::string(kOther),
                                  std::string("MorlaTrace-1.dat"), std::string("other.dat")}) {
    folder.write(name, ring);
    age(name, 9);
  }
  const std::string all = folder.names();
  age(position, 3);  // the process wrote here at its end
  EXPECT_EQ(run({"@", "--prune", "10"}), 0);
  EXPECT_EQ(folder.names(), all);
  {
    vxOS::FileLock live;
    ASSERT_TRUE(live.acquire((folder.path() / kOther).string().c_str()));
    EXPECT_EQ(run({"@", "--prune", "5"}), 0);
    EXPECT_EQ(folder.names(), all);
  }
  EXPECT_EQ(run({"@", "--prune", "3"}), 0);
  EXPECT_EQ(folder.names(), "MorlaTrace-1.dat other.dat ");
  EXPECT_THAT(out, HasSubstr(kOther));
  EXPECT_EQ(run({"@other.dat", "--prune", "3"}), 2);
  EXPECT_EQ(folder.names(), "MorlaTrace-1.dat other.dat ");
}

// A crash leaves the files with an old time. The clock was wrong for the line to come.
TEST_F(Tracelog, CountsTheAgeFromTheNewestLineOfACrash) {
  const std::time_t yesterday = std::time(nullptr) - std::time_t{24} * 60 * 60;
  char line[32];
  std::strftime(line, sizeof line, "%Y/%m/%d %H:%M:%S <UI> ", std::localtime(&yesterday));
  folder.write(kName, ringOf({kFirst, line, "2999/02/01 00:00:00 <UI> to come"}));
  folder.write(kOther + std::string(".pos"), "without a ring");
  age(kName, 9);
  age(kOther + std::string(".pos"), 3);
  const std::string all = folder.names();
  EXPECT_EQ(run({"@", "--prune", "5"}), 0);
  EXPECT_EQ(folder.names(), all);
  EXPECT_EQ(run({"@", "--prune", "2"}), 0);
  EXPECT_EQ(folder.names(), std::string(kName) + " ");
  EXPECT_EQ(run({"@", "--prune", "1"}), 0);
  EXPECT_EQ(folder.names(), "");
}

TEST_F(Tracelog, KeepsTheOrderOfARingWhoseClockWasSetBack) {
  const std::string ring = ringOf({kThird, kFirst});
  const auto next = static_cast<std::uint32_t>(ring.find(kFirst) + kFirst.size() + 2) / 2 * 2;
  folder.write(kName, ring);
  folder.write(kName + std::string(".pos"), positionFile({0, next, 2, 2, 512}));
  folder.write(kOther, ringOf({kSecond}));
  EXPECT_EQ(run({"@"}), 0);
  EXPECT_EQ(messages, "{}");
  EXPECT_THAT(out,
              testing::ContainsRegex("1c51a8a0 .*second\n0b51a8a0 .*third.*\n0b51a8a0 .*first"));
}

// The trace of this process goes on while the program looks for new lines, and ends at its third
// wait.
TEST_F(Tracelog, FollowsUntilTheProcessEnds) {
  kilntest::startTrace(folder.path(), 1024);
  MorlaTrace::trace1(MorlaTrace::UI, "line 0");
  static int waits;
  waits = 0;
  const auto sleep = [](unsigned int) {
    const kilntest::TemporaryFolder other;
    if (++waits == 3)  // another ring releases the lock of this one
      MorlaTrace::initialize(other.path().string().c_str(), 512, 0);
    else
      for (int i = 0; i < 40; ++i) MorlaTrace::trace1(MorlaTrace::UI, "line %d", 40 * waits + i);
  };
  RptSinks sinks = rptSetSinks(nullptr);
  sinks.sleep = sleep;
  rptSetSinks(&sinks);
  EXPECT_EQ(run({"@", "--follow"}), 0);
  EXPECT_EQ(waits, 3);
  std::istringstream lines(out);
  std::vector<std::string> shown;
  for (std::string line; std::getline(lines, line);) shown.push_back(kilntest::messageOf(line));
  ASSERT_GT(shown.size(), 20u);
  EXPECT_EQ(shown.front(), "line 0");
  EXPECT_EQ(shown.back(), "line 119");
  EXPECT_EQ(std::set<std::string>(shown.begin(), shown.end()).size(), shown.size());
  EXPECT_THAT(messages, HasSubstr("were overwritten before"));
}

}  // namespace
