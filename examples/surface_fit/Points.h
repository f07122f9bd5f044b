// Measured points.
#pragma once

#include <string>
#include <vector>

namespace surfacefit {

/// A measured height z at the place (x, y); all three in one unit.
struct Point {
  double x;
  double y;
  double z;
};

/// A closed interval.
struct Range {
  double low;
  double high;

  double length() const { return high - low; }
  bool contains(double t) const { return low <= t && t <= high; }
};

/// Points as a file holds them.
struct Measurement {
  std::vector<Point> points;
  std::string credit;      ///< Who measured: what follows "# Source:", several joined by "; ".
  bool hasHeights = true;  ///< Otherwise there are places only, and every z is 0.
};

/// The range of one coordinate. There must be points.
Range extent(const std::vector<Point>& points, double Point::*coordinate);

/// Throws InputError unless the points can carry a bicubic surface: at least 16, not all on one
/// line in x and y.
void requireFittable(const std::vector<Point>& points);

}  // namespace surfacefit
