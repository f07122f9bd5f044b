// The page that shows a fit.
#pragma once

#include <string>

#include "examples/surface_fit/Points.h"
#include "examples/surface_fit/Refinement.h"

namespace surfacefit {

/// What the page tells.
struct PageContent {
  const Measurement& measurement;
  const Refinement& refinement;
  const Limits& limits;
  std::string unit;
  std::string name;  ///< Of the points.
};

/// A page of HTML that needs nothing else: maps of the measured surface, of the best fit and of the
/// deviations side by side, a section through them, the table of the steps, and the credit of the
/// points. `unit`, `name` and the credit are shown as they are, whatever characters they have.
std::string pageText(const PageContent& content);

}  // namespace surfacefit
