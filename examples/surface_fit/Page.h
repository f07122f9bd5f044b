// The page that shows a fit.
#pragma once

#include <string>
#include <vector>

#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Refinement.h"

namespace surfacefit {

/// What the page tells.
struct PageContent {
  const std::vector<Point>& points;
  const Refinement& refinement;
  const Limits& limits;
  std::string unit;
  std::string source;  ///< Where the points come from.
};

/// A page of HTML that needs nothing else: maps of the measured surface, of the best fit and of the
/// deviations side by side, a section through them, and the table of the steps.
std::string pageText(const PageContent& content);

}  // namespace surfacefit
