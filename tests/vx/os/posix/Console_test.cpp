#include <csignal>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <vx/Process.h>
#include <vx/Report.h>

namespace {

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

  // Waits until the program exits or the signal ends it. Returns the output.
  std::string finish(int signal = 0) {
    while (readSome()) continue;
    int status = -1;
    waitpid(child_, &status, 0);
    EXPECT_EQ(signal, WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
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

void computeUntilStopped() {
  rptCheckAbort();
  rptUser("ready");
  while (!rptCheckAbort()) rptSleep(1);
  rptUser("stopped");
}

void askInAJob(bool inBackground) {
  const pid_t job = fork();
  if (job == 0 && inBackground) setpgid(0, 0);
  if (job == 0) std::exit(rptCheckAbort() ? 1 : 0);
  int status = -1;
  waitpid(job, &status, WUNTRACED);
  rptError(status == 0 ? "" : "job stopped\n");
  kill(job, SIGKILL);
}

}  // namespace

TEST(ConsoleOnATerminal, TheStatusStaysOnOneLineWhereControlSequencesAreObeyed) {
  for (const char* type : {"xterm", "dumb", ""}) {
    Terminal terminal([type] {
      setenv("TERM", type, 1);
      for (const char* text : {"first", "second"}) rptStatus("%s", text);
      rptError("error");
      rptStatus("third");
      rptClearStatus();
      rptStatus("last");
      askInAJob(false);
    });
    std::string shown = terminal.finish();
    for (std::size_t end; (end = shown.find("\r\x1b[K")) != std::string::npos;) {
      const std::size_t begin = shown.rfind('\n', end) + 1;
      shown.erase(begin, end + 4 - begin);
    }
    EXPECT_EQ(*type == 'x' ? "error\r\n\x1b[?7llast\x1b[?7h\r\n"
                           : "first\r\nsecond\r\nerror\r\nthird\r\nlast\r\n",
              shown);
  }
}

TEST(ConsoleOnATerminal, OnlyTheEscapeKeyAsksToStop) {
  Terminal terminal([] {
    computeUntilStopped();
    rptSleep(100);
    rptResetAbort();  // forgets the keys pressed meanwhile
    computeUntilStopped();
  });
  std::string arrows = "q\r";
  for (int i = 0; i < 100; ++i) arrows += "\x1b[A\x1bOP";
  terminal.answer("ready", false, arrows + "\x1b");
  rptSleep(1);
  terminal.answer("ready", false, "[A");
  rptSleep(100);
  terminal.answer("ready", false, "x\x1b");
  terminal.answer("stopped", false, "\x1b");
  terminal.answer("stopped\r\nready", false, "\x1bx");
  EXPECT_EQ("ready\r\nstopped\r\nready\r\nstopped\r\n", terminal.finish());
}

TEST(ConsoleOnATerminal, OthersMayReadKeysAndAfterAReleaseWholeLines) {
  Terminal terminal([] {
    rptCheckAbort();
    for (const char* prompt : {"key?", "line?"}) {
      askInAJob(*prompt == 'l');
      rptUser("%s", prompt);
      char text[80] = "";
      const ssize_t count = read(STDIN_FILENO, text, sizeof text - 1);
      rptUser("%zd: %s", count, text);
      vxOS::ProcessManager::getInstance().startSync({"/bin/true"});  // releases the keys
    }
    computeUntilStopped();
    for (const char* text : {"first", "second"}) rptConfirmOK("%s", text);
    rptUser("confirmed");
  });
  terminal.answer("key?", false, "");
  rptSleep(20);
  terminal.answer("key?", false, "k");
  terminal.answer("line?", true, "ab\x7f\103\r");
  terminal.answer("ready", false, "\x1b");
  terminal.answer("first\r\n(press Return)", true, "\x04");
  terminal.answer("(press Return) \r\nsecond\r\n(press Return)", true, "not yet");
  terminal.answer("not yet", true, "\r");
  EXPECT_THAT(terminal.finish(), testing::MatchesRegex("key.*\n1: k\r\nline.*\n3: aC\r\nready.*"
                                                       "not yet\r\nconfirmed\r\n"));
}

TEST(ConsoleOnATerminal, SignalsThatEndTheProcessGiveTheTerminalBack) {
  for (const int signal : {SIGTERM, SIGHUP, SIGQUIT, SIGABRT}) {
    Terminal([signal] { std::raise(rptCheckAbort() ? 0 : signal); }).finish(signal);
  }
  Terminal terminal([] {
    rptCatchInterrupt();
    computeUntilStopped();
    rptSleep(5000);
  });
  terminal.answer("ready", false, "\x03");
  terminal.answer("stopped", true, "\x03");
  EXPECT_THAT(terminal.finish(SIGINT), testing::HasSubstr("stopped"));
}
