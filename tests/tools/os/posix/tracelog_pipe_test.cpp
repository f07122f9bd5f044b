// Pipes, which keep a program that opens them waiting.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/Reports.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/tracelog/CommandLine.h"
#include "tools/tracelog/Folder.h"
#include "tools/tracelog/RingFile.h"

namespace {

TEST(TracelogPipe, IsNotOpened) {
  const kilntest::TemporaryFolder folder;
  const kilntest::RecordedReports reports;
  const std::filesystem::path path = folder.write("ring.dat", std::string(512, '\0'));
  ASSERT_EQ(mkfifo((path.string() + ".pos").c_str(), 0600), 0);
  tracelog::RingFile ring(path);
  EXPECT_EQ(ring.readNewLines().size(), 0u);
  EXPECT_TRUE(ring.isDamaged());
  const std::filesystem::path pipe = folder.path() / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THROW(tracelog::findRings({pipe}), tracelog::InputError);
}

}  // namespace
