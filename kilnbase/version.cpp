#include <kilnbase/version.h>

const char* kilnbaseVersion() {
  return KILNBASE_VERSION_STRING;
}
