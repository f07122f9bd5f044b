#include "tools/morlaWarning/arguments.h"

#include <algorithm>

std::vector<std::string> morlawarning::systemArguments(int count, char** arguments) {
  return {arguments + std::min(1, count), arguments + count};
}
