#include "examples/surface_fit/Raster.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "examples/surface_fit/Coverage.h"

namespace surfacefit {

namespace {

// Scattered points: so many of them, on average, share a cell.
constexpr double kPointsPerCell = 2.0;

// Distances of neighbours on an even grid differ by no more than this part: coordinates are
// rounded.
constexpr double kUnevenness = 0.25;

// The number of different values of a coordinate, if they are evenly spaced.
std::optional<std::size_t> evenCount(const std::vector<Point>& points, double Point::*coordinate) {
  std::vector<double> values;
  values.reserve(points.size());
  for (const Point& point : points) values.push_back(point.*coordinate);
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
  const double step = (values.back() - values.front()) / static_cast<double>(values.size() - 1);
  for (std::size_t i = 1; i < values.size(); ++i)
    if (std::abs(values[i] - values[i - 1] - step) > kUnevenness * step) return std::nullopt;
  return values.size();
}

int cellsAlong(const Range& range, double size) {
  return std::max(2, static_cast<int>(std::lround(range.length() / size)) + 1);
}

int indexOf(double t, const Range& range, int count) {
  return static_cast<int>(std::lround((t - range.low) / range.length() * (count - 1)));
}

double centre(const Range& range, int index, int count) {
  return index == count - 1 ? range.high : range.low + range.length() * index / (count - 1);
}

}  // namespace

std::size_t Grid::cellAt(double placeX, double placeY) const {
  return static_cast<std::size_t>(indexOf(placeY, y, rows)) * columns + indexOf(placeX, x, columns);
}

Grid gridOf(const std::vector<Point>& points) {
  const Range x = extent(points, &Point::x);
  const Range y = extent(points, &Point::y);
  const auto columns = evenCount(points, &Point::x);
  const auto rows = evenCount(points, &Point::y);
  if (columns && rows && *columns * *rows <= 2 * points.size())
    return {x, y, static_cast<int>(*columns), static_cast<int>(*rows)};
  return gridOfCells(points, kPointsPerCell);
}

Grid gridOfCells(const std::vector<Point>& points, double pointsPerCell) {
  const Range x = extent(points, &Point::x);
  const Range y = extent(points, &Point::y);
  const double cells = static_cast<double>(points.size()) / pointsPerCell;
  const double size = std::max(std::sqrt(x.length() * y.length() / cells),
                               std::max(x.length(), y.length()) / cells);
  return {x, y, cellsAlong(x, size), cellsAlong(y, size)};
}

std::vector<int> worstPoints(const Grid& grid, const std::vector<Point>& points,
                             const DoubleVec& deviations) {
  std::vector<int> worst(static_cast<std::size_t>(grid.columns) * grid.rows, -1);
  for (int k = 0; k < static_cast<int>(points.size()); ++k) {
    int& cell = worst[grid.cellAt(points[k].x, points[k].y)];
    if (cell < 0 || std::abs(deviations(k)) > std::abs(deviations(cell))) cell = k;
  }
  return worst;
}

Raster rasterOf(const Grid& grid, const std::vector<int>& pointOfCell, const DoubleVec& values) {
  Raster raster{grid, {}};
  for (const int k : pointOfCell)
    raster.values.push_back(k < 0 ? std::numeric_limits<double>::quiet_NaN() : values(k));
  return raster;
}

Raster rasterOf(const Grid& grid, const Surface& surface, const Coverage& coverage) {
  Raster raster{grid, {}};
  for (int j = 0; j < grid.rows; ++j)
    for (int i = 0; i < grid.columns; ++i) {
      const double x = centre(grid.x, i, grid.columns);
      const double y = centre(grid.y, j, grid.rows);
      raster.values.push_back(coverage.covers(x, y) ? surface.heightAt(x, y)
                                                    : std::numeric_limits<double>::quiet_NaN());
    }
  return raster;
}

}  // namespace surfacefit
