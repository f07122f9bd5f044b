#include "examples/surface_fit/Points.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "examples/surface_fit/InputError.h"

namespace surfacefit {

namespace {

// A bicubic patch has 4 by 4 coefficients.
constexpr std::size_t kFewestPoints = 16;

// So that points, and bytes of lists of them, can still be counted.
constexpr std::size_t kMostPoints = 100'000'000;

// Points nearer to a line than this part of their spread are taken to lie on it: what is left is
// the rounding of the coordinates as they were written.
constexpr double kLineTolerance = 1e-9;

// The point farthest from `from` in x and y.
const Point& farthest(const std::vector<Point>& points, const Point& from) {
  const auto distance = [&from](const Point& p) { return std::hypot(p.x - from.x, p.y - from.y); };
  return *std::max_element(
      points.begin(), points.end(),
      [&distance](const Point& p, const Point& q) { return distance(p) < distance(q); });
}

// Whether all points lie on the line through the two that are farthest apart, but for rounding.
bool lieOnOneLine(const std::vector<Point>& points) {
  const Point& start = farthest(points, points.front());
  const Point& end = farthest(points, start);
  const double dx = end.x - start.x;
  const double dy = end.y - start.y;
  const double length = std::hypot(dx, dy);
  return std::all_of(points.begin(), points.end(), [&](const Point& p) {
    const double twiceArea = dx * (p.y - start.y) - dy * (p.x - start.x);
    return std::abs(twiceArea) <= kLineTolerance * length * length;
  });
}

}  // namespace

Range extent(const std::vector<Point>& points, double Point::*coordinate) {
  Range range{points.front().*coordinate, points.front().*coordinate};
  for (const Point& point : points) {
    range.low = std::min(range.low, point.*coordinate);
    range.high = std::max(range.high, point.*coordinate);
  }
  return range;
}

void requireFittable(const std::vector<Point>& points) {
  if (points.size() < kFewestPoints)
    throw InputError("too few points: " + std::to_string(points.size()) +
                     ", but a bicubic surface" + " needs at least " +
                     std::to_string(kFewestPoints) + "; add measurements");
  if (points.size() > kMostPoints)
    throw InputError("more than " + std::to_string(kMostPoints) + " points; thin them out");
  if (lieOnOneLine(points))
    throw InputError(
        "the points lie on one line in x and y; a surface needs points that cover an area");
}

}  // namespace surfacefit
