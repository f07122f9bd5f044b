// Programs that run in processes of their own.
#pragma once

#include <optional>

#include <vx/Containers.h>
#include <vx/Error.h>
#include <vx/Filename.h>
#include <vx/String.h>

namespace vxOS {

/// Starts programs.
///
///     const vx::vector<vxString::CString> command = {"tools/convert", "-o", "wing.txt"};
///     const std::optional<int> exitCode = vxOS::ProcessManager::getInstance().startSync(command);
///     if (exitCode != 0) puts("cannot convert");
///
/// A command is the path of a program, which is not searched for in other folders, and its
/// arguments. No shell reads the arguments: the program receives each of them byte for byte, with
/// blanks and quotes. The program gets the environment, the current folder and the standard streams
/// of this process, and no other open file of it.
///
/// Elsewhere than on Windows, `\` in the path of the program means `/`. On Windows:
/// - the path of the program has at most 260 characters;
/// - in arguments that are not valid UTF-8, U+FFFD replaces the invalid bytes;
/// - a console program opens no window of its own;
/// - batch files are refused, because their interpreter would split the arguments by other rules.
class VX_API ProcessManager {
 public:
  /// The one manager of this process.
  static ProcessManager& getInstance();

  /// Runs a command and waits for its end. Before the start the call gives the terminal back
  /// (`rptReleaseKeys`) and flushes the output streams of this process, so that earlier texts come
  /// first.
  ///
  /// Returns the exit code. When the program crashes on Windows, the exit code is the number of the
  /// exception. Returns nothing when the command is empty or holds a zero byte, when there is no
  /// such program, when a signal kills the program, and when the exit code is lost, because the
  /// host ignores SIGCHLD or itself waits for all children.
  std::optional<int> startSync(const vx::vector<vxString::CString>& command);

  /// Starts a command and returns at once. The program is detached: it has a session of its own, so
  /// that closing the terminal does not end it, its standard streams are the null device, it
  /// inherits no other descriptor, and nobody has to wait for its end. It starts in `folder`; an
  /// empty one stands for the current folder. A relative path of the program begins in the current
  /// folder of this process all the same. Signals have their default actions. An error when the
  /// command is empty or holds a zero byte and when there is no such program or folder.
  vxUtil::Error startAsync(const vx::vector<vxString::CString>& command, const Filename& folder);

 private:
  ProcessManager() = default;
};

/// The value of an environment variable in UTF-8; empty when there is none.
VX_API vxString::CString environmentVariable(const char* name);
/// Whether there is an environment variable of this name, even with an empty value.
VX_API bool hasEnvironmentVariable(const char* name) noexcept;

/// The full path of the program that this process runs; empty when the system does not tell.
VX_API vxString::CString programPath();

/// The number of the current drive, 1 for A; 0 when the current folder lies on no drive, as on
/// systems without drives.
VX_API int currentDrive() noexcept;

}  // namespace vxOS
