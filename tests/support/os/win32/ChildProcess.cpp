#include "tests/support/ChildProcess.h"

#include <windows.h>

#include <vx/String.h>

namespace kilntest {

namespace {

HANDLE created(const std::string& path) {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  return CreateFileW(vxString::CString(path.c_str()).asWide().c_str(), GENERIC_WRITE,
                     FILE_SHARE_READ, &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const std::string& output) {
  std::string line;
  for (const std::string& word : command) line += word + " ";
  std::wstring wide(vxString::CString(line.c_str()).asWide().view());
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  if (!output.empty()) {
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = created(output);
  }
  PROCESS_INFORMATION started = {};
  const BOOL isStarted = CreateProcessW(nullptr, wide.data(), nullptr, nullptr, !output.empty(), 0,
                                        nullptr, nullptr, &startup, &started);
  if (!output.empty()) CloseHandle(startup.hStdOutput);
  if (isStarted == 0) return;
  CloseHandle(started.hThread);
  process_ = reinterpret_cast<std::intptr_t>(started.hProcess);
}

void ChildProcess::kill() {
  if (process_ == 0) return;
  TerminateProcess(reinterpret_cast<HANDLE>(process_), 1);
  wait();
}

void ChildProcess::terminate() {}

int ChildProcess::wait() {
  const HANDLE process = reinterpret_cast<HANDLE>(process_);
  DWORD code = 0;
  WaitForSingleObject(process, INFINITE);
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  process_ = 0;
  return static_cast<int>(code);
}

}  // namespace kilntest
