// The programs of the library are found in its package, and run.
#include <vx/Process.h>
#include <vx/SysInfo.h>

int main() {
  int failures = 0;
  for (const char* name : {"morlaWarning"}) {
    const auto exitCode =
        vxOS::ProcessManager::getInstance().startSync({APP_getBinaryPath(name), "--version"});
    if (exitCode != 0) ++failures;
  }
  return failures;
}
