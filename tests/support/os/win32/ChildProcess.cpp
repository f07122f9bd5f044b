#include "tests/support/ChildProcess.h"

#include <windows.h>

#include <vx/String.h>

namespace kilntest {

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
  std::string line;
  for (const std::string& word : command) line += word + " ";
  std::wstring wide(vxString::CString(line.c_str()).asWide().view());
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started = {};
  if (CreateProcessW(nullptr, wide.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                     &started) == 0)
    return;
  CloseHandle(started.hThread);
  process_ = reinterpret_cast<std::intptr_t>(started.hProcess);
}

void ChildProcess::kill() {
  if (process_ == 0) return;
  const HANDLE process = reinterpret_cast<HANDLE>(process_);
  TerminateProcess(process, 1);
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
  process_ = 0;
}

}  // namespace kilntest
