// The program as a function.
#pragma once

namespace session {

/// Does what the command line asks for and returns the exit code: 0, or 2, after a message on
/// standard error, when the input cannot be used, memory is missing, or results cannot be written.
int runProgram(int argc, const char* const* argv);

}  // namespace session
