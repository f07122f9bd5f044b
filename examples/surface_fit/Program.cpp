#include "examples/surface_fit/Program.h"

#include <iostream>
#include <sstream>
#include <system_error>

#include <vx/Report.h>

#include "examples/surface_fit/CommandLine.h"
#include "examples/surface_fit/Evaluation.h"
#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/Mesh.h"
#include "examples/surface_fit/NetFile.h"
#include "examples/surface_fit/NumberText.h"
#include "examples/surface_fit/NumericErrors.h"
#include "examples/surface_fit/OutputFiles.h"
#include "examples/surface_fit/Page.h"
#include "examples/surface_fit/PointReader.h"
#include "examples/surface_fit/Refinement.h"
#include "examples/surface_fit/Scatter.h"
#include "examples/surface_fit/StepTable.h"
#include "tools/runReported.h"

namespace surfacefit {

namespace {

std::string netText(const Surface& surface) {
  std::ostringstream text;
  writeNet(surface, text);
  return text.str();
}

// Whatever can be known to fail later fails before the work.
void checkExports(const Options& options, const std::vector<Point>& points, double tolerance) {
  for (const std::filesystem::path& file : options.exports) {
    requirePrecision(meshFormatOf(file.string()), points, tolerance);
    const std::filesystem::path folder = file.parent_path();
    std::error_code error;
    if (!folder.empty() && !std::filesystem::is_directory(folder, error))
      throw InputError("there is no folder '" + folder.string() + "' for the mesh");
  }
}

std::vector<OutputFile> meshFiles(const Options& options, const Surface& surface,
                                  const std::vector<Point>& points) {
  std::vector<OutputFile> files;
  if (options.exports.empty()) return files;
  const Mesh mesh = meshOf(surface, Coverage(points));
  for (const std::filesystem::path& file : options.exports)
    files.push_back({file, meshText(mesh, meshFormatOf(file.string()))});
  return files;
}

std::string nameOf(const std::filesystem::path& points) {
  return points == "-" ? "standard input" : points.filename().string();
}

// What to say beside the table.
std::string closing(const Options& options, const Limits& limits, Stop stop) {
  std::ostringstream text;
  if (!options.tolerance)
    text << "Tolerance " << numberText(limits.tolerance) << " " << options.unit
         << ", from the scatter of the points; --tolerance sets another.\n";
  text << describe(stop, limits) << "\nWritten to " << options.output.generic_string()
       << ": surface.html, net.txt, table.txt\n";
  for (const std::filesystem::path& file : options.exports)
    text << "Written: " << file.generic_string() << "\n";
  return text.str();
}

void fit(const Options& options) {
  const Measurement measurement = readPointFile(options.points, {options.columns});
  const std::vector<Point>& points = measurement.points;
  requireFittable(points);
  const double tolerance = options.tolerance ? *options.tolerance : suggestedTolerance(points);
  checkExports(options, points, tolerance);
  makeFolder(options.output);
  const Limits limits{tolerance, options.maxUnknowns, options.maxSpans, options.maxSteps};
  TbaseReporter reporter("surface_fit", 1);
  const Refinement refinement = refine(points, limits, reporter);
  rptClearStatus();

  const Surface& surface = refinement.bestFit().surface;
  const std::string table = stepTable(refinement, limits, options.unit);
  std::vector<OutputFile> files = meshFiles(options, surface, points);
  files.push_back(
      {options.output / "surface.html",
       pageText({measurement, refinement, limits, options.unit, nameOf(options.points)})});
  files.push_back({options.output / "net.txt", netText(surface)});
  files.push_back({options.output / "table.txt", table});
  writeFiles(files);
  std::cout << table << closing(options, limits, refinement.stop);
}

void evaluate(const Options& options) {
  const Surface surface = readNetFile(options.net);
  std::cout << evaluationText(surface, readPointFile(options.points, {options.columns, false}));
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
  const ThrowingNumericErrors numericErrors;
  const auto work = [&] {
    if (const auto options = parseCommandLine(argc, argv))
      options->net.empty() ? fit(*options) : evaluate(*options);
    return 0;
  };
  return runReported("surface_fit", work, "not enough memory; thin the points out");
}

}  // namespace surfacefit
