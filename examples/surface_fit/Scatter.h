// How rough measured points are.
#pragma once

#include <vector>

#include "examples/surface_fit/Points.h"

namespace surfacefit {

/// How far, typically, a height is from what the heights around it tell: in cells of about a dozen
/// points the rms deviation from the best quadratic surface, corrected for its coefficients, and of
/// these the median. Noise of the measurement and ground that changes from point to point both
/// count. 0 where points are too sparse or too few to tell. The points, at least one, cover an
/// area.
double scatterOf(const std::vector<Point>& points);

/// A tolerance for the largest deviation from a surface that fits points with such a scatter:
/// sqrt(2 ln n) times the scatter, which is about the largest of n normally distributed deviations,
/// but no less than a thousandth of the range of the heights; to two digits. For points at one
/// height, the modelling tolerance.
double suggestedTolerance(const std::vector<Point>& points);

}  // namespace surfacefit
