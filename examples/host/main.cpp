// A small application on libKilnBase; Program.cpp has the help.
#include "examples/host/Program.h"

int main(int argc, char** argv) {
  return host::runProgram(argc, argv);
}
