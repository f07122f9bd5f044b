#include "tests/support/RecordingProgram.h"

#include <fstream>
#include <random>

#include "tests/support/Environment.h"

namespace kilntest {

RecordingProgram::RecordingProgram(int exitCode)
    : record_(std::filesystem::temp_directory_path() /
              ("kilntest-record-" + std::to_string(std::random_device()()))) {
  setEnvironment("KILNTEST_RECORD", record_.string());
  exitWith(exitCode);
}

RecordingProgram::~RecordingProgram() {
  takeArguments();
}

void RecordingProgram::exitWith(int exitCode) {
  setEnvironment("KILNTEST_EXIT_CODE", std::to_string(exitCode));
}

std::vector<std::string> RecordingProgram::takeArguments() {
  std::vector<std::string> arguments;
  std::ifstream file(record_, std::ios::binary);
  for (std::string argument; std::getline(file, argument, '\0');) arguments.push_back(argument);
  file.close();
  std::filesystem::remove(record_);
  return arguments;
}

}  // namespace kilntest
