// What the user asks for.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace surfacefit {

struct Options {
  std::filesystem::path points = "examples/data/jacksboro_dem.xyz";  ///< "-": standard input.
  std::vector<std::string> columns;  ///< Of x, y and z; see PointFormat.
  std::filesystem::path output = "surface_fit_out";
  std::filesystem::path net;                   ///< The net to evaluate; empty: fit one.
  std::vector<std::filesystem::path> exports;  ///< Mesh files.
  std::optional<double> tolerance;
  int maxUnknowns = 20000;
  int maxSpans;  ///< The modelling setting, unless the user says otherwise.
  int maxSteps = 30;
  std::string unit = "m";
};

/// Reads the command line. Help or a version that is asked for goes to standard output, and the
/// result is empty.
/// Throws InputError for a command line that cannot be understood.
std::optional<Options> parseCommandLine(int argc, const char* const* argv);

}  // namespace surfacefit
