#include <algorithm>
#include <cstdio>

#include <vx/Process.h>
#include <vx/Report.h>
#include <vx/detail/paths.h>
#include <vx/os/File.h>
#include <vx/os/Process.h>

namespace vxOS {

using vxString::CString;

namespace {

bool isPossible(const vx::vector<CString>& command) {
  const auto isCut = [](const CString& text) { return detail::holdsZero(text.view()); };
  return !command.empty() && !command.front().isEmpty() &&
         std::none_of(command.begin(), command.end(), isCut);
}

}  // namespace

ProcessManager& ProcessManager::getInstance() {
  static ProcessManager instance;
  return instance;
}

std::optional<int> ProcessManager::startSync(const vx::vector<CString>& command) {
  if (!isPossible(command)) return std::nullopt;
  rptReleaseKeys();
  std::fflush(nullptr);
  return process::run(command);
}

vxUtil::Error ProcessManager::startAsync(const vx::vector<CString>& command,
                                         const Filename& folder) {
  if (!isPossible(command) || detail::holdsZero(folder.path().view()))
    return {1, "cannot start a command that is empty or holds a zero byte"};
  const int error = process::startDetached(command, folder.path());
  if (error == 0) return {};
  const CString place = folder.isEmpty() ? "" : " in \"" + folder.path() + "\"";
  return {error,
          "cannot start \"" + command.front() + "\"" + place + ": " + file::errorText(error)};
}

CString environmentVariable(const char* name) {
  return process::environmentVariable(name);
}

bool hasEnvironmentVariable(const char* name) noexcept {
  return process::hasEnvironmentVariable(name);
}

vxString::CString programPath() {
  return process::ownProgram();
}

int currentDrive() noexcept {
  return process::currentDrive();
}

}  // namespace vxOS
