#include "tests/support/ChildProcess.h"

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kilntest {

ChildProcess::ChildProcess(const std::vector<std::string>& command, const std::string& output) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    if (!output.empty()) dup2(open(output.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  process_ = child;
}

void ChildProcess::kill() {
  if (process_ <= 0) return;
  ::kill(static_cast<pid_t>(process_), SIGKILL);
  wait();
}

void ChildProcess::terminate() {
  if (process_ > 0) ::kill(static_cast<pid_t>(process_), SIGTERM);
}

int ChildProcess::wait() {
  int status = 0;
  waitpid(static_cast<pid_t>(process_), &status, 0);
  process_ = 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace kilntest
