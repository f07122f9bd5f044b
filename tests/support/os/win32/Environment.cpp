#include "tests/support/Environment.h"

#include <cstdlib>
#include <windows.h>

namespace kilntest {

namespace {

std::string utf8(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
  result.pop_back();  // the terminating zero
  return result;
}

}  // namespace

void setEnvironment(const std::string& name, const std::string& value) {
  _putenv_s(name.c_str(), value.c_str());
}

std::vector<std::string> receivedArguments(int, char**) {
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> result;
  for (int i = 0; i < count; ++i) result.push_back(utf8(arguments[i]));
  LocalFree(arguments);
  return result;
}

}  // namespace kilntest
