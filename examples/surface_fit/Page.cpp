#include "examples/surface_fit/Page.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <sstream>

#include "examples/surface_fit/Coverage.h"
#include "examples/surface_fit/NumberText.h"
#include "examples/surface_fit/PageTemplate.h"
#include "examples/surface_fit/Raster.h"
#include "examples/surface_fit/Spline.h"

namespace surfacefit {

namespace {

// The fitted surface is drawn from so many values each way.
constexpr int kFittedSamples = 161;

// Values are written as whole multiples of a power of ten: one that divides their range in at least
// so many parts, finer than any screen shows, and the tolerance in a thousand, so that what the
// page tells of a place has the decimals that it shows.
constexpr double kLevels = 1e4;
constexpr double kToleranceLevels = 1e3;

// Yet no more parts than doubles tell apart.
constexpr double kMostLevels = 1e14;

// A JavaScript string. "<" is escaped so that no text can end the script.
std::string quoted(const std::string& text) {
  std::ostringstream result;
  result << '"' << std::hex << std::setfill('0');
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x20 || c == '"' || c == '\\' || c == '<')
      result << "\\u" << std::setw(4) << static_cast<int>(code);
    else
      result << c;
  }
  result << '"';
  return result.str();
}

std::string list(const DoubleVec& values) {
  std::ostringstream text;
  text << "[";
  for (int i = 0; i < static_cast<int>(values.length()); ++i)
    text << (i ? "," : "") << numberText(values(i));
  text << "]";
  return text.str();
}

std::string pair(const Range& range) {
  std::ostringstream text;
  text << "[" << numberText(range.low) << "," << numberText(range.high) << "]";
  return text.str();
}

// The smallest value that is there, and the power of ten.
std::pair<double, double> baseAndStep(const std::vector<double>& values, double tolerance) {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  for (const double value : values) {
    if (std::isnan(value)) continue;
    low = std::min(low, value);
    high = std::max(high, value);
  }
  const double range = high - low;
  if (range <= 0.0) return {low, 1.0};
  const double part =
      std::clamp(tolerance / kToleranceLevels, range / kMostLevels, range / kLevels);
  return {low, std::pow(10.0, std::floor(std::log10(part)))};
}

std::string raster(const Raster& raster, double tolerance) {
  const auto [base, step] = baseAndStep(raster.values, tolerance);
  std::ostringstream text;
  text << "{x:" << pair(raster.grid.x) << ",y:" << pair(raster.grid.y)
       << ",columns:" << raster.grid.columns << ",rows:" << raster.grid.rows
       << ",base:" << numberText(base) << ",step:" << numberText(step) << ",levels:[";
  const char* separator = "";
  for (const double value : raster.values) {
    text << separator;
    separator = ",";
    if (std::isnan(value))
      text << "null";
    else
      text << std::llround((value - base) / step);
  }
  text << "]}";
  return text.str();
}

std::string deviationFields(const Deviation& deviation, const char* valueName) {
  std::ostringstream text;
  text << valueName << ":" << numberText(deviation.value) << ",x:" << numberText(deviation.x)
       << ",y:" << numberText(deviation.y);
  return text.str();
}

std::string steps(const Refinement& refinement) {
  std::ostringstream text;
  text << "[";
  for (const auto& [fit, seconds] : refinement.steps)
    text << "{spans:\"" << spanCount(fit.surface.xKnots()) << " \u00d7 "
         << spanCount(fit.surface.yKnots()) << "\",unknowns:" << fit.unknowns
         << ",equations:" << fit.equations << ",determined:" << fit.determined
         << ",rms:" << numberText(fit.deviation.rms) << ","
         << deviationFields(fit.deviation.largest, "largest") << ",seconds:" << seconds << "},\n";
  text << "]";
  return text.str();
}

std::string pageData(const PageContent& content) {
  const std::vector<Point>& points = content.measurement.points;
  const Fit& best = content.refinement.bestFit();
  const Grid measured = gridOf(points);
  const Grid fitted{measured.x, measured.y, kFittedSamples, kFittedSamples};
  const DoubleVec all = deviations(best.surface, points);
  const double tolerance = content.limits.tolerance;
  const std::vector<int> shown = worstPoints(measured, points, all);
  std::ostringstream data;
  data << "{name:" << quoted(content.name) << ",credit:" << quoted(content.measurement.credit)
       << ",unit:" << quoted(content.unit)
       << ",outcome:" << quoted(describe(content.refinement.stop, content.limits))
       << ",points:" << points.size() << ",tolerance:" << numberText(tolerance) << ",\nlargest:{"
       << deviationFields(best.deviation.largest, "value") << "}"
       << ",\nxKnots:" << list(best.surface.xKnots().breakpoints())
       << ",\nyKnots:" << list(best.surface.yKnots().breakpoints())
       << ",\nbest:" << content.refinement.best << ",steps:" << steps(content.refinement)
       << ",\nmeasured:" << raster(rasterOf(measured, shown, heights(points)), tolerance)
       << ",\ndeviation:" << raster(rasterOf(measured, shown, all), tolerance)
       << ",\nfitted:" << raster(rasterOf(fitted, best.surface, Coverage(points)), tolerance)
       << "}";
  return data.str();
}

}  // namespace

std::string pageText(const PageContent& content) {
  constexpr std::string_view kPlace = "/*DATA*/";
  std::string page(kPageTemplate);
  return page.replace(page.find(kPlace), kPlace.size(), pageData(content));
}

}  // namespace surfacefit
