#include "examples/surface_fit/Scatter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include <kilnbase/linalg/DoubleLeastSqQR.h>
#include <kilnbase/util/mr_tolerance.h>

#include "examples/surface_fit/Raster.h"

namespace surfacefit {

namespace {

constexpr double kPointsPerCell = 12.0;

// A quadratic has 6 coefficients; fewer points beyond them tell too little.
constexpr int kQuadratic = 6;
constexpr std::size_t kFewestPoints = kQuadratic + 3;

constexpr double kRankTolerance = 1e-9;

// The points of each cell.
std::vector<std::vector<Point>> cellsOf(const std::vector<Point>& points) {
  const Grid grid = gridOfCells(points, kPointsPerCell);
  std::vector<std::vector<Point>> cells(static_cast<std::size_t>(grid.columns) * grid.rows);
  for (const Point& point : points) cells[grid.cellAt(point.x, point.y)].push_back(point);
  return cells;
}

// The rms deviation of the points of a cell from the best quadratic through them.
double roughness(const std::vector<Point>& points) {
  const Point& middle = points.front();
  const double size =
      std::max(extent(points, &Point::x).length(), extent(points, &Point::y).length());
  const auto count = static_cast<unsigned>(points.size());
  DoubleGenMat design(count, kQuadratic);
  DoubleVec heights(count);
  int row = 0;
  for (const Point& point : points) {
    const double x = (point.x - middle.x) / size;
    const double y = (point.y - middle.y) / size;
    design.row(row) = DoubleVec(std::array{1.0, x, y, x * x, x * y, y * y}.data(), kQuadratic);
    heights(row++) = point.z - middle.z;
  }
  DoubleLeastSqQR quadratic(design);
  quadratic.setTolerance(kRankTolerance * std::abs(quadratic(0, 0)));
  const double free = static_cast<double>(count) - kQuadratic + quadratic.numFreeCols();
  return quadratic.residual(heights).vecLen() / std::sqrt(free);
}

double toTwoDigits(double value) {
  char text[32];
  const auto [end, error] =
      std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, 1);
  std::from_chars(text, end, value);
  return value;
}

}  // namespace

double scatterOf(const std::vector<Point>& points) {
  std::vector<double> all;
  for (const std::vector<Point>& cell : cellsOf(points))
    if (cell.size() >= kFewestPoints) all.push_back(roughness(cell));
  if (all.empty()) return 0.0;
  const auto median = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2);
  std::nth_element(all.begin(), median, all.end());
  return *median;
}

double suggestedTolerance(const std::vector<Point>& points) {
  const double least = 1e-3 * extent(points, &Point::z).length();
  if (least <= 0.0) return get_crv_fit_tolerance();
  const double largestOfAll = std::sqrt(2.0 * std::log(static_cast<double>(points.size())));
  return toTwoDigits(std::max(largestOfAll * scatterOf(points), least));
}

}  // namespace surfacefit
