#include "examples/session/Drawing.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

#include <vx/KernelObject.h>

#include "examples/session/StepFiles.h"

namespace session {

namespace {

using surfacefit::Point;

// So many of the largest deviations are drawn: where the surface is bad.
constexpr std::ptrdiff_t kMostLines = 500;

vxLinear::Point placeOf(const Point& point) {
  return {point.x, point.y, point.z};
}

// A curve of degree 1 through its poles.
std::unique_ptr<vxgk::Curve> polyline(vx::vector<vxLinear::Point> poles) {
  vx::vector<double> knots(1, 0.0);
  for (std::size_t i = 0; i < poles.size(); ++i) knots.push_back(static_cast<double>(i));
  knots.push_back(knots.back());
  return std::make_unique<vxgk::Curve>(1, std::move(knots), std::move(poles));
}

vxString::CString heightText(const char* what, double height, const std::string& unit) {
  return vxString::CString::format("%s %.5g %s", what, height, unit.c_str());
}

}  // namespace

StepDrawing::StepDrawing(const std::string& name, const surfacefit::Fit& fit,
                         const std::vector<Point>& points, const std::string& unit) {
  frame_.name = name.c_str();
  auto surface = std::make_unique<vxgk::Surface>(kernelSurface(fit.surface));
  addNet(*surface);
  frame_.surfaces.push_back(surface.release());
  for (const Point& p : points) frame_.points.push_back(placeOf(p));
  addDeviations(fit, points);
  const surfacefit::Deviation& worst = fit.deviation.largest;
  const vxLinear::Point worstPlace = {worst.x, worst.y,
                                      fit.surface.heightAt(worst.x, worst.y) + worst.value};
  frame_.labels.push_back({worstPlace, heightText("deviation", worst.value, unit)});
  const auto [lowest, highest] = std::minmax_element(
      points.begin(), points.end(), [](const Point& a, const Point& b) { return a.z < b.z; });
  frame_.labels.push_back({placeOf(*highest), heightText("highest", highest->z, unit)});
  frame_.labels.push_back({placeOf(*lowest), heightText("lowest", lowest->z, unit)});
}

void StepDrawing::addDeviations(const surfacefit::Fit& fit, const std::vector<Point>& points) {
  const DoubleVec all = deviations(fit.surface, points);
  std::vector<int> order(points.size());
  std::iota(order.begin(), order.end(), 0);
  const auto drawn = order.begin() + std::min(kMostLines, order.end() - order.begin());
  std::partial_sort(order.begin(), drawn, order.end(),
                    [&all](int i, int j) { return std::abs(all(i)) > std::abs(all(j)); });
  std::for_each(order.begin(), drawn, [&](int i) {
    const Point& p = points[i];
    frame_.lines.push_back({{p.x, p.y, p.z - all(i)}, {0.0, 0.0, all(i)}});
  });
}

void StepDrawing::addNet(const vxgk::Surface& surface) {
  const std::size_t rows = surface.countU();
  const std::size_t columns = surface.countV();
  const auto add = [&](std::size_t first, std::size_t step, std::size_t count) {
    vx::vector<vxLinear::Point> poles;
    for (std::size_t k = 0; k < count; ++k) poles.push_back(surface.poles()[first + k * step]);
    auto line = polyline(std::move(poles));
    frame_.curves.push_back(line.release());
  };
  for (std::size_t i = 0; i < rows; ++i) add(i * columns, 1, columns);
  for (std::size_t j = 0; j < columns; ++j) add(j, columns, rows);
}

}  // namespace session
