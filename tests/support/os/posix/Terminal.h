// A terminal of a test's own.
#pragma once

#include <csignal>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace kilntest {

// A terminal with a program running on it: a forked child that calls `program` and exits.
class Terminal {
 public:
  explicit Terminal(const std::function<void()>& program) {
    child_ = forkpty(&master_, nullptr, nullptr, nullptr);
    if (child_ != 0) return;
    // The signals are handled as in a program started at a prompt.
    for (const int signal : {SIGINT, SIGQUIT, SIGHUP}) std::signal(signal, SIG_DFL);
    program();
    std::exit(0);
  }
  ~Terminal() { close(master_); }

  // Waits for the text in the output and presses the keys. When the text has come, the terminal
  // must edit lines and echo keys, or do neither.
  void answer(const char* text, bool editsLines, const std::string& keys) {
    while (output_.find(text) == output_.npos && readSome()) continue;
    expectMode(editsLines);
    EXPECT_EQ(static_cast<ssize_t>(keys.size()), write(master_, keys.data(), keys.size()));
  }

  // Waits until the program exits with the code or the signal ends it. Returns the output.
  std::string finish(int codeOrSignal = 0) {
    while (readSome()) continue;
    int status = -1;
    waitpid(child_, &status, 0);
    EXPECT_EQ(codeOrSignal, WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
    expectMode(true);
    return output_;
  }

 private:
  void expectMode(bool editsLines) const {
    termios mode = {};
    tcgetattr(master_, &mode);
    EXPECT_EQ(editsLines ? ICANON | ECHO : 0, mode.c_lflag & (ICANON | ECHO)) << output_;
  }
  bool readSome() {
    pollfd output = {master_, POLLIN, 0};
    if (poll(&output, 1, 5000) == 0) kill(child_, SIGKILL);  // instead of waiting for ever
    char buffer[256];
    const ssize_t count = read(master_, buffer, sizeof buffer);
    if (count > 0) output_.append(buffer, static_cast<std::size_t>(count));
    return count > 0;
  }

  int master_ = -1;
  pid_t child_ = -1;
  std::string output_;
};

}  // namespace kilntest
