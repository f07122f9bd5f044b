#include "tests/support/Environment.h"

#include <cstdlib>

void kilntest::setEnvironment(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

std::vector<std::string> kilntest::receivedArguments(int count, char** arguments) {
  return {arguments + 1, arguments + count};
}
