// Shows debug drawings in the browser; CommandLine.cpp has the help.
#include "tools/drawview/Program.h"

int main(int argc, char** argv) {
  return drawview::runProgram(argc, argv);
}
