// The least-squares fit of a surface over given knots.
#pragma once

#include <functional>
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
  int determined;  ///< Unknowns that the points determine.
  DeviationSummary deviation;
};

/// Thrown by a fit that was interrupted.
struct Interrupted {};

/// The surface over the knots of `start` whose heights are nearest to the measured ones, by the sum
/// of squares. Where the points leave coefficients undetermined (spans without points), the surface
/// stays near `start`; a coefficient that no point touches is that of `start`. The points, at least
/// one, lie in the domain of `start`.
///
/// With nx by ny coefficients and nx <= ny, time is about 180 nx^3 ny floating-point operations and
/// a thousand for each point. Memory is about 4 nx^2 ny numbers, twice that where coefficients are
/// undetermined, and 24 bytes for each point.
///
/// `interrupted`, if there is one, is asked now and then whether to stop; if so, throws
/// Interrupted.
Fit fitSurface(const std::vector<Point>& points, const Surface& start,
               const std::function<bool()>& interrupted = {});

}  // namespace surfacefit
