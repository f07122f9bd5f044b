#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <vx/Process.h>
#include <vx/Report.h>

#include "tests/support/os/posix/Terminal.h"

using kilntest::Terminal;

namespace {

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

TEST(ConsoleOnATerminal, AfterAReleaseOthersReadWholeLines) {
  Terminal terminal([] {
    rptCheckAbort();
    vxOS::ProcessManager::getInstance().startSync({"/bin/true"});  // releases the keys
    askInAJob(true);
    rptConfirmOK("first");
    computeUntilStopped();
  });
  terminal.answer("(press Return)", true, "ab\r");
  terminal.answer("ready", false, "\x1b");
  EXPECT_THAT(terminal.finish(), testing::HasSubstr("first\r\n(press Return) ab\r\nready"));
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
