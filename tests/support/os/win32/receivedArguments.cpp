#include <windows.h>

#include "tests/support/Environment.h"

// Without libvx, which does not stand beside every program that calls this.
std::vector<std::string> kilntest::receivedArguments(int count, char**) {
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> result;
  for (int i = 1; i < count; ++i) {
    char text[1000] = "";
    WideCharToMultiByte(CP_UTF8, 0, arguments[i], -1, text, sizeof text, nullptr, nullptr);
    result.emplace_back(text);
  }
  LocalFree(arguments);
  return result;
}
