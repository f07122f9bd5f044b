#include "examples/surface_fit/Deviations.h"

#include <cmath>

#include <kilnbase/linalg/vecmath.h>

namespace surfacefit {

DoubleVec heights(const std::vector<Point>& points) {
  DoubleVec result(static_cast<unsigned>(points.size()));
  int row = 0;
  for (const Point& point : points) result(row++) = point.z;
  return result;
}

DoubleVec deviations(const Surface& surface, const std::vector<Point>& points) {
  DoubleVec result = heights(points);
  int row = 0;
  for (const Point& point : points) result(row++) -= surface.heightAt(point.x, point.y);
  return result;
}

DeviationSummary summarize(const std::vector<Point>& points, const DoubleVec& deviations) {
  const int worst = maxIndex(abs(deviations));
  return {deviations.vecLen() / std::sqrt(static_cast<double>(points.size())),
          {deviations(worst), points[worst].x, points[worst].y}};
}

}  // namespace surfacefit
