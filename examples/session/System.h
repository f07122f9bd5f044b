// What differs between the systems.
#pragma once

#include <cstdint>

namespace session {

/// Whether standard output is a terminal that shows colours.
bool outputShowsColours();

/// Whether standard error is a terminal.
bool errorIsTerminal();

/// The most memory that this process has had so far, in bytes; 0 when the system does not tell.
std::uint64_t peakMemory();

}  // namespace session
