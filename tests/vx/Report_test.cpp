#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include <vx/Report.h>

#include "tests/support/Reports.h"

using kilntest::RecordedReports;

TEST(Report, TextsAreFormattedForTheSinkOfTheirKindAndDebugLevelsAndSwitchesHold) {
  RecordedReports reports;
  rptError("%d of %s\n", 3, "ten");
  rptUser("%4.1f%% done", 25.5);
  rptStatus("a\tb\nc\x7f\xC3\xA9\xC2\x9B");
  rptSleep(7);
  rptConfirmOK("bug #%d", 12);
  for (const int level : {2, 0}) {
    rptSetDebugLevel(level);
    for (const int i : {-1, 2, 3}) rptDebug(i, ">>>");
  }
  EXPECT_THAT(reports.takeAll(),
              testing::ElementsAre("error: 3 of ten\n", "user: 25.5% done",
                                   "status: a b c \xC3\xA9  ", "sleep: 7", "confirm: bug #12",
                                   "debug -1: >>>", "debug 2: >>>", "debug -1: >>>"));
  for (const int length : {1023, 1024}) {
    rptError("%*d", length, 7);
    EXPECT_EQ(7U + static_cast<unsigned>(length), reports.takeAll().at(0).length());
  }
  rptError("wide %ls", std::wstring(1, 0x20AC).c_str());
  EXPECT_THAT(reports.takeAll(), testing::ElementsAre(testing::StartsWith("error: wide ")));
  for (const int code : {-1, 0, 1023, 1024}) {
    for (const bool on : {true, false}) {
      rptSetDebugCode(code, on);
      EXPECT_EQ(on && code >= 0 && code < 1024, rptDebugCodeIsSet(code)) << code;
      EXPECT_FALSE(rptDebugCodeIsSet(code ^ 1)) << code;
    }
  }
}

TEST(Report, InAPipeEveryTextHasLinesOfItsOwnAlsoWhenASinkPassesItOn) {
  static RptSinks inner;
  RptSinks outer = {};
  outer.error = [](const char* text) { inner.error((std::string("host ") + text).c_str()); };
  testing::internal::CaptureStderr();
  for (const char* text : {"one", "two\n"}) rptStatus("%s", text);
  for (const char* text : {"** ", "piece", ""}) rptError("%s", text);
  rptStatus("three");
  rptClearStatus();
  inner = rptSetSinks(&outer);
  rptSleep(0);  // the default one
  rptError("broken");
  rptUser("message\n");
  EXPECT_EQ(outer.error, rptSetSinks(nullptr).error);
  rptDebug(0, "<<<");
  rptConfirmOK("agreed?");
  rptError("plain\n");
  EXPECT_EQ("one\ntwo \n** piece\nthree\nhost broken\nmessage\n<<<\nagreed?\nplain\n",
            testing::internal::GetCapturedStderr());
}

TEST(Report, TheWishToStopStaysUntilResetAndInterruptsAreCaughtAgain) {
  RecordedReports reports;
  std::signal(SIGINT, SIG_DFL);
  rptCatchInterrupt();
  for (const bool byInterrupt : {false, true, true}) {
    EXPECT_FALSE(rptCheckAbort());
    if (byInterrupt) std::raise(SIGINT);
    reports.asksToStop = !byInterrupt;
    EXPECT_TRUE(rptCheckAbort());
    reports.asksToStop = false;
    EXPECT_TRUE(rptCheckAbort());
    rptResetAbort();
  }
  std::signal(SIGINT, SIG_IGN);
  rptCatchInterrupt();
  std::raise(SIGINT);
  EXPECT_FALSE(rptCheckAbort());
  std::signal(SIGINT, SIG_DFL);
}
