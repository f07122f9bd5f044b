// Even rasters of values, for pictures.
#pragma once

#include <vector>

#include <kilnbase/linalg/DoubleVec.h>

#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Surface.h"

namespace surfacefit {

class Coverage;

/// Even cells: `x` and `y` are the ranges of their centres; at least two columns and two rows.
struct Grid {
  Range x;
  Range y;
  int columns;
  int rows;

  /// The index of the cell of a place in the ranges: row by row from the lowest y.
  std::size_t cellAt(double x, double y) const;
};

/// A value for every cell, row by row from the lowest y, each from the lowest x; NaN where there is
/// none.
struct Raster {
  Grid grid;
  std::vector<double> values;
};

/// The grid over the extent of the points: theirs, if they are measured on an even grid, else cells
/// so large that most of them hold a point.
Grid gridOf(const std::vector<Point>& points);

/// Cells over the extent of the points that hold so many of them on average.
Grid gridOfCells(const std::vector<Point>& points, double pointsPerCell);

/// For each cell the index of the point in it that deviates most, or -1 where there is none.
std::vector<int> worstPoints(const Grid& grid, const std::vector<Point>& points,
                             const DoubleVec& deviations);

/// For each cell the value of its point.
Raster rasterOf(const Grid& grid, const std::vector<int>& pointOfCell, const DoubleVec& values);

/// The heights of the surface at the centres of the cells that are covered.
Raster rasterOf(const Grid& grid, const Surface& surface, const Coverage& coverage);

}  // namespace surfacefit
