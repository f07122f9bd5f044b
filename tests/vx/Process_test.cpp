#include <cstdio>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <vx/Process.h>
#include <vx/SysInfo.h>

#include "tests/support/RecordingProgram.h"
#include "tests/support/TemporaryFolder.h"

using kilntest::RecordingProgram;
using vxOS::ProcessManager;
using vxString::CString;

TEST(Process, ArgumentsArriveAsTheyAreAndWhatWasWrittenComesFirst) {
  RecordingProgram program(255);
  std::istringstream nasty(
      "~two words~\"~say \"a b\"~\\~C:\\~C:\\My Files\\~\\\\server\\share~a\\\\b c\\\\~\\\"~"
      "a\\\"b~\\\\\" \\\\~tab\t~line\nline~%PATH%~$HOME~*~^&|<>~"
      "K\xC3\xB6ln \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80~~");
  std::vector<std::string> arguments;
  vx::vector<CString> command = {APP_getBinaryPath("morlaWarning")};
  for (std::string text; std::getline(nasty, text, '~'); command.push_back(text.c_str())) {
    arguments.push_back(text);
  }
  testing::internal::CaptureStdout();
  std::fputs("before ", stdout);
  EXPECT_EQ(255, ProcessManager::getInstance().startSync(command));
  EXPECT_THAT(testing::internal::GetCapturedStdout(), testing::StartsWith("before recorded"));
  EXPECT_EQ(arguments, program.takeArguments());
}

TEST(Process, DetachedProgramsStartInTheirFolderAndRelativePathsInOurs) {
  const kilntest::TemporaryFolder folder;
  const RecordingProgram program(3);
  kilntest::setEnvironment("KILNTEST_RECORD", "record");
  const std::filesystem::path before = std::filesystem::current_path();
  const std::filesystem::path path = APP_getBinaryPath("morlaWarning").c_str();
  std::filesystem::current_path(path.parent_path());
  for (const std::string& name : {path.string(), path.filename().string()}) {
    const vxUtil::Error error = ProcessManager::getInstance().startAsync(
        {name.c_str(), "two words"}, vxOS::Filename(CString(folder.path().string().c_str())));
    EXPECT_EQ(0, error.code()) << error.message().c_str();
    EXPECT_EQ(std::string("two words\0", 10), kilntest::awaitFile(folder.path() / "record"));
    std::filesystem::remove(folder.path() / "record");
  }
  std::filesystem::current_path(before);
}

TEST(Process, WhatCannotBeStartedHasNoExitCodeAndIsAnErrorThatNamesIt) {
  RecordingProgram program;
  const CString path = APP_getBinaryPath("morlaWarning");
  const CString zero(std::string_view("\0", 1));
  const vx::vector<CString> commands[] = {
      {}, {"", "-t"}, {path + "x"}, {path + zero, "-t"}, {path, "a" + zero + "b"}};
  for (const auto& command : commands) {
    EXPECT_EQ(std::nullopt, ProcessManager::getInstance().startSync(command));
    EXPECT_NE(0, ProcessManager::getInstance().startAsync(command, {}).code());
  }
  const vxOS::Filename none(CString("no/folder"));
  EXPECT_NE(0, ProcessManager::getInstance().startAsync({path}, vxOS::Filename(zero)).code());
  EXPECT_THAT(ProcessManager::getInstance().startAsync({path}, none).message().c_str(),
              testing::StartsWith(("cannot start \"" + path + "\" in \"no/folder\": ").c_str()));
  EXPECT_THAT(program.takeArguments(), testing::IsEmpty());
}

TEST(SysInfo, ProgramsStandBesideTheRunningOneOrWhereTheHostSays) {
  const std::filesystem::path path = APP_getBinaryPath("vx_test").c_str();
  EXPECT_TRUE(std::filesystem::exists(path)) << path;
  const CString ending = path.extension().string().c_str();
  for (const char* folder : {"some folder", "some folder/", "some folder\\"}) {
    APP_setBinaryFolder(folder);
    const CString program = APP_getBinaryPath("tool" + ending);
    EXPECT_EQ("some folder?tool" + ending, program.replaced("/", "?").replaced("\\", "?"));
    EXPECT_EQ(program, APP_getBinaryPath("tool"));
  }
  APP_setBinaryFolder("");
  EXPECT_EQ(CString(path.string().c_str()), APP_getBinaryPath("vx_test"));
}
