#include "tests/support/Environment.h"

#include <cstdlib>
#include <windows.h>

#include <vx/String.h>

void kilntest::setEnvironment(const std::string& name, const std::string& value) {
  _putenv_s(name.c_str(), value.c_str());  // an empty value removes the variable
  SetEnvironmentVariableW(vxString::CString(name.c_str()).asWide().c_str(),
                          vxString::CString(value.c_str()).asWide().c_str());
}

void kilntest::unsetEnvironment(const std::string& name) {
  _putenv_s(name.c_str(), "");
  SetEnvironmentVariableW(vxString::CString(name.c_str()).asWide().c_str(), nullptr);
}
