#include "tools/drawview/System.h"

#include <array>
#include <atomic>
#include <csignal>
#include <unistd.h>

#include <vx/Process.h>

namespace drawview {

namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool> isRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // a signal handler sets it

// The program of a name in the folders of PATH; empty when there is none.
vxString::CString findProgram(const char* name) {
  const auto folders =
      vxUtil::split<char>(vxOS::environmentVariable("PATH"), [](char c) { return c == ':'; });
  for (const vxString::CString& folder : folders) {
    vxString::CString path = folder + "/" + name;
    if (path.startsWith("/") && access(path.c_str(), X_OK) == 0) return path;
  }
  return {};
}

}  // namespace

const bool kPortsNeedReuse = true;

vxUtil::Error openBrowser(const std::string& address) {
  const vxString::CString program = findProgram("xdg-open");
  if (program.isEmpty()) return {1, "there is no xdg-open"};
  return vxOS::ProcessManager::getInstance().startAsync({program, address.c_str()},
                                                        vxOS::Filename());
}

// A signal that was ignored from the start stays so, as Ctrl-C is in a job of a script.
StopRequests::StopRequests() {
  isRequested = false;
  for (const int each : kSignals)
    if (std::signal(each, [](int) { isRequested = true; }) == SIG_IGN) std::signal(each, SIG_IGN);
}

StopRequests::~StopRequests() {
  for (const int each : kSignals) std::signal(each, SIG_DFL);
}

bool StopRequests::isStopped() const {
  return isRequested;
}

}  // namespace drawview
