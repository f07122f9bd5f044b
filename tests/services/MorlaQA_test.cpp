#include <cstdlib>
#include <gtest/gtest.h>

#include <kilnbase/services/MorlaQA.h>
#include <vx/Report.h>

#include "tests/support/Crash.h"
#include "tests/support/Environment.h"

using kilntest::setEnvironment;
using kilntest::unsetEnvironment;

namespace {

// The switch is decided once in a process: every decision is taken in a process of its own.
class MorlaQADeathTest : public testing::Test {
 protected:
  void SetUp() override {
    unsetEnvironment("MORLA_QA");
    unsetEnvironment("MORLA_DEBUG");
  }
};

// Whether the switch is on in a process with that environment, by exit code.
[[noreturn]] void exitWithSwitch(const char* variable) {
  if (variable) setEnvironment(variable, "");
  const bool isOn = MorlaQAEnabled();
  unsetEnvironment("MORLA_QA");
  unsetEnvironment("MORLA_DEBUG");
  const bool isStillOn = MorlaQAEnabled();
  setEnvironment("MORLA_QA", "1");
  MorlaQAAssert(9, true);
  std::exit(10 * isOn + isStillOn + 10 * MorlaQAEnabled());
}

}  // namespace

TEST_F(MorlaQADeathTest, AnyValueOfEitherVariableDecidesForTheLifeOfTheProcess) {
  EXPECT_EXIT(exitWithSwitch(nullptr), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(exitWithSwitch("MORLA_QA"), testing::ExitedWithCode(21), "");
  EXPECT_EXIT(exitWithSwitch("MORLA_DEBUG"), testing::ExitedWithCode(21), "");
}

TEST_F(MorlaQADeathTest, AFailedAssertionTellsItsNumberAndCrashes) {
  const auto failWithout = [] {
    MorlaQAAssert(123, false);
    std::exit(7);
  };
  EXPECT_EXIT(failWithout(), testing::ExitedWithCode(7), "^$");
  setEnvironment("MORLA_DEBUG", "");
  EXPECT_EXIT(MorlaQAAssert(123, false), kilntest::hasCrashed,
              "MORLA_QA Assertion failed:  You've triggered Bug #123,\n"
              "which we've been looking for!  Please make sure to fill\n"
              "out the crash information as fully as possible.");
}

TEST(MorlaQA, TheHeapIsCheckedUnderSwitch800) {
  EXPECT_FALSE(checkMorlaHeap());
  rptSetDebugCode(800, true);
  EXPECT_TRUE(checkMorlaHeap());
  rptSetDebugCode(800, false);
}
