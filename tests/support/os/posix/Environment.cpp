#include "tests/support/Environment.h"

#include <cstdlib>

namespace kilntest {

void setEnvironment(const std::string& name, const std::string& value) {
  setenv(name.c_str(), value.c_str(), 1);
}

std::vector<std::string> receivedArguments(int count, char** arguments) {
  return {arguments, arguments + count};
}

}  // namespace kilntest
