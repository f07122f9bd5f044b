#include "examples/surface_fit/CommandLine.h"

#include <CLI/CLI.hpp>
#include <cmath>

#include <kilnbase/util/mr_tolerance.h>
#include <kilnbase/version.h>

#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/Mesh.h"
#include "tools/parseArguments.h"

namespace surfacefit {

namespace {

constexpr const char* kDescription =
    R"(Fits a bicubic B-spline surface to measured points by least squares and refines it until its
largest deviation from them is within the tolerance.

The points are text, "x y z" a line, z the measured height over the place (x, y). Blanks, tabs,
commas or semicolons separate; a first line without numbers is a heading; "#" starts a comment, and
the page shows what follows "# Source:" as the credit of the points. Where there are more columns,
the heading may name them x, y and z, or --columns tells which they are.

The surface covers the rectangle of all x and y. It begins with one span each way; spans are halved
everywhere up to eight, then where the deviation is largest, in x and in y separately. Places
without points keep the shape of the coarser surface; the page marks them, and meshes leave them
out.

Without --tolerance the points decide: how far heights scatter about what those around them tell,
times sqrt(2 ln n), which is about the largest of n deviations of such a size.

Written to the output folder: surface.html, a page with maps of the measured surface, the fit and
the deviation; net.txt, the knots and the control net, for --evaluate; table.txt, the table of the
steps, which also goes to standard output. ESC or Ctrl-C stops and keeps the best fit so far.)";

constexpr const char* kFooter = R"(
With --evaluate nothing is fitted: for every point its x, its y, the height of the surface and the
deviation (measured height minus surface) go to standard output; for points without z, the first
three.

Exit code: 0 when a surface was fitted or evaluated, whether or not the tolerance was reached; 2 for
input that cannot be used, too little memory, or results that cannot be written. Files are written
whole or not at all.

Examples:
  $ surface_fit terrain.xyz --tolerance 20 --output fit
  $ surface_fit survey.csv --columns east,north,height --export terrain.ply
  $ unzip -p terrain.zip | surface_fit - --columns 2,3,5
  $ surface_fit places.txt --evaluate fit/net.txt > heights.txt)";

void addFitOptions(CLI::App& app, Options& options, CLI::Option* evaluate) {
  const auto fitOnly = [evaluate](CLI::Option* option) { option->excludes(evaluate); };
  const CLI::Validator positive(checkPositive, "");
  fitOnly(app.add_option("-t,--tolerance", options.tolerance,
                         "Largest deviation allowed; without it, the scatter of the points decides")
              ->check(positive));
  fitOnly(app.add_option("-o,--output", options.output, "Folder of the results")
              ->capture_default_str());
  fitOnly(app.add_option("--export", options.exports,
                         "Mesh of the surface, FILE.obj, .ply or .stl; may be repeated")
              ->type_name("FILE")
              ->allow_extra_args(false));
  fitOnly(app.add_option("--max-unknowns", options.maxUnknowns, "Most coefficients of the surface")
              ->check(CLI::Range(16, 100000))
              ->capture_default_str());
  fitOnly(app.add_option("--max-spans", options.maxSpans, "Most spans in each direction")
              ->check(CLI::Range(1, 10000))
              ->capture_default_str());
  fitOnly(app.add_option("--max-steps", options.maxSteps, "Most steps of the refinement")
              ->check(CLI::Range(1, 1000))
              ->capture_default_str());
}

void requireColumns(const Options& options) {
  const std::size_t count = options.columns.size();
  const bool enough = count == 3 || (count == 2 && !options.net.empty());
  if (count != 0 && !enough)
    throw InputError("--columns takes three columns, as in 1,2,3, or with --evaluate two");
}

}  // namespace

std::optional<Options> parseCommandLine(int argc, const char* const* argv) {
  Options options;
  options.maxSpans = get_max_surf_spans();
  CLI::App app(kDescription, "surface_fit");
  app.footer(kFooter);
  app.get_formatter()->column_width(38);
  app.get_formatter()->label("Excludes", "| not with");
  app.set_version_flag("--version", "surface_fit " KILNBASE_VERSION_STRING, "Tell the version");
  app.add_option("points", options.points, "File of measured points")->capture_default_str();
  app.add_option_function<std::string>(
         "--columns",
         [&options](const std::string& text) { options.columns = CLI::detail::split(text, ','); },
         "Columns of x, y and z: numbers from 1, or names of the heading")
      ->type_name("X,Y[,Z]");
  app.add_option("--unit", options.unit, "Unit of the points, for the table and the page")
      ->capture_default_str();
  addFitOptions(app, options,
                app.add_option("--evaluate", options.net, "Evaluate this net.txt at the points"));
  if (!parseArguments<InputError>(app, argc, argv)) return std::nullopt;
  requireColumns(options);
  for (const std::filesystem::path& file : options.exports) meshFormatOf(file.string());
  return options;
}

}  // namespace surfacefit
