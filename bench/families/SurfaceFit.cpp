#include "examples/surface_fit/Fit.h"
#include "examples/surface_fit/PointReader.h"
#include "examples/surface_fit/Spline.h"
#include "families/Families.h"
#include "families/Ours.h"
#include "peers/LeastSquaresArrays.h"

namespace bench {

namespace {

using namespace surfacefit;

// The points of the demo and the coefficients of 29 by 29 spans.
const Shape kDemo = {8181, 1024};
constexpr int kSpans = 29;

Limits limits(const Shape&) {
  return {.best = 1.0, .named = 1.0};
}

std::vector<Point> demoPoints() {
  return readPointFile(BENCH_DEMO_POINTS).points;
}

TnumberSequence evenKnots(const Range& range) {
  TnumberSequence knots = oneSpan(range);
  for (int i = 1; i < kSpans; ++i) knots.add(range.low + range.length() * i / kSpans, 1);
  return knots;
}

// At height 0, so that the coefficients of the fit are the unknowns.
Surface ground(const std::vector<Point>& points) {
  return Surface(evenKnots(extent(points, &Point::x)), evenKnots(extent(points, &Point::y)),
                 DoubleGenMat(kSpans + kOrder - 1, kSpans + kOrder - 1, 0.0));
}

Contestant ours(const Shape&) {
  const auto run = [points = demoPoints()] { return fitSurface(points, ground(points)); };
  return contestant(run, [](const Fit& fit) { return valuesOf(fit.surface.net().dataVec()); });
}

// The same equations as a dense matrix, which is made before the clock runs.
LeastSquaresArrays equations(const Shape& shape) {
  const std::vector<Point> points = demoPoints();
  const Surface surface = ground(points);
  const std::size_t height = points.size();
  Values matrix(height * shape.columns, 0.0);
  for (std::size_t row = 0; row < height; ++row) {
    const BasisValues x = basisAt(surface.xKnots(), points[row].x);
    const BasisValues y = basisAt(surface.yKnots(), points[row].y);
    for (int j = 0; j < kOrder; ++j)
      for (int i = 0; i < kOrder; ++i) {
        const std::size_t column = (y.first + j) * surface.net().rows() + x.first + i;
        matrix[column * height + row] = x.value[i] * y.value[j];
      }
  }
  return {shape, matrix, valuesOf(heights(points))};
}

}  // namespace

void addSurfaceFit(Suite& suite) {
  Operation& operation = suite.add({"fit of the demo's system", {kDemo}, {}, limits, ours, {}});
  const FortranRoutine gelsy = lapack().routine("dgelsy_");
  addPeer(operation, lapackName(), gelsy, dgelsyMaker(gelsy, equations));
  const FortranRoutine gels = lapack().routine("dgels_");
  addPeer(operation, "dgels", gels, dgelsMaker(gels, equations));
}

}  // namespace bench
