#include <gtest/gtest.h>

#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/RWBlock.h>

TEST(MathError, NumberZeroIsSilent) { EXPECT_EQ(0, vxKilnBase::raiseMathError(0)); }
