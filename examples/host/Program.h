// The program as a function.
#pragma once

namespace host {

/// Does what the command line asks for and returns the exit code: 0, or 2, after a message on
/// standard error, when the command line, the folder or standard output cannot be used.
int runProgram(int argc, const char* const* argv);

}  // namespace host
