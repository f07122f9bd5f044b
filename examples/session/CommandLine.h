// What the user asks for.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace session {

struct Options {
  std::filesystem::path points = "examples/data/jacksboro_dem.xyz";  ///< "-": standard input.
  std::vector<std::string> columns;  ///< Of x, y and z; see surfacefit::PointFormat.
  std::filesystem::path output = "session_out";
  std::optional<double> tolerance;  ///< Empty: the scatter of the points decides.
  int maxSteps = 30;
  int viewerPort = 29710;
  std::string unit = "m";
};

/// Reads the command line. Help or a version that is asked for goes to standard output, and the
/// result is empty. Throws surfacefit::InputError for a command line that cannot be understood.
std::optional<Options> parseCommandLine(int argc, const char* const* argv);

}  // namespace session
