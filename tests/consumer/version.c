/* The version of the package is that of the headers and of the library. */
#include <stdio.h>
#include <string.h>

#include <kilnbase/version.h>

int main(void) {
  char numbers[40];
  snprintf(numbers, sizeof numbers, "%d.%d.%d", KILNBASE_VERSION_MAJOR, KILNBASE_VERSION_MINOR,
           KILNBASE_VERSION_PATCH);
  const char* const versions[] = {KILNBASE_VERSION_STRING, numbers, kilnbaseVersion()};
  for (int i = 0; i < 3; ++i) {
    if (strcmp(versions[i], PACKAGE_VERSION) == 0) continue;
    printf("version %s in a package of version %s\n", versions[i], PACKAGE_VERSION);
    return 1;
  }
  return 0;
}
