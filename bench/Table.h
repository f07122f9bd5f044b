// The table of ratios.
#pragma once

#include <iosfwd>

#include "Harness.h"

namespace bench {

/// Writes a line a measurement: the times, the ratios ours/peer and whether the limits are kept.
/// Returns how many lines are over a limit.
int printTable(std::ostream& stream, const std::vector<Measurement>& measurements);

/// Writes a Markdown page: a table with our time, the fastest peer's and their ratio, under a
/// sentence that names processor and compiler.
void printSummary(std::ostream& stream, const std::vector<Measurement>& measurements);

}  // namespace bench
