#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include <kilnbase/util/mr_warning.h>
#include <vx/SysInfo.h>

#include "tests/support/RecordingProgram.h"

using kilntest::RecordingProgram;
using testing::ElementsAre;

TEST(Warning, TheProgramIsToldEveryPartInOrder) {
  RecordingProgram program(1);
  EXPECT_EQ(0, MR_warning({"", {}, {""}, "more"}));
  EXPECT_THAT(program.takeArguments(), ElementsAre("-f", "more", "-b", ""));
  EXPECT_EQ(0, MR_warning_ok("100%"));
  EXPECT_THAT(program.takeArguments(), ElementsAre("-s", "100%", "-b", "OK"));
}

TEST(Warning, TaggedListsAddLinesAndButtonsAndReplaceTheRest) {
  RecordingProgram program(3);
  const auto sorted =
      ElementsAre("-t", "last", "-s", "x", "-s", "y", "-f", "new", "-b", "A", "-b", "B", "-b", "C");
  EXPECT_EQ(2, MR_warning({"last", {"x", "y"}, {"A", "B", "C"}, "new"}));
  EXPECT_THAT(program.takeArguments(), sorted);
  const char* labels[] = {"A", "B"};
  EXPECT_EQ(2, MR_warning_buttons(2, labels, 3, "first", 0, "x", 2, "old", 1, "C", 0, "y", 2, "new",
                                  3, "last", 4));
  EXPECT_THAT(program.takeArguments(), sorted);
  EXPECT_EQ(-1, MR_warning_buttons(-1, labels, 0, nullptr, 1, "only", 4));
  EXPECT_THAT(program.takeArguments(), ElementsAre("-s", "", "-b", "only"));
}

TEST(Warning, OnlyTheNumberOfAButtonIsAChoiceAndOnlyATextWithAButtonIsShown) {
  RecordingProgram program;
  for (const int code : {0, 1, 2, 3, 255}) {
    program.exitWith(code);
    EXPECT_EQ(code <= 2 ? code - 1 : -1, MR_warning({"", {"?"}, {"Yes", "No"}, ""})) << code;
  }
  program.takeArguments();
  EXPECT_EQ(-1, MR_warning({"title", {}, {"OK"}, ""}));
  EXPECT_EQ(-1, MR_warning({"title", {"line"}, {}, "extra"}));
  EXPECT_EQ(-1, MR_warning(1, "OK", 2, "", 99, "", 0, "behind the end", 4));
  EXPECT_THAT(program.takeArguments(), testing::IsEmpty());
  APP_setBinaryFolder("a folder that is not there");
  EXPECT_EQ(-1, MR_warning_ok("line"));
}
