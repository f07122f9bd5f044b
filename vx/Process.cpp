#include <algorithm>
#include <cstdio>

#include <vx/Process.h>
#include <vx/Report.h>
#include <vx/detail/paths.h>
#include <vx/os/Process.h>

namespace vxOS {

ProcessManager& ProcessManager::getInstance() {
  static ProcessManager instance;
  return instance;
}

std::optional<int> ProcessManager::startSync(const vx::vector<vxString::CString>& command) {
  if (command.empty() || command.front().isEmpty()) return std::nullopt;
  const auto isCut = [](const vxString::CString& text) { return detail::holdsZero(text.view()); };
  if (std::any_of(command.begin(), command.end(), isCut)) return std::nullopt;
  rptReleaseKeys();
  std::fflush(nullptr);
  return process::run(command);
}

vxString::CString environmentVariable(const char* name) {
  return process::environmentVariable(name);
}

}  // namespace vxOS
