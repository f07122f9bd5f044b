#include "tests/support/Crash.h"

#include <windows.h>

bool kilntest::hasCrashed(int status) {
  return static_cast<DWORD>(status) == EXCEPTION_ACCESS_VIOLATION;
}
