#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include <kilnbase/auto/containers/TbaseReporter.h>
#include <kilnbase/auto/containers/TdebugTrace.h>

#include "tests/support/Reports.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TbaseReporterTest : public testing::Test {
 protected:
  void reportEverything(const TbaseReporter& reporter) {
    reporter.iterationsReport(7);
    reporter.percentageReport(0.255);
    reporter.noMemoryReport();
    reporter.tolReport(4, 0.001, 0.01);
    reporter.toleranceReport(3, 10, 0.5, 0.25, 0.5);
  }

  kilntest::RecordedReports reports_;
  const TbaseReporter reporter_{"Fit", 1};
};

}  // namespace

TEST_F(TbaseReporterTest, PutsTheOptionNameBeforeFixedTexts) {
  reportEverything(reporter_);
  EXPECT_THAT(
      reports_.takeAll(),
      ElementsAre("status:  Fit:  Constraint solving.  Iteration 7 (ESC to stop).",
                  "status:  Fit:  Constraint solving ... 25.5% completed",
                  "status: Fit: Not enough memory to complete this operation.",
                  "user: Fit:  Iteration 4.  Tolerance achieved: 0.0010 (Requested 0.0100).",
                  "status: Fit: Fitting iteration 3 (of max. 10). Rel. deviation: 0.5000 at "
                  "(0.5000, 0.2500)."));
}

TEST_F(TbaseReporterTest, AToleranceIsMetOnlyBelowTheRequestedOne) {
  reporter_.tolReport(4, 0.01, 0.01);
  EXPECT_THAT(reports_.takeAll(),
              ElementsAre("user: Fit:  Iteration 4.  Tolerance achieved: 0.0100 (Requested "
                          "0.0100).  (ESC to stop)."));
}

TEST_F(TbaseReporterTest, FittingMessagesFollowTheDeviation) {
  const std::string start = "status: Fit: Fitting iteration ";
  const std::string at = " at (0.5000, 0.2500).";
  struct Case {
    int i;
    double dev;
    std::string expected;
  };
  const Case cases[] = {
      {3, 0.0, "3 (of max. 10). Rel. deviation: 0.0000."},
      {3, -9e-10, "3 (of max. 10). Rel. deviation: -0.0000."},
      {3, 1e-9, "3 (of max. 10). Rel. deviation: 0.0000" + at},
      {3, -2.0, "3 (of max. 10). Rel. deviation: -2.0000" + at},
      {3, std::nextafter(1.0, 0.0), "3 (of max. 10). Rel. deviation: 1.0000" + at},
      {3, 1.0, "3 (of max. 10). Rel. deviation: 1.0000" + at + " (ESC to stop)."},
      {9, 2.0, "9 (of max. 10). Rel. deviation: 2.0000" + at + " (ESC to stop)."},
      {10, 2.0, "10 (of max. 10). Rel. deviation: 2.0000" + at},
  };
  for (const Case& c : cases) {
    reporter_.toleranceReport(c.i, 10, 0.5, 0.25, c.dev);
    EXPECT_THAT(reports_.takeAll(), ElementsAre(start + c.expected));
  }
}

TEST_F(TbaseReporterTest, ASilentReporterSaysNothingButStillAsksAndWaits) {
  TbaseReporter reporter("Fit", 0);
  reportEverything(reporter);
  reportEverything(TbaseReporter());
  EXPECT_THAT(reports_.takeAll(), IsEmpty());
  EXPECT_EQ(0, reporter.quit());
  reports_.asksToStop = true;
  EXPECT_EQ(1, reporter.quit());
  EXPECT_EQ(25U, reporter.sleep(25));
  EXPECT_THAT(reports_.takeAll(), ElementsAre("sleep: 25"));
  reporter.loud() = -1;
  reporter.noMemoryReport();
  EXPECT_THAT(reports_.takeAll(), testing::SizeIs(1));
}

TEST_F(TbaseReporterTest, OptionNamesKeepElevenCharacters) {
  class Renamed : public TbaseReporter {
   public:
    Renamed() : TbaseReporter("an older name", 1) {}
    using TbaseReporter::setOptionName;
  } reporter;
  const auto shown = [&] {
    reporter.noMemoryReport();
    const std::string text = reports_.takeAll().at(0);
    return text.substr(8, text.find(": Not") - 8);
  };
  EXPECT_EQ("an older na", shown());
  reporter.setOptionName("Blend");
  const TbaseReporter copy = reporter;
  EXPECT_EQ("Blend", shown());
  reporter.setOptionName(nullptr);
  EXPECT_EQ("", shown());
  copy.noMemoryReport();
  EXPECT_THAT(reports_.takeAll(),
              ElementsAre("status: Blend: Not enough memory to complete this operation."));
}

TEST_F(TbaseReporterTest, TheHooksReachTheReportsFromLoadOn) {
  TbaseReporter::sPrompt("%d", 1);
  TbaseReporter::sPromptNoHist("%d", 2);
  TbaseReporter::sPromptStatus("%d", 3);
  EXPECT_THAT(reports_.takeAll(), ElementsAre("user: 1", "user: 2", "status: 3"));
}

TEST(TdebugTrace, IsNeverOn) {
  char key[] = "key";
  TdebugTrace::fsTraceLevel = 9;
  const TdebugTrace trace(1, key, key);
  TdbgCbRegister registration(key, [](char*) { FAIL(); });
  registration = TdbgCbRegister(nullptr, nullptr);
  EXPECT_EQ(0, trace.on());
  TdebugTrace::fsTraceLevel = 0;
}
