#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <kilnbase/util/mr_status.h>

#include "tests/support/Reports.h"

TEST(Status, CodesAreReportedByName) {
  kilntest::RecordedReports reports;
  EXPECT_EQ(1, Mr_print_conditional(MR_NO_ERROR, "a.c", 1, "fine"));
  EXPECT_EQ(1, Mr_print_error(MR_NO_ERROR, "a.c", 1, "asked for"));
  EXPECT_EQ(1, Mr_print_error(MR_MISSING_CURVES, "c.c", 3, ""));
  EXPECT_EQ(1, Mr_print_conditional(MR_EXPRESSION_ERROR, "b.c", 20, "50% of them\n"));
  EXPECT_THAT(
      reports.takeAll(),
      testing::ElementsAre("error: ERROR NO ERROR (file a.c, line 1): asked for",
                           "error: ERROR MISSING CURVE(S) (file c.c, line 3): ",
                           "error: ERROR EXPRESSION ERROR (file b.c, line 20): 50% of them\n"));
}
