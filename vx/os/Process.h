// Programs and processes, on each operating system.
#pragma once

#include <optional>

#include <vx/Containers.h>
#include <vx/String.h>

namespace vxOS::process {

/// What separates the names in a path.
extern const char* const kSeparator;
/// How the file names of programs end, in lower case.
extern const char* const kProgramEnding;

/// The path of the program that this process runs; empty when the system does not tell.
vxString::CString ownProgram();

/// Runs a program, the first text of `command`, with the others as its arguments; none holds a zero
/// byte. Returns its exit code; nothing when it cannot be started or does not exit by itself.
std::optional<int> run(const vx::vector<vxString::CString>& command);

}  // namespace vxOS::process
