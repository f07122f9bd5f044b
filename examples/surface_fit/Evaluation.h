// A surface beside measured points.
#pragma once

#include <string>

#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Surface.h"

namespace surfacefit {

/// A comment with the number of points, the rms and the largest deviation, then "x y height
/// deviation" for every point, a line each; without measured heights, their number and "x y
/// height". Throws InputError when a point lies outside the surface.
std::string evaluationText(const Surface& surface, const Measurement& measurement);

}  // namespace surfacefit
