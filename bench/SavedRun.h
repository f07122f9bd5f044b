// The times of a run in a file, and what another run makes of them.
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "Harness.h"

namespace bench {

/// The times of an earlier run by operation, size and way.
using SavedRun = std::map<std::tuple<std::string, std::string, std::string>, Time>;

/// Writes a line a time: operation, size, way, seconds and noise, with tabs between, under a line
/// that names the format.
void save(std::ostream& stream, const std::vector<Measurement>& measurements);

/// Reads what `save` wrote. Throws std::runtime_error when the stream holds something else.
SavedRun readSavedRun(std::istream& stream);

/// Writes a line a measurement that the saved run has, too: our times then and now, the change, how
/// far it may come from noise, and whether we are faster, slower or the same.
///
/// The change is now / before, over the same of the peers (their median), whose code has not
/// changed: where there are peers, it is free of what the machine did. Noise is that of our time in
/// both runs, plus the median distance of the peers from their median; it counts as 2% at least.
void printComparison(std::ostream& stream, const std::vector<Measurement>& measurements,
                     const SavedRun& before);

}  // namespace bench
