// Programs that run in processes of their own.
#pragma once

#include <optional>

#include <vx/Containers.h>
#include <vx/String.h>

namespace vxOS {

/// Starts programs.
///
///     const vx::vector<vxString::CString> command = {APP_getBinaryPath("convert"), "-o", path};
///     const std::optional<int> exitCode = vxOS::ProcessManager::getInstance().startSync(command);
///     if (exitCode != 0) rptError("cannot convert to %s\n", path.c_str());
///
/// A command is the path of a program, which is not searched for in other folders, and its
/// arguments. No shell reads them: the program receives each one exactly as it is, blanks, quotes
/// and all. The program has this process's environment, current folder and standard streams, and
/// nothing else that is open here.
///
/// Elsewhere than on Windows, `\` in the path of the program means `/`. On Windows that path has at
/// most 260 characters, arguments that are not valid UTF-8 arrive with U+FFFD in the place of what
/// is not, a console program opens no window of its own, and batch files are refused, for their
/// interpreter would read the arguments its own way.
class VX_API ProcessManager {
 public:
  static ProcessManager& getInstance();

  /// Runs a command and waits for its end. Before the start it gives the terminal back
  /// (`rptReleaseKeys`) and flushes the output streams of this process, whose texts so come first.
  ///
  /// Returns the exit code, which on Windows is the number of the exception when the program has
  /// crashed; nothing when it cannot be started (it is empty or holds a zero byte, there is no such
  /// program), or has been killed by a signal, or when its exit code is lost: so it is where the
  /// host ignores SIGCHLD or waits for all children itself.
  std::optional<int> startSync(const vx::vector<vxString::CString>& command);

 private:
  ProcessManager() = default;
};

}  // namespace vxOS
