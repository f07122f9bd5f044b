// Asks the user to choose a button; WarningArguments.cpp has the help.
#include <csignal>
#include <cstdlib>

#include "tools/morlaWarning/Program.h"
#include "tools/morlaWarning/arguments.h"

int main(int argc, char** argv) {
  // Windows ends an aborted process with the exit code 3, which means a button.
  std::signal(SIGABRT, [](int) { std::_Exit(morlawarning::kNoButton); });
  return morlawarning::runProgram(morlawarning::systemArguments(argc, argv),
                                  {morlawarning::showOnDesktop, morlawarning::showOnTerminal});
}
