#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vx/SysInfo.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/drawviewProcess.h"
#include "tools/drawview/Export.h"
#include "tools/drawview/Page.h"
#include "tools/drawview/Recording.h"

namespace {

using kilntest::TemporaryFolder;

// Starts drawview with its output in a file.
pid_t start(const std::vector<std::string>& arguments, const std::filesystem::path& output) {
  const std::string program(APP_getBinaryPath("drawview").view());
  const pid_t child = fork();
  if (child != 0) return child;
  const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(file, STDOUT_FILENO);
  dup2(file, STDERR_FILENO);
  std::vector<char*> words = {const_cast<char*>(program.c_str())};
  for (const std::string& word : arguments) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  execv(words[0], words.data());
  _exit(127);
}

int exitCodeOf(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

int run(const std::vector<std::string>& arguments, const std::filesystem::path& output) {
  return exitCodeOf(start(arguments, output));
}

TEST(DrawviewProgram, EndsWithAWholeRecordingWhenItIsToldOrWithItsOnlySender) {
  const TemporaryFolder folder;
  const std::string frames = (folder.path() / "frames").string();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, 0}) {
    const int port = kilntest::freePort();
    std::vector<std::string> arguments = {"--listen", std::to_string(port), "--record", frames,
                                          "--force"};
    if (signal == 0) arguments.emplace_back("--once");
    const pid_t child = start(arguments, folder.path() / "output");
    vxKilnBase::KilnDebugDrawProtocol sender;
    ASSERT_TRUE(kilntest::connectsSoon(sender, port));
    vxKilnBase::KilnDebugDrawFrame frame;
    for (int i = 0; i < 50; ++i) EXPECT_TRUE(sender.sendFrame(frame));
    if (signal == 0)
      sender.setSocket(nullptr);
    else
      kill(child, signal);
    EXPECT_EQ(exitCodeOf(child), 0);
    std::ifstream file(frames, std::ios::binary);
    const drawview::RecordingContents contents = drawview::scanRecording(file);
    EXPECT_EQ(contents.frames.size(), 50u);
    EXPECT_EQ(contents.tornAt, std::nullopt);
  }
}

TEST(DrawviewProgram, TellsByItsExitCode) {
  const TemporaryFolder folder;
  const std::filesystem::path output = folder.path() / "output";
  const std::string frames = (folder.path() / "frames").string();
  const std::string page = (folder.path() / "page.html").string();
  drawview::RecordingWriter(frames, false).add("name", "message");
  const std::string other = folder.write("other", "no recording").string();
  std::string bytes = kilntest::readFile(frames);
  bytes.back() ^= 1;
  const std::string lost = folder.write("lost", bytes).string();
  const std::string whole = kilntest::readFile(frames).substr(8);  // behind the head
  const std::string damaged = folder.write("damaged", bytes + whole).string();
  const bool hasPage = drawview::kPage.find(drawview::kFramesPlace) != std::string_view::npos;
  const struct {
    std::vector<std::string> arguments;
    int code;
    std::string output;
  } cases[] = {
      {{"--help"}, 0, "Exit code: 0"},
      {{"--version"}, 0, "drawview "},
      {{"--replay", frames, "--export", page}, hasPage ? 0 : 2, ""},
      {{"--replay", frames, "--export", other}, 2, "other is there already; --force"},
      {{"--replay", other, "--export", page, "--force"}, 2, "other is no recording"},
      {{"--replay", damaged, "--export", page, "--force"}, hasPage ? 1 : 2, "offset 8: the record"},
      {{"--replay", lost, "--export", page, "--force"}, 2, "holds no frame"},
      {{"--replay", frames, "--export", frames, "--force"}, 2, "the place of the recording"},
      {{"--record", ""}, 2, "an empty name"},
      {{"--replay", folder.path().string()}, 2, "is no file"},
      {{"--replay", frames, "--record", other}, 2, "see drawview --help"},
      {{"--export", page}, 2, "see drawview --help"},
      {{"--listen", "70000"}, 2, "\"70000\" is no port"},
      {{"--listen", "::1"}, 2, "stands in brackets"},
      {{"--listen", ":5000"}, 2, "no address"},
      {{"--http", "x"}, 2, "\"x\" is no port"},
      {{"--listen", "0", "--record", frames}, 2, "frames is there already; --force"},
      {{"--listen", "0", "--record", "/dev/null", "--force"}, 2, "is no regular file"},
  };
  for (const auto& [arguments, code, text] : cases) {
    EXPECT_EQ(run(arguments, output), code) << arguments.back();
    EXPECT_THAT(kilntest::readFile(output), testing::HasSubstr(text));
  }
  EXPECT_EQ(run({"--version"}, "/dev/full"), 2);
}

}  // namespace
