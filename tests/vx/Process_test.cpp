#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>

#include <vx/Process.h>
#include <vx/SysInfo.h>

#include "tests/support/RecordingProgram.h"

using kilntest::RecordingProgram;
using testing::IsEmpty;
using vxString::CString;

namespace {

std::optional<int> run(const vx::vector<CString>& command) {
  return vxOS::ProcessManager::getInstance().startSync(command);
}

}  // namespace

TEST(Process, ArgumentsArriveAsTheyAre) {
  RecordingProgram program;
  const std::string path = APP_getBinaryPath("morlaWarning").c_str();
  const std::vector<std::string> arguments = {
      "",
      "two words",
      "\"",
      "say \"a b\"",
      "\\",
      "C:\\",
      "C:\\My Files\\",
      "\\\\server\\share",
      "a\\\\b c\\\\",
      "\\\"",
      "a\\\"b",
      "\\\\\" \\\\",
      "tab\t",
      "line\nline",
      "%PATH%",
      "$HOME",
      "*",
      "^&|<>",
      "K\xC3\xB6ln \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80",
      ""};
  vx::vector<CString> command = {path.c_str()};
  for (const std::string& argument : arguments) command.push_back(argument.c_str());
  EXPECT_EQ(0, run(command));
  std::vector<std::string> expected = arguments;
  expected.insert(expected.begin(), path);
  EXPECT_EQ(expected, program.takeArguments());
}

TEST(Process, ReturnsTheExitCodeAfterTheEnd) {
  RecordingProgram program;
  for (const int code : {1, 0, 77, 255}) {
    program.exitWith(code);
    testing::internal::CaptureStdout();
    EXPECT_EQ(code, run({APP_getBinaryPath("morlaWarning")}));
    EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::StartsWith("recorded"));
    EXPECT_EQ(1U, program.takeArguments().size());
  }
}

TEST(Process, WhatCannotBeStartedHasNoExitCode) {
  RecordingProgram program;
  const CString path = APP_getBinaryPath("morlaWarning");
  const CString withZero(std::string_view("a\0b", 3));
  EXPECT_EQ(std::nullopt, run({}));
  EXPECT_EQ(std::nullopt, run({"", "-t"}));
  EXPECT_EQ(std::nullopt, run({APP_getBinaryPath("no such program")}));
  EXPECT_EQ(std::nullopt, run({std::filesystem::temp_directory_path().string().c_str()}));
  EXPECT_EQ(std::nullopt, run({path, withZero}));
  EXPECT_EQ(std::nullopt, run({path + CString(std::string_view("\0", 1))}));
  EXPECT_THAT(program.takeArguments(), IsEmpty());
}

TEST(SysInfo, ProgramsStandBesideTheRunningOneOrWhereTheHostSays) {
  const std::filesystem::path path = APP_getBinaryPath("morlaWarning").c_str();
  EXPECT_TRUE(path.is_absolute());
  EXPECT_TRUE(std::filesystem::exists(path));
  const CString ending = path.extension().string().c_str();
  for (const char* folder : {"some folder", "some folder/", "some folder\\"}) {
    APP_setBinaryFolder(folder);
    const CString program = APP_getBinaryPath("tool" + ending);
    EXPECT_EQ(CString("some folder?tool") + ending, program.replaced("/", "?").replaced("\\", "?"));
    EXPECT_EQ(program, APP_getBinaryPath("tool"));
  }
  APP_setBinaryFolder("");
  EXPECT_EQ(CString(path.string().c_str()), APP_getBinaryPath("morlaWarning"));
}
