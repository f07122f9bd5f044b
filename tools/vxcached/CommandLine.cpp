#include "tools/vxcached/CommandLine.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <stdexcept>

#include <kilnbase/version.h>

namespace vxcached {

namespace {

constexpr const char* kDescription =
    R"(Keeps the files of an application's file cache in a directory.

Applications start the daemon by themselves. It connects to the port on which the application waits,
and learns the directory from the application's first request. Further applications find the daemon
by the file "@lockfile.lck" in the directory. Only processes of the same user are served.)";

constexpr const char* kFooter = R"(
Exit code: 0 at the end of the daemon, which comes with SIGTERM or when no client has been there for
the idle time; 2 when the daemon cannot start.)";

}  // namespace

std::optional<Options> parseCommandLine(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kDescription, "vxcached");
  app.footer(kFooter);
  app.get_formatter()->column_width(32);
  app.set_version_flag("--version", "vxcached " KILNBASE_VERSION_STRING, "Tell the version");
  app.add_option("--port", options.port, "Port of this machine where the first client waits")
      ->check(CLI::Range(1, 65535))
      ->required();
  app.add_option("--idle-timeout", options.idleSeconds, "Seconds to live without clients")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_option("--log", options.log, "File to which a line for each event is added");
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return std::nullopt;
  } catch (const CLI::CallForVersion& version) {
    std::cout << version.what() << "\n";
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw std::runtime_error(std::string(error.what()) + "; see vxcached --help");
  }
  return options;
}

}  // namespace vxcached
