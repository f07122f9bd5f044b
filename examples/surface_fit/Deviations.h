// How far a surface is from measured points.
#pragma once

#include <vector>

#include <kilnbase/linalg/DoubleVec.h>

#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Surface.h"

namespace surfacefit {

/// A deviation, measured height minus that of the surface, and where it is.
struct Deviation {
  double value;
  double x;
  double y;
};

struct DeviationSummary {
  double rms;
  Deviation largest;  ///< By its size.
};

/// The measured heights.
DoubleVec heights(const std::vector<Point>& points);

/// The deviation of every point. The surface contains them all.
DoubleVec deviations(const Surface& surface, const std::vector<Point>& points);

/// The summary of the deviations of these points, of which there is at least one.
DeviationSummary summarize(const std::vector<Point>& points, const DoubleVec& deviations);

}  // namespace surfacefit
