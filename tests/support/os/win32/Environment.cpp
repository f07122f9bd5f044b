#include "tests/support/Environment.h"

#include <cstdlib>
#include <windows.h>

void kilntest::setEnvironment(const std::string& name, const std::string& value) {
  _putenv_s(name.c_str(), value.c_str());  // an empty value removes the variable
  SetEnvironmentVariableW(vxString::CString(name.c_str()).asWide().c_str(),
                          vxString::CString(value.c_str()).asWide().c_str());
}

void kilntest::unsetEnvironment(const std::string& name) {
  _putenv_s(name.c_str(), "");
  SetEnvironmentVariableW(vxString::CString(name.c_str()).asWide().c_str(), nullptr);
}

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
