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
/// nothing else that is open here. On Windows a console program opens no window of its own, and
/// batch files are refused, for their interpreter would read the arguments its own way.
class VX_API ProcessManager {
 public:
  static ProcessManager& getInstance();

  /// Runs a command and waits for its end. Returns its exit code; nothing when it cannot be started
  /// (it is empty or holds a zero byte, there is no such program) or has been killed by a signal.
  std::optional<int> startSync(const vx::vector<vxString::CString>& command);

 private:
  ProcessManager() = default;
};

}  // namespace vxOS
