// The program as a function.
#pragma once

#include <string>
#include <vector>

#include "tools/morlaWarning/Dialog.h"

namespace morlawarning {

/// Shows the warning that the arguments tell in the first dialog that can show it. Returns the exit
/// code: the number of the chosen button, from 1, or kNoButton. After a failure of any kind the
/// exit code is kNoButton, and a message says so (`rptError`).
int runProgram(const std::vector<std::string>& arguments, const std::vector<Dialog>& dialogs);

}  // namespace morlawarning
