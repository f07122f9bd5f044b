// Keeps the files of an application's file cache; CommandLine.cpp has the help.
#include "tools/vxcached/Program.h"

int main(int argc, char** argv) {
  return vxcached::runProgram(argc, argv);
}
