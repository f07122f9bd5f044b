#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <kilnbase/services/MorlaBehaviour.h>
#include <kilnbase/services/MorlaTrace.h>
#include <kilnbase/services/rtb_init.h>
#include <kilnbase/version.h>
#include <vx/Undo.h>

#include "examples/host/Program.h"
#include "tests/support/Reports.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class HostProgram : public testing::Test {
 protected:
  int run(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "host");
    testing::internal::CaptureStdout();
    const int code = host::runProgram(static_cast<int>(arguments.size()), arguments.data());
    out = testing::internal::GetCapturedStdout();
    return code;
  }

  std::string folder() const { return (temporary.path() / "new" / "folder").string(); }

  kilntest::TemporaryFolder temporary;
  kilntest::RecordedReports reports;
  std::string out;
};

}  // namespace

TEST_F(HostProgram, WorksWithEveryServiceAndLeavesNoneBehind) {
  EXPECT_EQ(0, run({folder().c_str()}));
  EXPECT_THAT(reports.takeAll(), testing::IsEmpty());
  EXPECT_EQ(
      R"(debug: FontProperties::setFontSize invalid fontsize 1000, clamping to allowed range 720
Pebble and the Art of Nothing, in Courier of 720 points; saves on exit: no
library: a redraw is pending
draw the planes 0x9F8 from layer 1 on
added: 3 spheres, brush 2.5, undo "Add Spheres", redo ""
library: a redraw is pending
draw the planes 0x9F8 from layer 1 on
undone: 0 spheres, brush 1, undo "", redo "Add Spheres"
library: a redraw is pending
draw the planes 0x9F8 from layer 1 on
redone: 3 spheres, brush 2.5, undo "Add Spheres", redo ""
frame 1 of spheres is saved as wire\spheres.0001
message: the cursor is at 17
library: create materials
library: a polyset goes away
key light coloured: 1
traced <UI> sphere 1
traced <UI> sphere 2
traced <UI> sphere 3
traced <Picking> cursor at 17
)",
      out);
  const auto project = temporary.path() / "new" / "folder" / "demo";
  EXPECT_EQ("2.5\n5\n7.5\n", kilntest::readFile(project / "wire" / "spheres.0001"));
  EXPECT_FALSE(std::filesystem::exists(project / "wire" / "spheres.0001.new"));
  EXPECT_EQ(nullptr, vxUndo::manager());
  EXPECT_FALSE(MorlaTrace::enabled());
  EXPECT_TRUE(MorlaBehaviour_saveOnExit());
  EXPECT_FALSE(get_NewPolyset_defaultVertDisplay());
  EXPECT_EQ(0, RI_getName(1, 0, 0, 0));
}

TEST_F(HostProgram, TellsHelpVersionAndWhatIsWrong) {
  EXPECT_EQ(0, run({"--help"}));
  EXPECT_THAT(out, StartsWith("Usage: host [FOLDER]"));
  EXPECT_EQ(0, run({"--version"}));
  EXPECT_EQ("host " KILNBASE_VERSION_STRING "\n", out);
  const std::string file = temporary.write("file", "").string();
  const std::pair<std::vector<const char*>, const char*> wrong[] = {
      {{"--what"}, "error: host: unknown option --what"},
      {{"a", "b"}, "error: host: expected one folder"},
      {{""}, "error: host: expected one folder"},
      {{file.c_str()}, "error: host: cannot make the folder"}};
  for (const auto& [arguments, message] : wrong) {
    EXPECT_EQ(2, run(arguments));
    EXPECT_THAT(reports.takeAll(), ElementsAre(HasSubstr(message)));
    EXPECT_EQ("", out);
  }
  EXPECT_EQ(nullptr, vxUndo::manager());
}
