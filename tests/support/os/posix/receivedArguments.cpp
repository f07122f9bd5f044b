#include "tests/support/Environment.h"

std::vector<std::string> kilntest::receivedArguments(int count, char** arguments) {
  return {arguments + 1, arguments + count};
}
