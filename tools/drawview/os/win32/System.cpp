#include "tools/drawview/System.h"

#include <atomic>
#include <windows.h>  // with shellapi.h

#include <vx/String.h>

namespace drawview {

namespace {

std::atomic<bool> isRequested = false;
std::atomic<bool> isActive = false;

// The system ends the process when the handler returns from anything but Ctrl-C and Ctrl-Break.
BOOL WINAPI noteRequest(DWORD event) {
  isRequested = true;
  while (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT && isActive) Sleep(10);
  return TRUE;
}

}  // namespace

const bool kPortsNeedReuse = false;

vxUtil::Error openBrowser(const std::string& address) {
  const auto wide = vxString::CString(address.c_str()).asWide();
  const auto result = reinterpret_cast<INT_PTR>(
      ShellExecuteW(nullptr, L"open", wide.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
  return result > 32 ? vxUtil::Error() : vxUtil::Error(1, "there is no browser");
}

StopRequests::StopRequests() {
  isRequested = false;
  isActive = true;
  SetConsoleCtrlHandler(noteRequest, TRUE);
}

StopRequests::~StopRequests() {
  isActive = false;
  SetConsoleCtrlHandler(noteRequest, FALSE);
}

bool StopRequests::isStopped() const {
  return isRequested;
}

}  // namespace drawview
