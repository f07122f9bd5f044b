#include <algorithm>

#include <vx/Process.h>
#include <vx/os/Process.h>

namespace vxOS {

namespace {

bool holdsZero(const vxString::CString& text) {
  return text.view().find('\0') != std::string_view::npos;
}

}  // namespace

ProcessManager& ProcessManager::getInstance() {
  static ProcessManager instance;
  return instance;
}

std::optional<int> ProcessManager::startSync(const vx::vector<vxString::CString>& command) {
  if (command.empty() || command.front().isEmpty()) return std::nullopt;
  if (std::any_of(command.begin(), command.end(), holdsZero)) return std::nullopt;
  return process::run(command);
}

}  // namespace vxOS
