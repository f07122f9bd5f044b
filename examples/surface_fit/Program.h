// The program as a function.
#pragma once

namespace surfacefit {

/// Does what the command line asks for and returns the exit code: 0, or 2, after a message, when
/// the input cannot be used, memory is missing, or results cannot be written. Results go to
/// standard output and to files, messages to the reports of vx/Report.h.
int runProgram(int argc, const char* const* argv);

}  // namespace surfacefit
