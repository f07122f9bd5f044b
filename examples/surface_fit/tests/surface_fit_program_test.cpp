#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>

#include <kilnbase/version.h>

#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/OutputFiles.h"
#include "examples/surface_fit/Program.h"
#include "tests/support/Reports.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using surfacefit::runProgram;
using testing::HasSubstr;

// Points in rows of 13, or, with a slope, all on a line.
std::string pointsText(int count, int slope) {
  std::ostringstream text;
  for (int k = 0; k < count; ++k) {
    const int x = k % 13;
    const int y = slope != 0 ? slope * x : k / 13;
    text << x << " " << y << " " << 100.0 + 5.0 * std::sin(x) * std::cos(y) << "\n";
  }
  return text.str();
}

// The program in a folder with a good file of points and several bad ones.
class SurfaceFitProgram : public testing::Test {
 protected:
  SurfaceFitProgram() {
    folder.write("good.xyz", pointsText(169, 0));
    folder.write("line.xyz", pointsText(40, 2));
    folder.write("far.xyz", "1e9 1e9 0\n" + pointsText(169, 0));
    folder.write("few.xyz", pointsText(15, 0));
    folder.write("letters.xyz", "1 2 3\n4 five 6\n");
    folder.write("nan.xyz", "1 2 3\n4 5 nan\n");
    folder.write("empty.xyz", "# nothing\n");
    folder.write("net.txt", "3x1 [ 1 2 3 ]");
  }

  std::string at(const std::string& name) const { return (folder.path() / name).string(); }

  // Runs it with "@name" standing for a path in the folder; the output is in `out`.
  int run(std::vector<std::string> arguments) {
    std::vector<const char*> argv = {"surface_fit"};
    for (std::string& argument : arguments) {
      if (argument.starts_with('@')) argument = at(argument.substr(1));
      argv.push_back(argument.c_str());
    }
    testing::internal::CaptureStdout();
    const int code = runProgram(static_cast<int>(argv.size()), argv.data());
    out = testing::internal::GetCapturedStdout();
    return code;
  }

  kilntest::TemporaryFolder folder;
  kilntest::RecordedReports reports;
  std::string out;
};

TEST_F(SurfaceFitProgram, RefusesBadInputWithAMessageAndWritesNothing) {
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } cases[] = {
      {{"@missing.xyz"}, "cannot open"},
      {{"@"}, "a file of"},
      {{"@letters.xyz"}, "line 2: 'five' is not a number"},
      {{"@nan.xyz"}, "line 2: 'nan'"},
      {{"@empty.xyz"}, "no points"},
      {{"@few.xyz"}, "too few points: 15"},
      {{"@line.xyz"}, "one line"},
      {{"@good.xyz", "--tolerance", "0"}, "positive"},
      {{"@good.xyz", "--tolerance", "nan"}, "positive"},
      {{"@good.xyz", "--tolerance", "-3"}, "positive"},
      {{"@good.xyz", "--tolerance", "2x"}, "positive"},
      {{"@good.xyz", "--max-unknowns", "15"}, "--max-unknowns"},
      {{"@good.xyz", "--max-steps", "0"}, "--max-steps"},
      {{"@good.xyz", "--tolerances", "1"}, "--tolerances"},
      {{"@good.xyz", "more.xyz"}, "more.xyz"},
      {{"@good.xyz", "--columns", "1,2"}, "three columns"},
      {{"@good.xyz", "--columns", "1,2,height"}, "no heading with a column 'height'"},
      {{"@good.xyz", "--export", "@good.step"}, ".obj, .ply or .stl"},
      {{"@good.xyz", "--export", "@none/good.ply"}, "there is no folder"},
      {{"@far.xyz", "--export", "@far.stl"}, "single precision"},
      {{"@good.xyz", "--evaluate", "@missing.txt"}, "cannot open"},
      {{"@good.xyz", "--evaluate", "@net.txt"}, "the knots in x"},
      {{"@good.xyz", "--evaluate", "@net.txt", "--tolerance", "1"}, "--tolerance"},
  };
  const std::string before = folder.names();
  for (auto [arguments, message] : cases) {
    const bool fits =
        std::find(arguments.begin(), arguments.end(), "--evaluate") == arguments.end();
    if (fits) arguments.insert(arguments.end(), {"--output", "@out"});
    EXPECT_EQ(2, run(arguments)) << message;
    EXPECT_THAT(reports.takeAll(), testing::ElementsAre(testing::AllOf(
                                       HasSubstr("error: surface_fit: "), HasSubstr(message))));
    EXPECT_EQ("", out) << message;
    EXPECT_EQ(before, folder.names()) << message;
  }
}

