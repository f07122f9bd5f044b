#include "examples/session/Session.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

#include <kilnbase/services/mr_undo.h>
#include <kilnbase/version.h>
#include <vx/Process.h>
#include <vx/SysInfo.h>
#include <vx/Undo.h>

#include "examples/session/FitCache.h"
#include "examples/session/Program.h"
#include "examples/surface_fit/NumericErrors.h"
#include "tests/support/Project.h"
#include "tests/support/Reports.h"
#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

using session::FitCache;
using surfacefit::Limits;
using surfacefit::Point;
using testing::HasSubstr;
using vxString::CString;

std::vector<Point> wavyPoints() {
  std::vector<Point> points;
  points.reserve(169);
  for (int x = 0; x < 13; ++x)
    for (int y = 0; y < 13; ++y)
      points.push_back(
          {static_cast<double>(x), static_cast<double>(y), 5.0 * std::sin(x) * std::cos(y)});
  return points;
}

// A sign for each number, and one blank for several.
std::string blanked(const std::string& text) {
  const char* const digits = "0123456789";
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t start = text[i] == '-' ? i + 1 : i;
    const std::size_t end = std::min(text.find_first_not_of("0123456789.,e+-", start), text.size());
    if (text.find_first_of(digits, start) == start) {
      i = text.find_last_of(digits, end - 1);
      result += '#';
    } else if (text[i] != ' ' || !result.ends_with(' ')) {
      result += text[i];
    }
  }
  return result;
}

// Ends the daemon of a cache, which would keep files of the folder open.
void stopDaemon(const fs::path& cache) {
  if (fs::exists(cache / "@lockfile.lck"))
    vxOS::ProcessManager::getInstance().startSync(
        {APP_getBinaryPath("vxcached"), "--stop", cache.string().c_str()});
}

class SessionProgram : public testing::Test {
 protected:
  SessionProgram() {
    std::ostringstream text;
    for (const auto& [x, y, z] : wavyPoints()) text << x << ' ' << y << ' ' << z << '\n';
    points = folder.write("points.xyz", text.str()).string();
  }
  ~SessionProgram() override {
    APP_setBinaryFolder("");
    stopDaemon(project() / "misc_data" / "cache");
  }

  fs::path output() const { return folder.path() / "out"; }
  fs::path project() const { return output() / "demo"; }

  // Runs the program; `out` has its output with a sign for each number, blank and folder.
  int run(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv = {"session"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    testing::internal::CaptureStdout();
    const int code = session::runProgram(static_cast<int>(argv.size()), argv.data());
    out = testing::internal::GetCapturedStdout();
    for (std::size_t at = 0; (at = out.find(output().generic_string())) != std::string::npos;)
      out.replace(at, output().generic_string().size(), "OUT");
    out = blanked(out);
    if (!KILNTEST_RECORDS) dropLine("recording ");
    return code;
  }
  void dropLine(const char* beginning) {
    const std::size_t start = out.find(beginning);
    if (start != std::string::npos) out.erase(start, out.find('\n', start) + 1 - start);
  }
  int runOnPoints() {
    return run({points, "--output", output().string(), "--tolerance", "0.1", "--max-steps", "4",
                "--viewer", "1"});
  }

  kilntest::TemporaryFolder folder;
  kilntest::RecordedReports reports;
  std::string points;
  std::string out;
};

constexpr const char* kStart =
    R"(step spans unknowns equations determined rms [m] largest [m] at (x, y) [m] relative seconds
 # # x # # # # # # (#, #) # #
 # # x # # # # # # (#, #) # #
 # # x # # # # # # (#, #) # #
* # # x # # # # # # (#, #) # #

input # points of points.xyz
tolerance # m
fit # steps, # kept, )";

constexpr const char* kMiddle = R"(
deviation rms # m, largest # m
 The largest deviation is within the tolerance.
undo # of # changes undone, # redone: each time the surface that it was (# x # spans), bit for bit
viewer none on port #
)";

