#include "tests/support/Crash.h"

#include <csignal>
#include <sys/wait.h>

bool kilntest::hasCrashed(int status) {
#ifdef __SANITIZE_ADDRESS__
  return WIFEXITED(status) && WEXITSTATUS(status) != 0;
#else
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
#endif
}
