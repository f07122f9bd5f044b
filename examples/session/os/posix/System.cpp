#include "examples/session/System.h"

#include <cstdlib>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>

namespace session {

bool outputShowsColours() {
  const char* const type = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && type != nullptr && std::string_view(type) != "dumb";
}

bool errorIsTerminal() {
  return isatty(STDERR_FILENO) != 0;
}

// Linux counts in units of 1024 bytes.
std::uint64_t peakMemory() {
  rusage usage = {};
  return getrusage(RUSAGE_SELF, &usage) == 0 ? static_cast<std::uint64_t>(usage.ru_maxrss) * 1024
                                             : 0;
}

}  // namespace session
