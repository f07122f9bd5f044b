// A session of modelling on libKilnBase; CommandLine.cpp has the help.
#include <vx/Report.h>

#include "examples/session/Program.h"

int main(int argc, char** argv) {
  rptCatchInterrupt();
  return session::runProgram(argc, argv);
}
