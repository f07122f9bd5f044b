#include "examples/surface_fit/Fit.h"

#include <cmath>
#include <limits>

#include <kilnbase/linalg/DoubleLeastSqQR.h>

#include "examples/surface_fit/Spline.h"

namespace surfacefit {

namespace {

// Columns that stand out of the span of the others by less than this part of the largest count as
// undetermined. The basis is well conditioned where there are points; a column this small belongs
// to a function that points touch at the rim of its support only, and its coefficient would carry
// their deviations a hundredfold into ground without points.
constexpr double kRankTolerance = 1e-2;

// One row a point, one column a coefficient of the net, taken column by column.
DoubleGenMat designMatrix(const std::vector<Point>& points, const Surface& surface) {
  const int rows = basisSize(surface.xKnots());
  DoubleGenMat design(static_cast<unsigned>(points.size()), surface.net().length(), 0.0);
  int equation = 0;
  for (const Point& point : points) {
    const BasisValues x = basisAt(surface.xKnots(), point.x);
    const BasisValues y = basisAt(surface.yKnots(), point.y);
    for (int j = 0; j < kOrder; ++j)
      for (int i = 0; i < kOrder; ++i)
        design(equation, (y.first + j) * rows + x.first + i) = x.value[i] * y.value[j];
    ++equation;
  }
  return design;
}

}  // namespace

int mostUnknowns(std::size_t points) {
  constexpr std::size_t kMostElements = std::numeric_limits<int>::max();
  return static_cast<int>(kMostElements / points);
}

Fit fitSurface(const std::vector<Point>& points, const Surface& start) {
  DoubleLeastSqQR system(designMatrix(points, start));
  system.setTolerance(kRankTolerance * std::abs(system(0, 0)));
  const DoubleVec correction = system.solve(deviations(start, points));

  const Surface surface =
      start.plus(DoubleGenMat(correction, start.net().rows(), start.net().cols()));
  const auto unknowns = static_cast<int>(system.cols());
  return {surface, unknowns, static_cast<int>(system.numEquations()),
          unknowns - static_cast<int>(system.numFreeCols()),
          summarize(points, deviations(surface, points))};
}

}  // namespace surfacefit
