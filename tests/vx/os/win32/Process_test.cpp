#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <windows.h>

#include <vx/Process.h>
#include <vx/SysInfo.h>

#include "tests/support/Environment.h"
#include "tests/support/TemporaryFolder.h"

namespace {

std::optional<int> run(const vx::vector<vxString::CString>& command) {
  return vxOS::ProcessManager::getInstance().startSync(command);
}

}  // namespace

// Runs in the children of the next test.
TEST(WindowsProcessChild, DISABLED_SetsTheEventsOfTheParentThatItHasAndTellsItsStreams) {
  const char* handle = std::getenv("KILNTEST_EVENT");
  ASSERT_NE(nullptr, handle);
  SetEvent(reinterpret_cast<HANDLE>(std::strtoull(handle, nullptr, 10)));
  std::ostringstream facts;
  facts << (GetConsoleCP() == 0 ? "no console" : "console");
  for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE})
    facts << ' ' << GetFileType(GetStdHandle(stream));
  std::ofstream(std::getenv("KILNTEST_RECORD")) << facts.str();
}

TEST(WindowsProcess, NothingButTheStandardStreamsIsInherited) {
  SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
  const HANDLE event = CreateEventW(&inheritable, TRUE, FALSE, nullptr);
  kilntest::setEnvironment("KILNTEST_EVENT",
                           std::to_string(reinterpret_cast<std::uintptr_t>(event)));
  const kilntest::TemporaryFolder folder;
  kilntest::setEnvironment("KILNTEST_RECORD", (folder.path() / "record").string());
  const vx::vector<vxString::CString> command = {APP_getBinaryPath("vx_test"),
                                                 "--gtest_also_run_disabled_tests",
                                                 "--gtest_filter=WindowsProcessChild.*"};
  EXPECT_EQ(0, run(command));
  EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(event, 0));
  std::filesystem::remove(folder.path() / "record");
  EXPECT_EQ(0, vxOS::ProcessManager::getInstance().startAsync(command, {}).code());
  EXPECT_EQ("no console 2 2 2", kilntest::awaitFile(folder.path() / "record"));  // FILE_TYPE_CHAR
  EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(event, 0));
  CloseHandle(event);
}

TEST(WindowsProcess, BatchFilesAreRefused) {
  const std::filesystem::path file = std::filesystem::temp_directory_path() / "kilntest.bat";
  std::ofstream(file) << "@exit 3\n";
  const vxString::CString path = file.string().c_str();
  for (const char* end : {"", ".", " ", ". ."}) {
    EXPECT_EQ(std::nullopt, run({path + end})) << end;
    EXPECT_NE(0, vxOS::ProcessManager::getInstance().startAsync({path + end}, {}).code()) << end;
  }
  EXPECT_EQ(std::nullopt, run({path.toUpper()}));
  std::filesystem::remove(file);
}
