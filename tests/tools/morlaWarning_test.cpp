#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <string>

#include <kilnbase/version.h>

#include "tests/support/Reports.h"
#include "tools/morlaWarning/Program.h"
#include "tools/morlaWarning/Prompt.h"

namespace {

using morlawarning::Dialog;
using morlawarning::parseArguments;
using morlawarning::runProgram;
using morlawarning::Warning;
using testing::HasSubstr;
using Arguments = std::vector<std::string>;

Arguments buttons(std::size_t count) {
  Arguments arguments = {"-s", "?"};
  for (; count > 0; --count) arguments.insert(arguments.end(), {"-b", "B"});
  return arguments;
}

Dialog answering(std::optional<int> answer) {
  return [answer](const Warning&) { return answer; };
}

}  // namespace

TEST(MorlaWarning, EachOptionTakesTheNextArgumentWhateverThatIs) {
  const auto warning = parseArguments({"-s", "-b", "-t", "--help", "-b", "-s", "-s", "", "-f",
                                       "old", "-b", "--", "-f", "-f", "-s", "x", "-t", "-t"});
  ASSERT_TRUE(warning.has_value());
  EXPECT_EQ("-t", warning->title);
  EXPECT_EQ("-b\n\nx\n", warning->message);
  EXPECT_EQ("-f", warning->extra);
  EXPECT_EQ(Arguments({"-s", "--"}), warning->buttons);
}

TEST(MorlaWarning, TextsAreValidAndHoldNoControlCharactersThatSteerATerminal) {
  const struct {
    const char* given;
    const char* shown;
    const char* shownInOneLine;
  } cases[] = {
      {"Köln 中文 😀", "Köln 中文 😀", "Köln 中文 😀"},
      {"a\r\nb\rc\td", "a\nb\nc\td", "a b c d"},
      {"\x1b[2J\x07\x7f", "�[2J��", "�[2J��"},
      {"\xc2\x9b\x31m", "�1m", "�1m"},
      {"\xff\xc3", "��", "��"},
  };
  for (const auto& [given, shown, shownInOneLine] : cases) {
    const auto warning = parseArguments({"-t", given, "-s", given, "-f", given, "-b", given});
    EXPECT_EQ(shown + std::string("\n"), warning->message);
    EXPECT_EQ(shown, warning->extra);
    EXPECT_EQ(shownInOneLine, warning->title);
    EXPECT_EQ(shownInOneLine, warning->buttons[0]);
  }
}

TEST(MorlaWarning, WhatCannotBeShownIsToldAndIsNoButton) {
  kilntest::RecordedReports reports;
  const struct {
    Arguments arguments;
    const char* message;
  } cases[] = {
      {{}, "no text"},
      {{"-b", "OK"}, "no text"},
      {{"-t", "title", "-f", "", "-b", "OK"}, "no text"},
      {{"-s", "line"}, "no button"},
      {{"-s", "line", "-b"}, "no value after -b"},
      {{"-s", "line", "-b", "OK", "more"}, "no option 'more'"},
      {{"-s", "line", "-x\x1b", "OK"}, "no option '-x�'"},
      {buttons(256), "255"},
  };
  for (const auto& [arguments, message] : cases) {
    EXPECT_EQ(0, runProgram(arguments, {answering(1)}));
    EXPECT_THAT(reports.takeAll(), testing::ElementsAre(testing::AllOf(
                                       HasSubstr("error: morlaWarning: "), HasSubstr(message))));
  }
  const Dialog broken = [](const Warning&) -> std::optional<int> { throw std::bad_alloc(); };
  for (const auto& dialogs : {std::vector<Dialog>{}, {answering({})}, {broken, answering(1)}}) {
    EXPECT_EQ(0, runProgram(buttons(3), dialogs));
    EXPECT_EQ(1U, reports.takeAll().size());
  }
}

TEST(MorlaWarning, TheFirstDialogThatCanShowTheWarningAnswers) {
  for (const int answer : {0, 1, 3, 255})
    EXPECT_EQ(answer, runProgram(buttons(255), {answering({}), answering(answer), answering(2)}));
}

TEST(MorlaWarning, TellsEveryOptionAndItsVersion) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(0, runProgram({"--version", "-x"}, {answering(1)}));
  EXPECT_EQ("morlaWarning " + std::string(kilnbaseVersion()) + "\n",
            testing::internal::GetCapturedStdout());
  testing::internal::CaptureStdout();
  EXPECT_EQ(0, runProgram({"-s", "--help", "--help"}, {answering(1)}));
  const std::string help = testing::internal::GetCapturedStdout();
  for (const char* text : {"-t TITLE", "-s LINE", "-f TEXT", "-b LABEL", "Return", "Exit code"})
    EXPECT_THAT(help, HasSubstr(text));
}

TEST(MorlaWarning, ALineOnTheTerminalIsANumberOrNoChoiceOrNoAnswer) {
  const auto none = std::optional<int>();
  const struct {
    const char* line;
    std::optional<int> button;
  } cases[] = {{"", 1},       {"  ", 1},    {"1", 1},     {" 12 ", 12},         {"012", 12},
               {"q", 0},      {"Q", 0},     {"\x1b", 0},  {"0", none},          {"13", none},
               {"-1", none},  {"1x", none}, {"x", none},  {"\x1b[A", none},     {"1.", none},
               {"1 2", none}, {"+1", none}, {"１", none}, {"4294967297", none}, {"quit", none}};
  for (const auto& [line, button] : cases)
    EXPECT_EQ(button, morlawarning::buttonFor(line, 12)) << line;
}
