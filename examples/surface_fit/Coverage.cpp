#include "examples/surface_fit/Coverage.h"

#include <algorithm>

namespace surfacefit {

Coverage::Coverage(const std::vector<Point>& points)
    : grid_(gridOf(points)), covered_(static_cast<std::size_t>(grid_.columns) * grid_.rows) {
  for (const Point& point : points) {
    const auto cell = static_cast<int>(grid_.cellAt(point.x, point.y));
    const int column = cell % grid_.columns;
    const int row = cell / grid_.columns;
    for (int j = std::max(row - 1, 0); j <= std::min(row + 1, grid_.rows - 1); ++j)
      for (int i = std::max(column - 1, 0); i <= std::min(column + 1, grid_.columns - 1); ++i)
        covered_[static_cast<std::size_t>(j) * grid_.columns + i] = true;
  }
}

bool Coverage::covers(double x, double y) const {
  return covered_[grid_.cellAt(x, y)];
}

}  // namespace surfacefit
