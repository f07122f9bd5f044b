// Shows the lines that traces left behind; CommandLine.cpp has the help.
#include <vx/Report.h>

#include "tools/tracelog/Program.h"

int main(int argc, char** argv) {
  rptCatchInterrupt();
  return tracelog::runProgram(argc, argv);
}
