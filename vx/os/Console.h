// The terminal that the process was started from, on each operating system.
#pragma once

#include <string_view>

namespace vxOS::console {

/// Whether standard error is a terminal that obeys control sequences.
bool errorIsTerminal();

/// Writes UTF-8 text to standard error at once.
void writeError(std::string_view text);

/// Whether standard input is a terminal of which this process may read.
bool mayReadInput();

/// Whether ESC was pressed since the last call, if `mayReadInput`. Takes the terminal: until
/// `releaseKeys`, the end of the process (also by a signal) or its suspension keys are not echoed,
/// and those other than ESC are dropped. Waits only after ESC, at most 50 ms, for what tells a
/// cursor key from the ESC key.
bool escapePressed();

/// Gives the terminal back as it was before `escapePressed`; may be called from a signal handler. A
/// forked child leaves the terminal of its parent alone.
void releaseKeys() noexcept;

/// Tells this process from its forked children.
long processId();

}  // namespace vxOS::console
