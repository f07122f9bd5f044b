// The table of the steps of a refinement.
#pragma once

#include <string>

#include "examples/surface_fit/Refinement.h"

namespace surfacefit {

/// One line of headings, one line a step, the best one marked with an asterisk. `unit` is that of
/// the points.
std::string stepTable(const Refinement& refinement, const Limits& limits, const std::string& unit);

}  // namespace surfacefit
