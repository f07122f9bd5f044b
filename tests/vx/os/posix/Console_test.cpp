#include <csignal>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <vx/Process.h>
#include <vx/Report.h>

namespace {

using testing::HasSubstr;

// A terminal with a program running on it: a forked child that calls `program` and exits.
class Terminal {
 public:
  explicit Terminal(const std::function<void()>& program, const char* type = "xterm") {
    child_ = forkpty(&master_, nullptr, nullptr, nullptr);
    if (child_ != 0) return;
    setenv("TERM", type, 1);
    for (const int signal : {SIGINT, SIGQUIT}) std::signal(signal, SIG_DFL);  // as at a prompt
    program();
    std::exit(0);
  }
  ~Terminal() { close(master_); }

  void waitFor(std::string_view text) {
    while (output_.find(text) == output_.npos && readSome()) {
    }
  }
  void press(std::string_view keys) {
    EXPECT_EQ(static_cast<ssize_t>(keys.size()), write(master_, keys.data(), keys.size()));
  }

  // Waits for the program to end and returns the signal that ended it, 0 when it exited.
  int finish() {
    while (readSome()) {
    }
    int status = -1;
    waitpid(child_, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
  }

  // Whether keys are echoed and lines are edited, as at the start.
  bool isInItsFirstMode() const {
    termios mode;
    return tcgetattr(master_, &mode) == 0 && (mode.c_lflag & (ICANON | ECHO)) == (ICANON | ECHO);
  }

  const std::string& output() const { return output_; }

  // The output without what cleared lines held.
  std::string screen() const {
    const std::string_view clear = "\r\x1b[K";
    std::string left = output_;
    for (std::size_t at = 0; (at = left.find(clear)) != left.npos;) {
      const std::size_t start = left.rfind('\n', at) + 1;
      left.erase(start, at + clear.size() - start);
    }
    return left;
  }

 private:
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
  if (job == 0) {
    if (inBackground) setpgid(0, 0);
    std::exit(rptCheckAbort() ? 1 : 0);
  }
  int status = -1;
  waitpid(job, &status, WUNTRACED);
  rptError(WIFEXITED(status) && WEXITSTATUS(status) == 0 ? "" : "job stopped\n");
  kill(job, SIGKILL);
}

}  // namespace

TEST(ConsoleOnATerminal, TheStatusStaysOnOneLineThatOtherTextsTakeOver) {
  Terminal terminal([] {
    rptStatus("the first status");
    rptStatus("second");
    rptError("error");
    rptStatus("third");
    rptClearStatus();
    rptStatus("last");
    askInAJob(false);
  });
  EXPECT_EQ(0, terminal.finish());
  EXPECT_EQ("error\r\n\x1b[?7llast\x1b[?7h\r\n", terminal.screen());
}

TEST(ConsoleOnATerminal, ATerminalWithoutControlSequencesGetsPlainLines) {
  for (const char* type : {"dumb", ""}) {
    Terminal terminal([] { rptStatus("one"), rptStatus("two"); }, type);
    EXPECT_EQ(0, terminal.finish());
    EXPECT_EQ("one\r\ntwo\r\n", terminal.output());
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
  terminal.waitFor("ready");
  terminal.press(arrows + "\x1b");
  rptSleep(1);
  terminal.press("[A");
  rptSleep(100);
  terminal.press("x\x1b");
  terminal.waitFor("stopped");
  terminal.press("\x1b");
  terminal.waitFor("stopped\r\nready");
  terminal.press("\x1bx");
  EXPECT_EQ(0, terminal.finish());
  EXPECT_EQ("ready\r\nstopped\r\nready\r\nstopped\r\n", terminal.output());
  EXPECT_TRUE(terminal.isInItsFirstMode());
}

TEST(ConsoleOnATerminal, OthersMayReadKeysAndAfterAReleaseWholeLines) {
  Terminal terminal([] {
    const auto readAndTell = [](const char* prompt) {
      rptUser("%s", prompt);
      char text[80] = "";
      const ssize_t count = read(STDIN_FILENO, text, sizeof text - 1);
      rptUser("%zd: %s", count, text);
    };
    rptCheckAbort();
    askInAJob(false);
    readAndTell("key?");
    vxOS::ProcessManager::getInstance().startSync({"/bin/true"});  // releases the keys
    askInAJob(true);
    readAndTell("line?");
    computeUntilStopped();
  });
  terminal.waitFor("key?");
  EXPECT_FALSE(terminal.isInItsFirstMode());
  rptSleep(20);
  terminal.press("k");
  terminal.waitFor("line?");
  EXPECT_TRUE(terminal.isInItsFirstMode());
  terminal.press("ab\x7f\103\r");
  terminal.waitFor("ready");
  EXPECT_FALSE(terminal.isInItsFirstMode());
  terminal.press("\x1b");
  EXPECT_EQ(0, terminal.finish());
  EXPECT_THAT(terminal.output(), testing::AllOf(HasSubstr("1: k"), HasSubstr("3: aC")));
  EXPECT_THAT(terminal.output(), testing::Not(HasSubstr("job stopped")));
}

TEST(ConsoleOnATerminal, AConfirmationWaitsForALine) {
  Terminal terminal([] {
    rptCheckAbort();
    for (const char* text : {"first", "second"}) rptConfirmOK("%s", text);
    rptUser("confirmed");
  });
  terminal.waitFor("first\r\n(press Return)");
  EXPECT_TRUE(terminal.isInItsFirstMode());
  terminal.press("\x04");
  terminal.waitFor("(press Return) \r\nsecond\r\n(press Return)");
  terminal.press("not yet");
  terminal.waitFor("not yet");
  EXPECT_THAT(terminal.output(), testing::Not(HasSubstr("confirmed")));
  terminal.press("\r");
  terminal.waitFor("confirmed");
  EXPECT_EQ(0, terminal.finish());
}

TEST(ConsoleOnATerminal, SignalsThatEndTheProcessGiveTheTerminalBack) {
  for (const int signal : {SIGTERM, SIGHUP, SIGQUIT, SIGABRT}) {
    Terminal terminal([signal] {
      rptCheckAbort();
      if (signal == SIGABRT) std::abort();
      std::raise(signal);
    });
    EXPECT_EQ(signal, terminal.finish());
    EXPECT_TRUE(terminal.isInItsFirstMode()) << signal;
  }
  Terminal terminal([] {
    rptCatchInterrupt();
    computeUntilStopped();
    for (;;) rptSleep(1000);
  });
  terminal.waitFor("ready");
  terminal.press("\x03");
  terminal.waitFor("stopped");
  EXPECT_TRUE(terminal.isInItsFirstMode());
  terminal.press("\x03");
  EXPECT_EQ(SIGINT, terminal.finish());
}
