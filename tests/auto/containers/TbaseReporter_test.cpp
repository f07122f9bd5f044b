#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <tuple>

#include <kilnbase/auto/containers/TbaseReporter.h>

#include "tests/support/Reports.h"

using testing::ElementsAre;

TEST(TbaseReporter, PutsTheOptionNameBeforeFixedTextsOrOnlyAsksAndWaits) {
  kilntest::RecordedReports reports;
  TbaseReporter reporter("an older name", 1);
  for (const int loud : {1, 0}) {
    reporter.loud() = loud;
    reporter.iterationsReport(7);
    reporter.percentageReport(0.255);
    reporter.noMemoryReport();
    for (const double achieved : {0.001, 0.01}) reporter.tolReport(4, achieved, 0.01);
  }
  EXPECT_EQ(0, reporter.quit());
  reports.asksToStop = true;
  EXPECT_EQ(1, reporter.quit());
  EXPECT_EQ(25U, reporter.sleep(25));
  TbaseReporter::sPromptNoHist("%d", 2);
  const std::string tolerance = "user: an older na:  Iteration 4.  Tolerance achieved: ";
  EXPECT_THAT(reports.takeAll(),
              ElementsAre("status:  an older na:  Constraint solving.  Iteration 7 (ESC to stop).",
                          "status:  an older na:  Constraint solving ... 25.5% completed",
                          "status: an older na: Not enough memory to complete this operation.",
                          tolerance + "0.0010 (Requested 0.0100).",
                          tolerance + "0.0100 (Requested 0.0100).  (ESC to stop).", "sleep: 25",
                          "user: 2"));
}

TEST(TbaseReporter, FittingMessagesFollowTheDeviation) {
  kilntest::RecordedReports reports;
  const std::string at = " at (0.5000, 0.2500).";
  const std::tuple<int, double, std::string> cases[] = {
      {3, -9e-10, "-0.0000."},
      {3, std::nextafter(1.0, 0.0), "1.0000" + at},
      {9, 1.0, "1.0000" + at + " (ESC to stop)."},
      {10, 2.0, "2.0000" + at},
  };
  for (const auto& [i, dev, expected] : cases) {
    TbaseReporter("Fit", -1).toleranceReport(i, 10, 0.5, 0.25, dev);
    EXPECT_THAT(reports.takeAll(),
                ElementsAre("status: Fit: Fitting iteration " + std::to_string(i) +
                            " (of max. 10). Rel. deviation: " + expected));
  }
}
