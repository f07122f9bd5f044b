#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/time.h>
#include <unistd.h>

#include <vx/Process.h>

namespace {

std::optional<int> runScript(const char* script) {
  return vxOS::ProcessManager::getInstance().startSync({"\\bin\\sh", "-c", script});
}

}  // namespace

TEST(PosixProcess, DeathBySignalIsNoExit) {
  EXPECT_EQ(7, runScript("exit 7"));
  EXPECT_EQ(std::nullopt, runScript("kill -KILL $$"));
  EXPECT_EQ(std::nullopt, runScript("kill -TERM $$"));
}

TEST(PosixProcess, NothingButTheStandardStreamsIsInherited) {
  for (const int descriptor : {3, 100, 1000}) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    ASSERT_EQ(descriptor, dup2(STDIN_FILENO, descriptor));
    const vxString::CString script =
        vxString::CString::format("[ -e /dev/fd/2 ] && [ ! -e /dev/fd/%d ]", descriptor);
    EXPECT_EQ(0, runScript(script.c_str())) << descriptor;
    close(descriptor);
  }
}

TEST(PosixProcess, SignalsDoNotCutTheWaitShort) {
  struct sigaction action = {};
  struct sigaction previous = {};
  static volatile std::sig_atomic_t alarms = 0;
  action.sa_handler = [](int) { alarms = alarms + 1; };  // and no SA_RESTART
  sigaction(SIGALRM, &action, &previous);
  const itimerval every5ms = {{0, 5000}, {0, 5000}};
  setitimer(ITIMER_REAL, &every5ms, nullptr);
  while (alarms == 0) pause();
  EXPECT_EQ(5, runScript("sleep 0.05; exit 5"));
  const itimerval never = {};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &previous, nullptr);
  EXPECT_GT(alarms, 1);
}
