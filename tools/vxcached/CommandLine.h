// What the caller asks for.
#pragma once

#include <optional>
#include <string>

namespace vxcached {

struct Options {
  int port = 0;                ///< Where the first client waits; 0: `list` or `stop` is given.
  std::string list;            ///< The directory to tell about.
  std::string stop;            ///< The directory whose daemon ends.
  double idleSeconds = 600.0;  ///< How long the daemon lives without clients.
  std::string log;             ///< Empty: no log.
};

/// Reads the command line. Help or a version that is asked for goes to standard output, and the
/// result is empty. Throws std::runtime_error for a command line that cannot be understood.
std::optional<Options> parseCommandLine(int argc, const char* const* argv);

}  // namespace vxcached
