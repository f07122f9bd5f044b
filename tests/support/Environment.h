// What a program finds when it starts, in UTF-8 on every system.
#pragma once

#include <string>
#include <vector>

namespace kilntest {

void setEnvironment(const std::string& name, const std::string& value);

// The arguments of main as the system passed them, the program's name first.
std::vector<std::string> receivedArguments(int count, char** arguments);

}  // namespace kilntest
