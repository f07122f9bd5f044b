// Fits a surface to measured points, or evaluates one; CommandLine.cpp has the help.
#include <vx/Report.h>

#include "examples/surface_fit/Program.h"

int main(int argc, char** argv) {
  rptCatchInterrupt();
  return surfacefit::runProgram(argc, argv);
}
