#include "examples/session/System.h"

#include <windows.h>
// clang-format off: needs the types of windows.h
#include <psapi.h>
// clang-format on

namespace session {

// A console must be asked to understand colours.
bool outputShowsColours() {
  HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return GetConsoleMode(output, &mode) != 0 &&
         SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

bool errorIsTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

std::uint64_t peakMemory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  return K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) != 0
             ? counters.PeakWorkingSetSize
             : 0;
}

}  // namespace session
