#include "examples/surface_fit/Evaluation.h"

#include <iomanip>
#include <sstream>

#include "examples/surface_fit/Deviations.h"
#include "examples/surface_fit/InputError.h"
#include "examples/surface_fit/NumberText.h"
#include "examples/surface_fit/Spline.h"

namespace surfacefit {

namespace {

std::string rangeText(const Range& range) {
  return numberText(range.low) + " to " + numberText(range.high);
}

void requireContained(const Surface& surface, const std::vector<Point>& points) {
  for (const Point& point : points) {
    if (surface.contains(point.x, point.y)) continue;
    throw InputError("the point " + placeText(point.x, point.y) + " lies outside the surface (x " +
                     rangeText(domain(surface.xKnots())) + ", y " +
                     rangeText(domain(surface.yKnots())) + "); remove it");
  }
}

std::string heightsText(const Surface& surface, const std::vector<Point>& points) {
  std::ostringstream text;
  text << std::setprecision(10) << "# " << points.size() << " places\n# x y height\n";
  for (const Point& point : points)
    text << numberText(point.x) << " " << numberText(point.y) << " "
         << surface.heightAt(point.x, point.y) << "\n";
  return text.str();
}

std::string deviationsText(const Surface& surface, const std::vector<Point>& points) {
  const DoubleVec all = deviations(surface, points);
  const auto [rms, largest] = summarize(points, all);
  std::ostringstream text;
  text << std::setprecision(10) << "# " << points.size() << " points, rms deviation " << rms
       << ", largest deviation " << largest.value << " at " << placeText(largest.x, largest.y)
       << "\n# x y height deviation\n";
  int row = 0;
  for (const Point& point : points) {
    const double deviation = all(row++);
    text << numberText(point.x) << " " << numberText(point.y) << " " << point.z - deviation << " "
         << deviation << "\n";
  }
  return text.str();
}

}  // namespace

std::string evaluationText(const Surface& surface, const Measurement& measurement) {
  requireContained(surface, measurement.points);
  return measurement.hasHeights ? deviationsText(surface, measurement.points)
                                : heightsText(surface, measurement.points);
}

}  // namespace surfacefit