TEST_F(SessionProgram, FindsInTheCacheWhatAnEarlierSessionHasFitted) {
  const bool hasDrawview = fs::exists(APP_getBinaryPath("drawview").c_str());
  const std::string recording =
      hasDrawview
          ? "recording # frames: OUT/demo/misc_data/session.kilndraw\n"
          : "recording drawview is not there: no recording, and nothing in three dimensions\n";
  const std::string middle = std::string(kMiddle) + (KILNTEST_RECORDS ? recording : "") +
                             "cache OUT/demo/misc_data/cache: ";
  const std::string end = "\nmemory # MB at most, # MB of them for undo\npage OUT/session.html\n";
  EXPECT_EQ(0, runOnPoints());
  EXPECT_EQ(std::string(kStart) + "fitted in # s" + middle + "# hits, # files added" + end, out);
  EXPECT_THAT(kilntest::readFile(project() / "trace.txt"), HasSubstr("<Undo> redid 2, to "));
  const std::string net = kilntest::readFile(project() / "wire" / "net.0004");

  EXPECT_EQ(0, runOnPoints());
  EXPECT_EQ(std::string(kStart) +
                "found in the cache in # s: # times as fast as fitting, which took # s" + middle +
                "# hits, # files added" + end,
            out);
  EXPECT_EQ(net, kilntest::readFile(project() / "wire" / "net.0004"));
  const std::string page = kilntest::readFile(output() / "session.html");
  if (KILNTEST_RECORDS && KILNTEST_HAS_PAGE) {
    EXPECT_EQ(hasDrawview, page.find("data-number=&quot;4&quot;") != std::string::npos);
  }
  EXPECT_THAT(page, HasSubstr("Section through both surfaces"));
  EXPECT_THAT(reports.takeAll(), testing::IsEmpty());
}

TEST_F(SessionProgram, WorksWithoutTheOtherPrograms) {
  APP_setBinaryFolder(folder.path().string().c_str());
  EXPECT_EQ(0, runOnPoints());
  EXPECT_THAT(out, HasSubstr("fitted in # s"));
  const std::string told = KILNTEST_RECORDS ? "recording drawview is not there: no recording" : "";
  EXPECT_THAT(out, HasSubstr(told));
  EXPECT_THAT(out, HasSubstr("cache none: "));
  EXPECT_THAT(kilntest::readFile(output() / "session.html"), HasSubstr("drawview was not there"));
}

TEST_F(SessionProgram, TellsHelpVersionAndWhatIsWrong) {
  EXPECT_EQ(0, run({"--help"}));
  EXPECT_THAT(out, HasSubstr("Exit code"));
  EXPECT_EQ(0, run({"--version"}));
  EXPECT_EQ("session #\n", out);
  const std::string few = folder.write("few.xyz", "1 2 3\n").string();
  const std::pair<std::vector<std::string>, const char*> wrong[] = {
      {{"--what"}, "--what"},
      {{points, "--columns", "1,2"}, "three columns"},
      {{points, "--tolerance", "0"}, "positive"},
      {{points, "--output", points}, "cannot make the folder"},
      {{few, "--output", output().string()}, "too few points"}};
  for (const auto& [arguments, message] : wrong) {
    EXPECT_EQ(2, run(arguments));
    EXPECT_THAT(reports.takeAll(), testing::ElementsAre(HasSubstr(message)));
    EXPECT_EQ("", out);
  }
  EXPECT_FALSE(fs::exists(output() / "session.html"));
}

