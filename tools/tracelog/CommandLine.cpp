#include "tools/tracelog/CommandLine.h"

#include <CLI/CLI.hpp>

#include <kilnbase/version.h>

#include "tools/parseArguments.h"
#include "tools/tracelog/Ring.h"

namespace tracelog {

namespace {

constexpr const char* kDescription =
    R"(Shows the lines that processes have traced, oldest first, also those of processes that crashed.

FILE is the ring of one process, "MorlaTrace-UUID.dat"; a FOLDER stands for all rings in it. Lines
of several rings are merged by their times; the first characters of the UUID stand before each. The
position file beside a ring, "MorlaTrace-UUID.dat.pos", tells which line is the oldest; without it
places and times of the lines tell.)";

constexpr const char* kFooter = R"(
Bytes that a terminal could obey are shown as \xNN; a text that holds \xNN itself is shown the same
way, as a backslash stays as it is. Damage in a ring is named on standard error, with
its offset in the file; the whole lines around it are shown.

--follow shows the processes whose rings are there at its start, not those that start later. It ends
when all these have ended, with Ctrl-C, and, on a terminal, with ESC.

--prune removes rings with their position files, and shows no lines. A ring counts from the end of
its process; where a crash left no trace of that, from the last line or the last change of the
files. Times to come count for nothing. Position files without a ring go, too, as their own times
tell. Files with other names are never removed.

Exit code: 0; 1 when a ring or a position file is damaged; 2 when the command line cannot be
understood, or something cannot be read, removed or written.

Examples:
  $ tracelog traces --subsystem UI --subsystem Undo
  $ tracelog --follow traces --grep picked
  $ tracelog --prune 30 traces)";

// The names of the subsystems, without the brackets and the blank of their tags.
std::vector<std::string> subsystemNames() {
  std::vector<std::string> names;
  names.reserve(vxKilnBase::detail::kTraceTags.size());
  for (const std::string_view tag : vxKilnBase::detail::kTraceTags)
    names.emplace_back(tag.substr(1, tag.size() - 3));
  return names;
}

}  // namespace

std::optional<Options> parseCommandLine(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kDescription, "tracelog");
  app.footer(kFooter);
  app.get_formatter()->column_width(30);
  app.get_formatter()->label("Excludes", "| not with");
  app.set_version_flag("--version", "tracelog " KILNBASE_VERSION_STRING, "Tell the version");
  app.add_option("sources", options.sources, "Rings and folders of rings")
      ->option_text("FILE|FOLDER...")
      ->required();
  auto* const follow =
      app.add_flag("-f,--follow", options.follow, "Show new lines of live processes as they come");
  auto* const subsystem =
      app.add_option("-s,--subsystem", options.subsystems, "Only lines of this subsystem")
          ->option_text("NAME ...")
          ->check(CLI::IsMember(subsystemNames()))
          ->expected(1)
          ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  auto* const grep = app.add_option("-g,--grep", options.text, "Only lines that hold this text")
                         ->option_text("TEXT");
  app.add_option("--prune", options.pruneDays,
                 "Remove the rings of processes that ended so long ago")
      ->option_text("DAYS")
      ->check(CLI::Range(1, 36500))
      ->excludes(follow, subsystem, grep);
  if (!parseArguments<InputError>(app, argc, argv)) return std::nullopt;
  return options;
}

}  // namespace tracelog
