#include "examples/surface_fit/StepTable.h"

#include <cmath>
#include <cstdio>
#include <iomanip>
#include <sstream>

#include "examples/surface_fit/NumberText.h"
#include "examples/surface_fit/Spline.h"

namespace surfacefit {

namespace {

std::string spans(const Surface& surface) {
  return std::to_string(spanCount(surface.xKnots())) + " x " +
         std::to_string(spanCount(surface.yKnots()));
}

// Five significant digits, whatever the unit.
std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.5g", value);
  return text;
}

}  // namespace

std::string stepTable(const Refinement& refinement, const Limits& limits, const std::string& unit) {
  std::ostringstream table;
  const auto cell = [&table](int width, const auto& content) {
    table << std::setw(width) << content;
  };
  table << "step      spans  unknowns  equations  determined";
  cell(12, "rms [" + unit + "]");
  cell(14, "largest [" + unit + "]");
  cell(27, "at (x, y) [" + unit + "]");
  table << "    relative  seconds\n" << std::fixed << std::setprecision(3);
  for (std::size_t i = 0; i < refinement.steps.size(); ++i) {
    const auto& [fit, seconds] = refinement.steps[i];
    table << (i == refinement.best ? '*' : ' ');
    cell(3, i + 1);
    cell(11, spans(fit.surface));
    cell(10, fit.unknowns);
    cell(11, fit.equations);
    cell(12, fit.determined);
    cell(12, number(fit.deviation.rms));
    cell(14, number(fit.deviation.largest.value));
    table << ' ';
    cell(26, placeText(fit.deviation.largest.x, fit.deviation.largest.y));
    cell(12, number(std::abs(fit.deviation.largest.value) / limits.tolerance));
    cell(9, seconds);
    table << "\n";
  }
  return table.str();
}

}  // namespace surfacefit
