#include <kilnbase/geometry/TboundingBox.h>

#include "families/Families.h"
#include "families/Ours.h"

namespace bench {

namespace {

// A row of the table is a point.
const std::vector<Shape> kShapes = {{100, 1}, {10000, 1}, {1000000, 1}};

Limits limits(const Shape&) {
  return {.named = 1.1};
}

Maker withPoints(int size, int rational) {
  return [=](const Shape& shape) {
    const Values elements = pointsOf(shape.rows, size, rational != 0);
    const auto run = [rational, points = TtupleVector(size, vectorOf(elements)),
                      box = TboundingBox(3)]() mutable -> const TboundingBox& {
      box.set(points, rational);
      return box;
    };
    return contestant(run, [](const TboundingBox& box) {
      Values corners = valuesOf(box.minCorner());
      for (const double x : valuesOf(box.maxCorner())) corners.push_back(x);
      return corners;
    });
  };
}

}  // namespace

void addBoxes(Suite& suite) {
  suite.add({"box of points", kShapes, {"Eigen"}, limits, withPoints(3, 0), {}});
  suite.add({"box of rational points", kShapes, {"Eigen"}, limits, withPoints(4, 1), {}});
}

}  // namespace bench
