#include <gmock/gmock.h>

#include "tests/support/os/posix/Terminal.h"
#include "tools/morlaWarning/Program.h"

namespace {

void ask() {
  close(STDIN_FILENO);
  std::exit(morlawarning::runProgram(
      {"-t", "Title", "-s", "Köln \x1b[2J", "-f", "more", "-b", "Yes", "-b", "No"},
      {morlawarning::showOnTerminal}));
}

}  // namespace

TEST(MorlaWarningOnATerminal, ShowsEverythingAndAsksUntilItUnderstands) {
  const struct {
    const char* keys;
    int exitCode;
  } cases[] = {{"\r", 1}, {"2\r", 2}, {"3\rno\r2\r", 2}, {"q\r", 0}, {"\x1b\r", 0}, {"\x04", 0}};
  for (const auto& [keys, exitCode] : cases) {
    kilntest::Terminal terminal(ask);
    terminal.answer("(Return: 1, q: none): ", true, keys);
    EXPECT_THAT(terminal.finish(exitCode),
                testing::StartsWith("\r\n== Title ==\r\n\r\nKöln �[2J\r\n\r\nmore\r\n\r\n"
                                    "  1  Yes\r\n  2  No\r\nChoose 1 to 2 (Return: 1, q: none): "));
  }
}

TEST(MorlaWarningOnATerminal, WithoutATerminalNothingIsChosen) {
  kilntest::Terminal withoutOne([] {
    if (fork() == 0) {
      setsid();
      ask();
    }
    int status = -1;
    wait(&status);
    std::exit(WEXITSTATUS(status));
  });
  EXPECT_THAT(withoutOne.finish(0), testing::HasSubstr("neither a display nor a terminal"));
}
