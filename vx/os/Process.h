// Programs and processes, on each operating system.
#pragma once

#include <optional>

#include <vx/Containers.h>
#include <vx/String.h>

namespace vxOS::process {

/// The separator of the names in a path.
extern const char* const kSeparator;
/// The ending of the file names of programs, in lower case.
extern const char* const kProgramEnding;

/// The path of the program that this process runs; empty when the system does not tell.
vxString::CString ownProgram();

/// The path of the file that this library was loaded from: of the program, when the program
/// contains the library. Empty when the system does not tell.
vxString::CString ownLibrary();

/// The value of an environment variable; empty when there is none.
vxString::CString environmentVariable(const char* name);
bool hasEnvironmentVariable(const char* name) noexcept;

/// The number of the current drive, 1 for A; 0 for none.
int currentDrive() noexcept;

/// Runs a program, the first text of `command`, with the other texts as its arguments. No text
/// holds a zero byte. Returns the exit code; nothing when the program cannot be started or does not
/// exit by itself.
std::optional<int> run(const vx::vector<vxString::CString>& command);

/// Starts a program in a session of its own, with the null device as standard streams and no other
/// descriptor, in `folder` unless that is empty. Nobody has to wait for its end. Returns the number
/// of the system's error, 0 when the program runs.
int startDetached(const vx::vector<vxString::CString>& command, const vxString::CString& folder);

}  // namespace vxOS::process
