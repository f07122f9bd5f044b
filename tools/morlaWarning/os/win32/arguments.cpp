#include "tools/morlaWarning/arguments.h"

#include <windows.h>

#include <vx/String.h>

// The arguments of `main` are in the code page of the system, which lacks most characters.
std::vector<std::string> morlawarning::systemArguments(int, char**) {
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> result;
  for (int i = 1; i < count; ++i)
    result.emplace_back(vxString::IString(arguments[i]).asMultibyte().view());
  LocalFree(arguments);
  return result;
}
