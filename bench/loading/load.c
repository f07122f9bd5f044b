/* Loads the library that is named, if one is, and ends: the time of this process is measured. */
#include <dlfcn.h>

int main(int argc, char** argv) {
  return argc > 1 && !dlopen(argv[1], RTLD_NOW);
}
