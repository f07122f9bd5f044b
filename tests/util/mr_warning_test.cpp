#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <kilnbase/util/mr_warning.h>
#include <vx/SysInfo.h>

#include "tests/support/RecordingProgram.h"

using kilntest::RecordingProgram;
using testing::ElementsAre;
using testing::IsEmpty;
using vxKilnBase::MorlaWarningParams;

namespace {

// What the program was told; nothing when it has not run.
std::vector<std::string> takeOptions(RecordingProgram& program) {
  std::vector<std::string> arguments = program.takeArguments();
  if (!arguments.empty()) arguments.erase(arguments.begin());
  return arguments;
}

}  // namespace

TEST(Warning, TheProgramIsToldEveryPartInOrder) {
  RecordingProgram program(1);
  EXPECT_EQ(0, MR_warning(MorlaWarningParams{"title", {"one", "", "two"}, {"Yes", "No"}, "more"}));
  EXPECT_THAT(takeOptions(program), ElementsAre("-t", "title", "-s", "one", "-s", "", "-s", "two",
                                                "-f", "more", "-b", "Yes", "-b", "No"));
  EXPECT_EQ(0, MR_warning(MorlaWarningParams{"", {}, {""}, "-b \"\\"}));
  EXPECT_THAT(takeOptions(program), ElementsAre("-f", "-b \"\\", "-b", ""));
  EXPECT_EQ(0, MR_warning_ok("K\xC3\xB6ln: 100% \xE2\x82\xAC"));
  EXPECT_THAT(takeOptions(program),
              ElementsAre("-s", "K\xC3\xB6ln: 100% \xE2\x82\xAC", "-b", "OK"));
}

TEST(Warning, TaggedListsAddLinesAndButtonsAndReplaceTheRest) {
  RecordingProgram program(3);
  EXPECT_EQ(2, MR_warning(1, "A", 3, "first", 0, "x", 1, "B", 2, "old", 0, "y", 3, "last", 2, "new",
                          1, "C", 4));
  const auto sorted =
      ElementsAre("-t", "last", "-s", "x", "-s", "y", "-f", "new", "-b", "A", "-b", "B", "-b", "C");
  EXPECT_THAT(takeOptions(program), sorted);
  const char* labels[] = {"A", "B"};
  EXPECT_EQ(2, MR_warning_buttons(2, labels, 0, "x", 1, "C", 0, "y", 2, "new", 3, "last", 4));
  EXPECT_THAT(takeOptions(program), sorted);
  for (const int none : {0, -1}) {
    EXPECT_EQ(-1, MR_warning_buttons(none, labels, 0, nullptr, 1, "only", 4));
    EXPECT_THAT(takeOptions(program), ElementsAre("-s", "", "-b", "only"));
  }
}

TEST(Warning, OnlyTheNumberOfAButtonIsAChoice) {
  RecordingProgram program;
  const MorlaWarningParams warning = {"", {"?"}, {"Yes", "No", "Maybe"}, ""};
  for (const int code : {0, 1, 2, 3, 4, 255}) {
    program.exitWith(code);
    EXPECT_EQ(code <= 3 ? code - 1 : -1, MR_warning(warning)) << code;
  }
}

TEST(Warning, WithoutATextOrAButtonNothingIsShown) {
  RecordingProgram program(1);
  const char* labels[] = {"OK"};
  EXPECT_EQ(-1, MR_warning(MorlaWarningParams{"title", {}, {"OK"}, ""}));
  EXPECT_EQ(-1, MR_warning(MorlaWarningParams{"title", {"line"}, {}, "extra"}));
  EXPECT_EQ(-1, MR_warning(4));
  EXPECT_EQ(-1, MR_warning(99, 1, 2, 3));
  EXPECT_EQ(-1, MR_warning_buttons(1, labels, 2, "", 4));
  EXPECT_THAT(program.takeArguments(), IsEmpty());
}

TEST(Warning, WithoutTheProgramNothingIsChosen) {
  RecordingProgram program(1);
  APP_setBinaryFolder("a folder that is not there");
  EXPECT_EQ(-1, MR_warning_ok("line"));
  APP_setBinaryFolder("");
  EXPECT_EQ(0, MR_warning_ok("line"));
}
