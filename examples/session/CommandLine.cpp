#include "examples/session/CommandLine.h"

#include <CLI/CLI.hpp>
#include <cmath>

#include <kilnbase/version.h>

#include "examples/surface_fit/InputError.h"
#include "tools/parseArguments.h"

namespace session {

namespace {

constexpr const char* kDescription =
    R"(Works through a session of surface modelling, without windows, on measured points.

The session makes the project "demo" in the output folder, fits a B-spline surface coarse to fine,
every kept step a change that can be undone, and undoes and redoes some. Fits go into a file cache
(kept by vxcached, which starts by itself), so that a second session on the same points has them at
once. Every kept step is drawn in a running drawview, and in a recording.

The points are text, "x y z" a line; surface_fit --help tells what else can be read. ESC or Ctrl-C
stops the fit and keeps what is fitted so far.)";

constexpr const char* kFooter = R"(
Written to the output folder: session.html, a page with the steps in three dimensions, and with maps,
a section and a table of the fit; and the project in demo/: trace.txt, what the session traced;
wire/net.NNNN, the control net of the kept step NNNN, which surface_fit --evaluate reads;
sla/surface.ply, the mesh of the surface; misc_data/session.kilndraw, the recording;
misc_data/cache/, the file cache. Without drawview there is no recording and nothing in three
dimensions, and without vxcached no cache; the rest is done.

Colours and progress are for terminals; the environment variable NO_COLOR switches colours off.

Exit code: 0 when the session was worked through, also when the fit was stopped; 2 for input that
cannot be used, too little memory, or results that cannot be written. Files are written whole or not
at all.

Examples:
  $ session --output out
  $ session survey.csv --columns east,north,height --output out
  $ drawview --open &  session --tolerance 40)";

}  // namespace

std::optional<Options> parseCommandLine(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kDescription, "session");
  app.footer(kFooter);
  app.get_formatter()->column_width(30);
  app.set_version_flag("--version", "session " KILNBASE_VERSION_STRING, "Tell the version");
  app.add_option("points", options.points, "File of measured points; - for standard input")
      ->capture_default_str();
  app.add_option_function<std::string>(
         "--columns",
         [&options](const std::string& text) { options.columns = CLI::detail::split(text, ','); },
         "Columns of x, y and z: numbers from 1, or names of the heading")
      ->type_name("X,Y,Z");
  app.add_option("-o,--output", options.output, "Folder of the results")->capture_default_str();
  app.add_option("-t,--tolerance", options.tolerance,
                 "Largest deviation allowed; without it, the scatter of the points decides")
      ->check(CLI::Validator(checkPositive, ""));
  app.add_option("--max-steps", options.maxSteps, "Most steps of the refinement")
      ->check(CLI::Range(1, 1000))
      ->capture_default_str();
  app.add_option("--viewer", options.viewerPort, "Port on which a running drawview waits")
      ->type_name("PORT")
      ->check(CLI::Range(1, 65535))
      ->capture_default_str();
  app.add_option("--unit", options.unit, "Unit of the points")->capture_default_str();
  if (!parseArguments<surfacefit::InputError>(app, argc, argv)) return std::nullopt;
  if (!options.columns.empty() && options.columns.size() != 3)
    throw surfacefit::InputError("--columns takes three columns, as in 1,2,3");
  return options;
}

}  // namespace session
