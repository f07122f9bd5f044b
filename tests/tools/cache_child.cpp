// Opens the file cache of the directory that is the argument. Exit code: 0 when that succeeds.
#include <kilnbase/net/FileCache.h>

int main(int count, char** arguments) {
  vxKilnBase::FileCache cache;
  return count == 2 && cache.initialize(arguments[1], 0, 0).code() == 0 ? 0 : 1;
}