TEST(Session, KeepsWhatIsFittedWhenTheUserStops) {
  const kilntest::Project project;
  const surfacefit::ThrowingNumericErrors errors;
  kilntest::RecordedReports reports;
  const kilntest::TemporaryFolder folder;
  APP_setBinaryFolder(folder.path().string().c_str());
  vxKilnBase::undoInit();
  std::ostringstream text;
  for (const auto& [x, y, z] : wavyPoints()) text << x << ' ' << y << ' ' << z << '\n';
  session::Options options;
  options.points = folder.write("points.xyz", text.str());
  {
    session::Session session(options);
    reports.asksToStop = true;
    session.fit();
    session.undoAndRedo();
    session.save();
    EXPECT_THAT(session.summary().text(false), HasSubstr("Stopped by the user"));
    EXPECT_THAT(session.summary().text(true), HasSubstr("\x1b[32m1 of 1 changes undone, 1 redone"));
  }
  EXPECT_TRUE(project.has("wire/net.0001"));
  vxUndo::installManager(nullptr);
  APP_setBinaryFolder("");
}

// A cache of a fit of the points, in files of one folder.
class SessionCache : public testing::Test {
 protected:
  SessionCache() {
    TbaseReporter quiet;
    fit = {surfacefit::refine(points, limits, quiet), 1.5};
    FitCache(folder.path(), points, limits).add(fit, {{1, {{{0, 0, 0}}, {}}}});
  }
  ~SessionCache() override { stopDaemon(folder.path()); }

  // A file of the cache that begins so.
  fs::path fileOf(const std::string& start) const {
    for (const auto& entry : fs::directory_iterator(folder.path()))
      if (!entry.path().filename().string().starts_with('@') &&
          kilntest::readFile(entry.path()).starts_with(start))
        return entry.path();
    return {};
  }

  const surfacefit::ThrowingNumericErrors errors;
  kilntest::TemporaryFolder folder;
  const std::vector<Point> points = wavyPoints();
  const Limits limits{0.1, 1000, 100, 3};
  session::TimedRefinement fit;
};

TEST_F(SessionCache, HasTheFitOfTheSamePointsAndLimitsOnly) {
  FitCache same(folder.path(), points, limits);
  const auto found = same.find().value_or(session::TimedRefinement{});
  EXPECT_EQ(1.5, found.seconds);
  EXPECT_EQ(fit.refinement.stop, found.refinement.stop);
  ASSERT_EQ(fit.refinement.steps.size(), found.refinement.steps.size());
  for (std::size_t i = 0; i < fit.refinement.steps.size(); ++i)
    EXPECT_TRUE(
        fit.refinement.steps[i].fit.surface.identicalTo(found.refinement.steps[i].fit.surface));
  EXPECT_EQ(1U, same.findMesh(1).value_or(surfacefit::Mesh{}).vertices.size());
  EXPECT_EQ(5, same.hits());

  std::vector<Point> others = points;
  others[100].z = std::nextafter(others[100].z, 9.0);
  EXPECT_FALSE(FitCache(folder.path(), others, limits).find());
  EXPECT_FALSE(FitCache(folder.path(), points, {0.1, 1000, 100, 4}).find());
}

// Damages in one file of each kind; with its old time the daemon sees them on Windows only.
TEST_F(SessionCache, RefusesADamagedFileAndTakesAnotherInItsPlace) {
  for (const char* kind : {"kiln session", "VXGKOBJ", "VXMESH"}) {
    const fs::path file = fileOf(kind);
    const auto time = fs::last_write_time(file);
    std::string content = kilntest::readFile(file);
    content[content.size() / 2] = static_cast<char>(content[content.size() / 2] ^ 1);
    std::ofstream(file, std::ios::binary) << content;
    fs::last_write_time(file, time);
    FitCache cache(folder.path(), points, limits);
    const bool hasFit = cache.find().has_value();
    const bool hasMesh = cache.findMesh(1).has_value();
    EXPECT_NE(hasFit, hasMesh) << kind;
    cache.add(fit, {{1, {{{0, 0, 0}}, {}}}});
    EXPECT_TRUE(cache.find()) << kind;
    EXPECT_TRUE(cache.findMesh(1)) << kind;
  }
}

}  // namespace
