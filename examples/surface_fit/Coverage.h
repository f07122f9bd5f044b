// Where points were measured, and where not.
#pragma once

#include <vector>

#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Raster.h"

namespace surfacefit {

/// Tells which places have points around them. A place is covered when its cell of the points' grid
/// or one of the eight around that cell has a point: within about two distances of neighbouring
/// points. A surface over other places is a guess.
class Coverage {
 public:
  explicit Coverage(const std::vector<Point>& points);

  /// For a place in the extent of the points.
  bool covers(double x, double y) const;

 private:
  Grid grid_;
  std::vector<bool> covered_;  // cell by cell
};

}  // namespace surfacefit
