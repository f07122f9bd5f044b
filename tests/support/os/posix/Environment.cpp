#include "tests/support/Environment.h"

#include <cstdlib>

void kilntest::setEnvironment(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

void kilntest::unsetEnvironment(const std::string& name) {
  unsetenv(name.c_str());
}
