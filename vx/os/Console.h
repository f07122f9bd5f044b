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

/// Whether ESC was pressed since the last call; false unless `mayReadInput`. Takes the terminal:
/// keys are not echoed, and keys other than ESC are dropped. That lasts until `releaseKeys`, the
/// end of the process (also by a signal) or its suspension. Waits at most 50 ms, and only after
/// ESC, to tell a cursor key from the ESC key.
bool escapePressed();

/// Gives the terminal back as it was before `escapePressed`. May be called from a signal handler.
/// In a forked child the terminal of the parent stays as it is.
void releaseKeys() noexcept;

/// A number that differs between this process and its forked children.
long processId();

}  // namespace vxOS::console
