#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vx/Report.h>

#include "tests/support/Reports.h"

using kilntest::RecordedReports;
using testing::ElementsAre;

TEST(Report, TextsAreFormattedForTheSinkOfTheirKind) {
  RecordedReports reports;
  rptError("%d of ", 3);
  rptError("%s\n", "ten");
  rptUser("%4.1f%% done", 25.5);
  rptStatus("a\tb\nc\x7f\xC3\xA9");
  rptSleep(7);
  EXPECT_THAT(reports.takeAll(), ElementsAre("error: 3 of ", "error: ten\n", "user: 25.5% done",
                                             "status: a b c \xC3\xA9", "sleep: 7"));
}

TEST(Report, TextsMayHaveAnyLength) {
  RecordedReports reports;
  for (const std::size_t length : {1022U, 1023U, 1024U, 100000U}) {
    const std::string text(length, 'x');
    rptError("%s", text.c_str());
    EXPECT_THAT(reports.takeAll(), ElementsAre("error: " + text));
  }
}

TEST(Report, ASinkCanPassTextsOnAndLeaveTheRestToTheDefault) {
  static RptSinks inner;
  RptSinks outer = {};
  outer.error = [](const char* text) { inner.error((std::string("host ") + text).c_str()); };
  testing::internal::CaptureStderr();
  inner = rptSetSinks(&outer);
  rptError("broken");
  rptUser("message");
  const RptSinks used = rptSetSinks(nullptr);
  rptError("plain");
  EXPECT_EQ("host broken\nmessage\nplain", testing::internal::GetCapturedStderr());
  EXPECT_EQ(outer.error, used.error);
  EXPECT_EQ(inner.status, used.status);
  rptError("\n");
}

TEST(Report, InAPipeEveryTextHasLinesOfItsOwn) {
  testing::internal::CaptureStderr();
  rptStatus("one");
  rptStatus("two\n");
  rptError("** ");
  rptError("piece");
  rptError("%s", "");
  rptStatus("three");
  rptClearStatus();
  rptError("line\n");
  rptUser("message\n");
  rptError("open");
  rptUser("last");
  EXPECT_EQ("one\ntwo \n** piece\nthree\nline\nmessage\nopen\nlast\n",
            testing::internal::GetCapturedStderr());
}

TEST(Report, TheWishToStopStaysUntilReset) {
  RecordedReports reports;
  EXPECT_FALSE(rptCheckAbort());
  reports.asksToStop = true;
  EXPECT_TRUE(rptCheckAbort());
  reports.asksToStop = false;
  EXPECT_TRUE(rptCheckAbort());
  rptResetAbort();
  EXPECT_FALSE(rptCheckAbort());
}

TEST(Report, ACaughtInterruptAsksToStopAgainAfterEachReset) {
  RecordedReports reports;
  rptCatchInterrupt();
  for (int round = 0; round < 2; ++round) {
    EXPECT_FALSE(rptCheckAbort());
    std::raise(SIGINT);
    EXPECT_TRUE(rptCheckAbort());
    rptResetAbort();
  }
  std::signal(SIGINT, SIG_DFL);
}
