// The terminal that the process was started from, on each operating system.
#pragma once

#include <string_view>

namespace vxOS::console {

/// Whether standard error is a terminal that obeys control sequences.
bool errorIsTerminal();

/// Writes UTF-8 text to standard error at once.
void writeError(std::string_view text);

/// Whether ESC was pressed since the last call, if standard input is a terminal of which this
/// process may read. The first call takes the terminal: from then on keys are not echoed, and those
/// other than ESC are dropped. Never waits.
bool escapePressed();

/// Gives the terminal back as it was before `escapePressed`; may be called from a signal handler.
void releaseKeys() noexcept;

}  // namespace vxOS::console
