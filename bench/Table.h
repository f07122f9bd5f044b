// The table of ratios.
#pragma once

#include <iosfwd>

#include "Harness.h"

namespace bench {

/// Writes a line a measurement: the times, the ratios ours/peer and whether the limits are kept.
/// Returns how many lines are over a limit.
int printTable(std::ostream& stream, const std::vector<Measurement>& measurements);

}  // namespace bench
