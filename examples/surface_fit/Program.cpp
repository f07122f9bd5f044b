#include "examples/surface_fit/Program.h"

#include <exception>
#include <iostream>
#include <new>
#include <sstream>

#include <kilnbase/util/mr_tolerance.h>
#include <vx/Report.h>

#include "examples/surface_fit/CommandLine.h"
#include "examples/surface_fit/Evaluation.h"
#include "examples/surface_fit/Fit.h"
#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/NetFile.h"
#include "examples/surface_fit/NumericErrors.h"
#include "examples/surface_fit/OutputFiles.h"
#include "examples/surface_fit/Page.h"
#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Refinement.h"
#include "examples/surface_fit/StepTable.h"

namespace surfacefit {

namespace {

// Without a tolerance from the user: a tenth of the range of the heights, or, for points at one
// height, the modelling tolerance.
double toleranceFor(const Options& options, const std::vector<Point>& points) {
  if (options.tolerance) return *options.tolerance;
  const double heights = extent(points, &Point::z).length();
  return heights > 0.0 ? 0.1 * heights : get_crv_fit_tolerance();
}

std::string netText(const Surface& surface) {
  std::ostringstream text;
  writeNet(surface, text);
  return text.str();
}

void fit(const Options& options, const Measurement& measurement) {
  const std::vector<Point>& points = measurement.points;
  requireFittable(points);
  makeFolder(options.output);
  const Limits limits{toleranceFor(options, points), options.maxUnknowns, options.maxSpans,
                      options.maxSteps};
  TbaseReporter reporter("surface_fit", 1);
  const Refinement refinement = refine(points, limits, reporter);
  rptClearStatus();

  const std::string table = stepTable(refinement, limits, options.unit);
  const OutputFile page{options.output / "surface.html",
                        pageText({measurement, refinement, limits, options.unit,
                                  options.points.filename().string()})};
  const OutputFile net{options.output / "net.txt", netText(refinement.bestFit().surface)};
  const OutputFile steps{options.output / "table.txt", table};
  writeFiles({page, net, steps});
  std::cout << table << describe(refinement.stop, limits) << "\nWritten to "
            << options.output.generic_string() << ": surface.html, net.txt, table.txt\n";
}

void run(const Options& options) {
  const Measurement measurement = readPointFile(options.points);
  if (options.net.empty())
    fit(options, measurement);
  else
    std::cout << evaluationText(readNetFile(options.net), measurement.points);
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
  const ThrowingNumericErrors numericErrors;
  try {
    if (const auto options = parseCommandLine(argc, argv)) run(*options);
    if (!std::cout.flush()) throw InputError("cannot write to standard output");
    return 0;
  } catch (const std::bad_alloc&) {
    rptError("surface_fit: not enough memory; thin the points out\n");
  } catch (const std::exception& error) {
    rptError("surface_fit: %s\n", error.what());
  }
  return 2;
}

}  // namespace surfacefit
