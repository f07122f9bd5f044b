// The program as a function.
#pragma once

namespace drawview {

/// Does what the command line asks for and returns the exit code: 0; 1 when a recording is damaged;
/// 2 when the command line cannot be understood, or something cannot be read, written or served.
/// Addresses go to standard output, messages to the reports of vx/Report.h.
int runProgram(int argc, const char* const* argv);

}  // namespace drawview
