#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include <kilnbase/auto/containers/TbaseReporter.h>
#include <kilnbase/auto/containers/TdebugTrace.h>

#include "tests/support/Reports.h"

using testing::ElementsAre;

namespace {

class Reporter : public TbaseReporter {
 public:
  using TbaseReporter::setOptionName;
  using TbaseReporter::TbaseReporter;
};

}  // namespace

TEST(TbaseReporter, PutsTheOptionNameBeforeFixedTexts) {
  kilntest::RecordedReports reports;
  const TbaseReporter reporter("Fit", 1);
  reporter.iterationsReport(7);
  reporter.percentageReport(0.255);
  reporter.noMemoryReport();
  reporter.tolReport(4, 0.001, 0.01);
  reporter.tolReport(4, 0.01, 0.01);
  const std::string tolerance = "user: Fit:  Iteration 4.  Tolerance achieved: ";
  EXPECT_THAT(reports.takeAll(),
              ElementsAre("status:  Fit:  Constraint solving.  Iteration 7 (ESC to stop).",
                          "status:  Fit:  Constraint solving ... 25.5% completed",
                          "status: Fit: Not enough memory to complete this operation.",
                          tolerance + "0.0010 (Requested 0.0100).",
                          tolerance + "0.0100 (Requested 0.0100).  (ESC to stop)."));
}

TEST(TbaseReporter, FittingMessagesFollowTheDeviation) {
  kilntest::RecordedReports reports;
  const std::string at = " at (0.5000, 0.2500).";
  struct Case {
    int i;
    double dev;
    std::string expected;
  };
  const Case cases[] = {
      {3, -9e-10, "-0.0000."},
      {3, 1e-9, "0.0000" + at},
      {3, std::nextafter(1.0, 0.0), "1.0000" + at},
      {9, 1.0, "1.0000" + at + " (ESC to stop)."},
      {10, 2.0, "2.0000" + at},
  };
  for (const Case& c : cases) {
    TbaseReporter("Fit", -1).toleranceReport(c.i, 10, 0.5, 0.25, c.dev);
    EXPECT_THAT(reports.takeAll(),
                ElementsAre("status: Fit: Fitting iteration " + std::to_string(c.i) +
                            " (of max. 10). Rel. deviation: " + c.expected));
  }
}

TEST(TbaseReporter, ASilentReporterSaysNothingButStillAsksAndWaits) {
  kilntest::RecordedReports reports;
  Reporter reporter("an older name", 0);
  reporter.iterationsReport(7);
  reporter.percentageReport(0.255);
  reporter.noMemoryReport();
  reporter.tolReport(4, 0.001, 0.01);
  reporter.toleranceReport(3, 10, 0.5, 0.25, 0.5);
  EXPECT_EQ(0, reporter.quit());
  reports.asksToStop = true;
  EXPECT_EQ(1, reporter.quit());
  EXPECT_EQ(25U, reporter.sleep(25));
  reporter.loud() = 1;
  reporter.iterationsReport(1);
  reporter.setOptionName(nullptr);
  reporter.iterationsReport(2);
  EXPECT_THAT(reports.takeAll(),
              ElementsAre("sleep: 25",
                          "status:  an older na:  Constraint solving.  Iteration 1 (ESC to stop).",
                          "status:  :  Constraint solving.  Iteration 2 (ESC to stop)."));
}

TEST(TbaseReporter, TheHooksReachTheReportsFromLoadOn) {
  kilntest::RecordedReports reports;
  TbaseReporter::sPrompt("%d", 1);
  TbaseReporter::sPromptNoHist("%d", 2);
  TbaseReporter::sPromptStatus("%d", 3);
  EXPECT_THAT(reports.takeAll(), ElementsAre("user: 1", "user: 2", "status: 3"));
  EXPECT_EQ(0, TdebugTrace(1, nullptr, nullptr).on());
}
