// The command line as the user's system keeps it.
#pragma once

#include <string>
#include <vector>

namespace morlawarning {

/// The arguments of `main` in UTF-8, without the program's name. Invalid parts are as the system
/// passes them.
std::vector<std::string> systemArguments(int count, char** arguments);

}  // namespace morlawarning
