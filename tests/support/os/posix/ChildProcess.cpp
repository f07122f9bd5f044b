#include "tests/support/ChildProcess.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace kilntest {

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  process_ = child;
}

void ChildProcess::kill() {
  if (process_ <= 0) return;
  ::kill(static_cast<pid_t>(process_), SIGKILL);
  waitpid(static_cast<pid_t>(process_), nullptr, 0);
  process_ = 0;
}

}  // namespace kilntest
