// What a program finds when it starts, in UTF-8 on every system.
#pragma once

#include <string>
#include <vector>

namespace kilntest {

void setEnvironment(const std::string& name, const std::string& value);

// The arguments of main as the system passed them, without the program's name.
std::vector<std::string> receivedArguments(int count, char** arguments);

}  // namespace kilntest
