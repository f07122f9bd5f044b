// What the caller asks the program to show.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace morlawarning {

/// A warning that is ready to be shown: the texts are valid UTF-8, and '\n' and '\t' are the only
/// control characters. The title and the labels of the buttons have no control characters at all.
struct Warning {
  std::string title;
  std::string message;  ///< Lines, a '\n' after each.
  std::string extra;
  std::vector<std::string> buttons;  ///< At least one and at most `kMostButtons`.
};

/// Exit codes have eight bits, and 0 stands for no button.
constexpr std::size_t kMostButtons = 255;

/// A command line that cannot be understood.
class ArgumentError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads the command line, whose texts may hold any bytes. U+FFFD replaces invalid bytes and
/// control characters; "\r\n" and '\r' count as line ends. Help or a version that is asked for goes
/// to standard output, and the result is empty. Throws ArgumentError.
std::optional<Warning> parseArguments(const std::vector<std::string>& arguments);

}  // namespace morlawarning
