// Refinement of a surface until it is near enough to the points.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <kilnbase/auto/containers/TbaseReporter.h>

#include "examples/surface_fit/Fit.h"
#include "examples/surface_fit/Points.h"

namespace surfacefit {

/// When to stop.
struct Limits {
  double tolerance;  ///< Of the largest deviation, in the unit of the points.
  int maxUnknowns;
  int maxSpans;  ///< In each direction.
  int maxSteps;
};

struct Step {
  Fit fit;
  double seconds;
};

enum class Stop {
  kWithinTolerance,
  kMaxUnknowns,
  kMaxSpans,
  kMaxSteps,
  kNothingToSplit,  ///< No span with deviations above the tolerance can be halved.
  kByUser,
  kOutOfMemory,  ///< For the step after the last one.
};

/// The steps of a refinement, at least one.
struct Refinement {
  std::vector<Step> steps;
  std::size_t best;  ///< The step with the smallest largest deviation.
  Stop stop;

  const Fit& bestFit() const { return steps[best].fit; }
};

/// Gets each step that is kept: whose largest deviation is the smallest so far.
using KeptStep = std::function<void(const Step&)>;

/// Fits surfaces of 1, 2, 4 and 8 spans each way over the extent of the points, then halves, in
/// each direction by itself, the spans with the largest deviations, a quarter of the spans at a
/// time. A span is halved only if there are points over both halves. Tells `reporter` of every
/// step, the largest deviation relative to the tolerance, and asks it after every step, and during
/// all but the first, whether to stop. Calls `kept` in the order of the steps; the last call is for
/// the best step. The same points and limits give the same steps, bit for bit.
///
/// Throws std::bad_alloc when there is no memory for the first step; where a later step lacks
/// memory, the refinement ends with the steps before it. Numeric errors must throw for that, see
/// NumericErrors.h.
Refinement refine(const std::vector<Point>& points, const Limits& limits, TbaseReporter& reporter,
                  const KeptStep& kept = {});

/// Why it stopped, as a sentence for the user.
std::string describe(Stop stop, const Limits& limits);

}  // namespace surfacefit
