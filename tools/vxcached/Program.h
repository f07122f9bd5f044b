// The program without its main function.
#pragma once

namespace vxcached {

/// Returns the exit code.
int runProgram(int argc, const char* const* argv);

}  // namespace vxcached
