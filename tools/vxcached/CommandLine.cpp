#include "tools/vxcached/CommandLine.h"

#include <CLI/CLI.hpp>
#include <stdexcept>

#include <kilnbase/version.h>

#include "tools/parseArguments.h"

namespace vxcached {

namespace {

constexpr const char* kDescription =
    R"(Keeps the files of an application's file cache in a directory.

Applications start the daemon by themselves. It connects to the port on which the application waits,
and learns the directory from the application's first request. Further applications find the daemon
by the file "@lockfile.lck" in the directory. Only processes of the same user are served.)";

constexpr const char* kFooter = R"(
With --list a line for each file of the cache goes to standard output, first the one that goes first
when room is needed: size, seconds since the last access, how many clients hold it, the file's name, the key.
A file with "-" for the seconds goes when its last hold is given back.

Exit code: 0 at the end of the daemon, which comes with SIGTERM, --stop or when no client has been
there for the idle time; 2 when the daemon cannot start, or when no daemon answers --list or --stop.

Examples:
  $ vxcached --list ~/project/cache
  $ vxcached --stop ~/project/cache
  $ vxcached --port 40123 --log /tmp/cache.log   (with MORLA_FILE_CACHE_MANUAL_START in the application))";

}  // namespace

std::optional<Options> parseCommandLine(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kDescription, "vxcached");
  app.footer(kFooter);
  app.get_formatter()->column_width(32);
  app.set_version_flag("--version", "vxcached " KILNBASE_VERSION_STRING, "Tell the version");
  app.get_formatter()->label("Excludes", "| not with");
  auto* port = app.add_option("--port", options.port, "Port of this machine where a client waits")
                   ->type_name("N")
                   ->check(CLI::Range(1, 65535));
  auto* list = app.add_option("--list", options.list, "Tell what the directory's daemon keeps")
                   ->type_name("DIRECTORY")
                   ->excludes(port);
  app.add_option("--stop", options.stop, "End the directory's daemon")
      ->type_name("DIRECTORY")
      ->excludes(port)
      ->excludes(list);
  app.add_option("--idle-timeout", options.idleSeconds, "How long to live without clients")
      ->type_name("SECONDS")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_option("--log", options.log, "Add a line for each event to this file")->type_name("FILE");
  if (!parseArguments<std::runtime_error>(app, argc, argv)) return std::nullopt;
  if (options.port == 0 && options.list.empty() && options.stop.empty())
    throw std::runtime_error("give --port, --list or --stop; see vxcached --help");
  return options;
}

}  // namespace vxcached
