// A surface beside measured points.
#pragma once

#include <string>
#include <vector>

#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Surface.h"

namespace surfacefit {

/// A comment with the number of points, the rms and the largest deviation, then "x y height
/// deviation" for every point, a line each. Throws InputError when a point lies outside the
/// surface.
std::string evaluationText(const Surface& surface, const std::vector<Point>& points);

}  // namespace surfacefit
