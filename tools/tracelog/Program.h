// The program as a function.
#pragma once

namespace tracelog {

/// Does what the command line asks for and returns the exit code: 0; 1 when a ring or position file
/// is damaged; 2 when the command line cannot be understood, something cannot be read, removed or
/// written. Lines go to standard output, messages to the reports of vx/Report.h.
int runProgram(int argc, const char* const* argv);

}  // namespace tracelog
