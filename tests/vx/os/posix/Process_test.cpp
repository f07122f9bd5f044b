#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vx/File.h>
#include <vx/Process.h>

#include "tests/support/TemporaryFolder.h"

using vxString::CString;

namespace {

std::optional<int> runScript(const char* script) {
  return vxOS::ProcessManager::getInstance().startSync({"\\bin\\sh", "-c", script});
}

vxUtil::Error startIn(const kilntest::TemporaryFolder& folder, const vx::vector<CString>& command) {
  return vxOS::ProcessManager::getInstance().startAsync(
      command, vxOS::Filename(CString(folder.path().c_str())));
}

}  // namespace

TEST(PosixProcess, FilesThatTheLibraryOpensAreClosedInEveryProgram) {
  std::FILE* null = vxOS::openFile("/dev/null", "r+b");
  ASSERT_NE(nullptr, null);
  EXPECT_EQ(FD_CLOEXEC, fcntl(fileno(null), F_GETFD));
  std::fclose(null);
}

TEST(PosixProcess, NothingButTheStandardStreamsIsInherited) {
  ASSERT_EQ(1000, dup2(STDIN_FILENO, 1000));
  EXPECT_EQ(0, runScript("[ -e /dev/fd/2 ] && [ ! -e /dev/fd/1000 ]"));
  close(1000);
}

TEST(PosixProcess, DetachedProgramsHaveNullStreamsASessionAndNobodyToWaitForThem) {
  const kilntest::TemporaryFolder folder;
  const std::string fifo = (folder.path() / "running").string();
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  ASSERT_EQ(1000, dup2(STDIN_FILENO, 1000));
  const char* script = R"(
    self=/proc/$$
    for i in 0 1 2 3 4 5 6 7 8 9 1000; do [ -e $self/fd/$i ] && open="$open$i "; done
    streams=$(readlink $self/fd/0 $self/fd/1 $self/fd/2 | sort -u)
    cat running
    read -r pid name state parent group session terminal rest < $self/stat
    [ "$session" != "$1" ] && echo "$open$streams $terminal" > new && mv new facts)";
  const std::string session = std::to_string(getsid(0));
  const vxUtil::Error error = startIn(folder, {"/bin/sh", "-c", script, "sh", session.c_str()});
  close(1000);
  ASSERT_EQ(0, error.code()) << error.message().c_str();
  EXPECT_EQ(-1, waitpid(-1, nullptr, WNOHANG));
  EXPECT_EQ(ECHILD, errno) << "no child while the program runs";
  std::ofstream(fifo).close();  // the program goes on
  EXPECT_EQ("0 1 2 /dev/null 0\n", kilntest::awaitFile(folder.path() / "facts"));
}

TEST(PosixProcess, DetachedProgramsNeitherBlockNorIgnoreSignals) {
  const kilntest::TemporaryFolder folder;
  sigset_t blocked, before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  sigprocmask(SIG_BLOCK, &blocked, &before);
  const auto handler = std::signal(SIGUSR2, SIG_IGN);
  EXPECT_EQ(0, startIn(folder, {"/bin/cp", "/proc/self/status", "status"}).code());
  std::signal(SIGUSR2, handler);
  sigset_t after;
  sigprocmask(SIG_SETMASK, &before, &after);
  EXPECT_EQ(1, sigismember(&after, SIGUSR1));
  EXPECT_EQ(0, sigismember(&after, SIGTERM));
  EXPECT_THAT(kilntest::awaitFile(folder.path() / "status"),
              testing::AllOf(testing::HasSubstr("SigBlk:\t0000000000000000\n"),
                             testing::HasSubstr("SigIgn:\t0000000000000000\n")));
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
