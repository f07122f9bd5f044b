// What the next runs of the program "morlaWarning", which stands beside the tests, do.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kilntest {

class RecordingProgram {
 public:
  explicit RecordingProgram(int exitCode = 0);
  ~RecordingProgram();
  RecordingProgram(const RecordingProgram&) = delete;
  RecordingProgram& operator=(const RecordingProgram&) = delete;

  void exitWith(int exitCode);

  // The arguments of the last run, the program's path first; nothing when it has not run since.
  std::vector<std::string> takeArguments();

 private:
  std::filesystem::path record_;
};

}  // namespace kilntest
