// Follows a tracing process from instruction to instruction.
#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TraceModel.h"
#include "tools/tracelog/Ring.h"

namespace {

constexpr std::uint64_t kLines = 24;
constexpr std::uint32_t kSize = 512;

// Bytes that stay the same in all processes that share them.
std::string_view mapped(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDONLY);
  const auto size = static_cast<std::size_t>(std::filesystem::file_size(path));
  void* const start = mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0);
  close(file);
  return {static_cast<const char*>(start), size};
}

[[noreturn]] void traceLines(std::atomic<std::uint64_t>& finished) {
  ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  raise(SIGSTOP);
  for (std::uint64_t i = 0; i < kLines; ++i) {
    MorlaTrace::trace1(MorlaTrace::UI, "%s", kilntest::traceMessage(i).c_str());
    ++finished;
  }
  _exit(0);
}

std::vector<std::string> messagesIn(std::string_view ring, std::string_view position) {
  const tracelog::Contents contents = tracelog::readRing(ring, tracelog::readPosition(position));
  EXPECT_TRUE(contents.positionFits);
  EXPECT_THAT(contents.damages, testing::IsEmpty());
  std::vector<std::string> messages;
  for (const tracelog::Line& line : contents.lines)
    messages.push_back(kilntest::messageOf(line.text));
  return messages;
}

TEST(TraceSteps, LeavesTheFilesReadableAfterEveryInstruction) {
  const kilntest::TemporaryFolder folder;
  kilntest::startTrace(folder.path(), kSize);
  const std::filesystem::path path = kilntest::ringIn(folder.path());
  const std::string_view ring = mapped(path);
  const std::string_view position = mapped(path.string() + ".pos");
  auto* const finished =
      new (mmap(nullptr, sizeof(std::uint64_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                -1, 0)) std::atomic<std::uint64_t>(0);
  const pid_t child = fork();
  if (child == 0) traceLines(*finished);

  kilntest::TraceModel model(kSize);
  std::vector<std::vector<std::string>> possible;
  std::uint64_t line = kLines + 1;
  std::string seen;
  int changes = 0;
  int status = 0;
  while (waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
    if (line != *finished) {
      if (line < *finished) model.write(kilntest::traceMessage(line));
      line = *finished;
      possible = model.possibleWhileWriting(kilntest::traceMessage(line));
      seen.clear();
    }
    if (seen.compare(0, ring.size(), ring) != 0 ||
        std::string_view(seen).substr(ring.size()) != position) {
      seen = std::string(ring) + std::string(position);
      ASSERT_THAT(possible, testing::Contains(messagesIn(ring, position))) << "in line " << line;
      ++changes;
    }
    if (ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr) != 0) break;
  }
  if (!WIFEXITED(status)) kill(child, SIGKILL);
  EXPECT_EQ(*finished, kLines);
  EXPECT_GT(changes, 10 * static_cast<int>(kLines));
  MorlaTrace::finalize();
}

}  // namespace
