// The stand-in for the program "morlaWarning", in a folder below the one of the tests, and what its
// next runs do.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <vx/SysInfo.h>

#include "tests/support/Environment.h"

namespace kilntest {

class RecordingProgram {
 public:
  explicit RecordingProgram(int exitCode = 0) {
    setEnvironment("KILNTEST_RECORD", record_.string());
    exitWith(exitCode);
    APP_setBinaryFolder("");
    const std::filesystem::path real = APP_getBinaryPath("morlaWarning").c_str();
    APP_setBinaryFolder((real.parent_path() / "standin").string().c_str());
  }
  ~RecordingProgram() {
    APP_setBinaryFolder("");
    takeArguments();
  }

  void exitWith(int code) { setEnvironment("KILNTEST_EXIT_CODE", std::to_string(code)); }

  // The arguments of the last run; nothing when it has not run since.
  std::vector<std::string> takeArguments() {
    std::vector<std::string> arguments;
    std::ifstream file(record_, std::ios::binary);
    for (std::string argument; std::getline(file, argument, '\0');) arguments.push_back(argument);
    file.close();
    std::filesystem::remove(record_);
    return arguments;
  }

 private:
  std::filesystem::path record_ = std::filesystem::temp_directory_path() /
                                  ("kilntest-record-" + std::to_string(std::random_device()()));
};

}  // namespace kilntest
