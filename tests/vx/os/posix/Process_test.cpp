#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

#include <vx/Process.h>

namespace {

std::optional<int> runScript(const char* script) {
  return vxOS::ProcessManager::getInstance().startSync({"\\bin\\sh", "-c", script});
}

}  // namespace

TEST(PosixProcess, NothingButTheStandardStreamsIsInherited) {
  ASSERT_EQ(1000, dup2(STDIN_FILENO, 1000));
  EXPECT_EQ(0, runScript("[ -e /dev/fd/2 ] && [ ! -e /dev/fd/1000 ]"));
  close(1000);
}

TEST(PosixProcess, DeathBySignalIsNoExitAndOtherSignalsDoNotCutTheWaitShort) {
  EXPECT_EQ(std::nullopt, runScript("kill -TERM $$"));
  static volatile std::sig_atomic_t alarms = 0;
  struct sigaction action = {};
  action.sa_handler = [](int) { alarms = alarms + 1; };  // without SA_RESTART
  sigaction(SIGALRM, &action, nullptr);
  ualarm(5000, 5000);
  while (alarms == 0) pause();
  EXPECT_EQ(5, runScript("sleep 0.05; exit 5"));
  ualarm(0, 0);
  EXPECT_GT(alarms, 1);
}
