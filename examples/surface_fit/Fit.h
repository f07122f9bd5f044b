// The least-squares fit of a surface over given knots.
#pragma once

#include <cstddef>
#include <vector>

#include "examples/surface_fit/Deviations.h"
#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Surface.h"

namespace surfacefit {

/// A fitted surface and how good it is.
struct Fit {
  Surface surface;
  int unknowns;
  int equations;
  int rank;  ///< Unknowns that the points determine.
  DeviationSummary deviation;
};

/// The most unknowns that so many points can be fitted with: the elements of a matrix are counted
/// by int.
int mostUnknowns(std::size_t points);

/// The surface over the knots of `start` whose heights are nearest to the measured ones, by the sum
/// of squares. Where the points leave coefficients undetermined (spans without points), those of
/// `start` are kept. The points, at least one, lie in the domain of `start`.
///
/// Memory: twice the design matrix of points by unknowns, at its peak; one and a bit of it
/// afterwards until the function returns.
Fit fitSurface(const std::vector<Point>& points, const Surface& start);

}  // namespace surfacefit
