#include <csignal>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

#include <vx/Report.h>

namespace {

using testing::ElementsAre;

constexpr std::size_t kColumns = 20;

// A terminal with a program running on it: a forked child that calls `program` and exits.
class Terminal {
 public:
  explicit Terminal(const std::function<void()>& program, const char* type = "xterm") {
    winsize size = {};
    size.ws_row = 24;
    size.ws_col = kColumns;
    child_ = forkpty(&master_, nullptr, nullptr, &size);
    if (child_ != 0) return;
    setenv("TERM", type, 1);
    program();
    std::exit(0);
  }
  ~Terminal() { close(master_); }

  void press(std::string_view keys) {
    EXPECT_EQ(static_cast<ssize_t>(keys.size()), write(master_, keys.data(), keys.size()));
  }

  void waitFor(std::string_view text) {
    while (output_.find(text) == output_.npos && readSome()) {
    }
  }

  // Waits for the program to end and returns its status as waitpid gives it.
  int finish() {
    while (readSome()) {
    }
    int status = -1;
    waitpid(child_, &status, 0);
    return status;
  }

  // Whether keys are echoed and lines are edited, as at the start.
  bool isInItsFirstMode() const {
    termios mode;
    return tcgetattr(master_, &mode) == 0 && (mode.c_lflag & (ICANON | ECHO)) == (ICANON | ECHO);
  }

  const std::string& output() const { return output_; }

  // The lines on the screen after all of the output.
  std::vector<std::string> screen() const {
    std::vector<std::string> lines(1);
    std::size_t column = 0;
    bool wraps = true;
    for (std::string_view rest = output_; !rest.empty();) {
      if (take(rest, "\x1b[K")) {
        lines.back().resize(column);
      } else if (take(rest, "\x1b[?7l")) {
        wraps = false;
      } else if (take(rest, "\x1b[?7h")) {
        wraps = true;
      } else if (take(rest, "\r")) {
        column = 0;
      } else if (take(rest, "\n")) {
        lines.emplace_back(column, ' ');
      } else {
        if (column == kColumns && wraps) {
          lines.emplace_back();
          column = 0;
        }
        column = std::min(column, kColumns - 1);
        lines.back().resize(std::max(lines.back().size(), column + 1), ' ');
        lines.back()[column++] = rest.front();
        rest.remove_prefix(1);
      }
    }
    return lines;
  }

 private:
  static bool take(std::string_view& rest, std::string_view code) {
    if (!rest.starts_with(code)) return false;
    rest.remove_prefix(code.size());
    return true;
  }

  bool readSome() {
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

}  // namespace

TEST(ConsoleOnATerminal, TheStatusStaysOnOneLineThatOtherTextsTakeOver) {
  Terminal terminal([] {
    rptStatus("the first status");
    rptStatus("second");
    rptUser("message");
    rptStatus("third");
    rptError("** ");
    rptError("error");
    rptStatus("a status that is wider than the terminal");
    rptClearStatus();
    rptStatus("last");
  });
  EXPECT_EQ(0, terminal.finish());
  EXPECT_THAT(terminal.screen(), ElementsAre("message", "** error", "last", ""));
}

TEST(ConsoleOnATerminal, ATerminalWithoutControlSequencesGetsPlainLines) {
  Terminal terminal(
      [] {
        rptStatus("one");
        rptStatus("two");
      },
      "dumb");
  EXPECT_EQ(0, terminal.finish());
  EXPECT_EQ("one\r\ntwo\r\n", terminal.output());
}

TEST(ConsoleOnATerminal, OnlyTheEscapeKeyAsksToStop) {
  Terminal terminal([] {
    computeUntilStopped();
    rptResetAbort();
    computeUntilStopped();
  });
  terminal.waitFor("ready");
  std::string arrows = "q\r";
  for (int i = 0; i < 100; ++i) arrows += "\x1b[A\x1bOP";
  terminal.press(arrows);
  terminal.press("\x1b");
  terminal.waitFor("stopped\r\nready");
  terminal.press("\x1bx");
  EXPECT_EQ(0, terminal.finish());
  EXPECT_THAT(terminal.screen(), ElementsAre("ready", "stopped", "ready", "stopped", ""));
  EXPECT_TRUE(terminal.isInItsFirstMode());
}

TEST(ConsoleOnATerminal, TheSecondInterruptEndsTheProcess) {
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
  const int status = terminal.finish();
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(SIGINT, WTERMSIG(status));
}

TEST(ConsoleOnATerminal, ABackgroundJobIsNotStoppedByTheQuestion) {
  Terminal terminal([] {
    const pid_t job = fork();
    if (job == 0) {
      setpgid(0, 0);
      std::exit(rptCheckAbort() ? 1 : 0);
    }
    int status = -1;
    waitpid(job, &status, WUNTRACED);
    rptUser(WIFEXITED(status) && WEXITSTATUS(status) == 0 ? "went on" : "stopped");
    kill(job, SIGKILL);
  });
  terminal.press("\x1b");
  EXPECT_EQ(0, terminal.finish());
  EXPECT_THAT(terminal.output(), testing::HasSubstr("went on"));
}