TEST_F(SurfaceFitProgram, TellsEveryOptionAndItsVersion) {
  EXPECT_EQ(0, run({"--version"}));
  EXPECT_EQ("surface_fit " + std::string(kilnbaseVersion()) + "\n", out);
  EXPECT_EQ(0, run({"--help"}));
  for (const char* text :
       {"points", "--tolerance", "--output", "--max-unknowns", "--max-spans", "--max-steps",
        "--unit", "--evaluate", "--columns", "--export", "ESC", "Exit code", "Examples"})
    EXPECT_THAT(out, HasSubstr(text));
}

// The last line of the table, the page and the evaluation of the net tell the same deviation.
TEST_F(SurfaceFitProgram, WritesANetThatASecondRunEvaluatesToTheSameDeviations) {
  ASSERT_EQ(0, run({"@good.xyz", "--tolerance", "1e-9", "--max-steps", "3", "--output", "@out"}));
  EXPECT_THAT(out, HasSubstr("limit of 3 steps"));
  const std::filesystem::path output = folder.path() / "out";
  const std::string table = kilntest::readFile(output / "table.txt");
  EXPECT_THAT(out, testing::StartsWith(table));
  EXPECT_THAT(kilntest::readFile(output / "surface.html"), HasSubstr("4 \u00d7 4"));
  ASSERT_EQ(3, std::distance(std::filesystem::directory_iterator(output), {}));

  ASSERT_EQ(0, run({"@good.xyz", "--evaluate", "@out/net.txt"}));
  std::istringstream evaluation(out);
  std::string heading;
  std::getline(evaluation, heading);
  EXPECT_THAT(heading, HasSubstr("# 169 points, rms deviation "));
  const std::string rms = heading.substr(heading.find("rms deviation ") + 14, 4);
  EXPECT_THAT(table.substr(table.rfind("\n*")), HasSubstr(rms));

  folder.write("places.csv", "id,x,y\n1,3,4\n2,0.5,11\n");
  EXPECT_EQ(0, run({"@places.csv", "--columns", "x,y", "--evaluate", "@out/net.txt"}));
  EXPECT_THAT(out, testing::ContainsRegex("# 2 places\n# x y height\n3 4 .+\n0.5 11 .+\n"));

  folder.write("outside.xyz", "3 3 0\n13 3 0\n");
  EXPECT_EQ(2, run({"@outside.xyz", "--evaluate", "@out/net.txt"}));
  EXPECT_EQ("", out);
}

// Takes what is written and fails when it is flushed, as a file on a full disk does.
struct FullDisk : std::streambuf {
  int overflow(int character) override { return character; }
  int sync() override { return -1; }
};

TEST_F(SurfaceFitProgram, TellsThatStandardOutputCannotBeWritten) {
  ASSERT_EQ(0, run({"@good.xyz", "--output", "@out"}));
  reports.takeAll();
  FullDisk disk;
  std::streambuf* const usual = std::cout.rdbuf(&disk);
  const std::vector<std::vector<std::string>> cases = {
      {"--help"}, {"@good.xyz", "--output", "@out"}, {"@good.xyz", "--evaluate", "@out/net.txt"}};
  for (const auto& arguments : cases) {
    EXPECT_EQ(2, run(arguments)) << arguments[0];
    EXPECT_THAT(reports.takeAll(),
                testing::Contains("error: surface_fit: cannot write to standard output\n"));
    std::cout.clear();
  }
  std::cout.rdbuf(usual);
}

TEST_F(SurfaceFitProgram, ReadsStandardInputAndChoosesATolerance) {
  std::istringstream input(pointsText(169, 0));
  std::streambuf* const usual = std::cin.rdbuf(input.rdbuf());
  EXPECT_EQ(0, run({"-", "--output", "@out", "--export", "@a.obj", "--export", "@b.PLY"}));
  std::cin.rdbuf(usual);
  EXPECT_THAT(out, HasSubstr("from the scatter of the points"));
  EXPECT_THAT(kilntest::readFile(folder.path() / "out" / "surface.html"),
              HasSubstr("name:\"standard input\""));
  EXPECT_EQ("v 0 0 ", kilntest::readFile(folder.path() / "a.obj").substr(0, 6));
  EXPECT_EQ("ply\n", kilntest::readFile(folder.path() / "b.PLY").substr(0, 4));
}

TEST_F(SurfaceFitProgram, WritesAllFilesOrNone) {
  folder.write("taken", "a file, no folder");
  EXPECT_EQ(2, run({"@good.xyz", "--output", "@taken"}));
  const std::string before = folder.names();
  const std::filesystem::path place = folder.path();
  EXPECT_THROW(surfacefit::writeFiles({{place / "a", "1"}, {place / "none" / "b", "2"}}),
               surfacefit::InputError);
  EXPECT_EQ(before, folder.names());
  surfacefit::writeFiles({{place / "net.txt", "new"}, {place / "z", "2"}});
  EXPECT_EQ("new", kilntest::readFile(place / "net.txt"));
  EXPECT_EQ(before + "z ", folder.names());
}

}  // namespace
