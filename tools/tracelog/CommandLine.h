// What the user asks for.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tracelog {

/// A message for the user; the program ends with the exit code 2.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Options {
  std::vector<std::filesystem::path> sources;
  std::vector<std::string> subsystems;  ///< Names; none stands for all.
  std::string text;                     ///< That a line must hold.
  bool follow = false;
  std::optional<int> pruneDays;
};

/// Reads the command line. Help or a version that is asked for goes to standard output, and the
/// result is empty.
/// Throws InputError for a command line that cannot be understood.
std::optional<Options> parseCommandLine(int argc, const char* const* argv);

}  // namespace tracelog
