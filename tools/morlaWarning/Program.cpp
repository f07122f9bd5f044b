#include "tools/morlaWarning/Program.h"

#include <exception>
#include <iostream>
#include <stdexcept>

#include <vx/Report.h>

namespace morlawarning {

namespace {

int choose(const Warning& warning, const std::vector<Dialog>& dialogs) {
  for (const Dialog& dialog : dialogs)
    if (const std::optional<int> button = dialog(warning)) return *button;
  throw std::runtime_error("there is neither a display nor a terminal to ask on");
}

}  // namespace

int runProgram(const std::vector<std::string>& arguments, const std::vector<Dialog>& dialogs) {
  try {
    if (const std::optional<Warning> warning = parseArguments(arguments))
      return choose(*warning, dialogs);
    if (!std::cout.flush()) throw std::runtime_error("cannot write to standard output");
  } catch (const std::exception& error) {
    rptError("morlaWarning: %s\n", error.what());
  }
  return kNoButton;
}

}  // namespace morlawarning
