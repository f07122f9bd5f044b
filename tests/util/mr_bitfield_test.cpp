#include <algorithm>
#include <array>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

#include <kilnbase/util/mr_bitfield.h>

using testing::ElementsAre;

TEST(Bitfield, BitsAreNumberedFromOneAndAnswerWithTheirMask) {
  std::array<std::uint8_t, 4> bytes = {};
  MR_bitfield_set(bytes.data(), 9);
  MR_bitfield_set(bytes.data(), 32);
  EXPECT_THAT(bytes, ElementsAre(0, 1, 0, 128));
  EXPECT_EQ(1, MR_bitfield_is_set(bytes.data(), 9));
  EXPECT_EQ(128, MR_bitfield_is_set(bytes.data(), 32));
  EXPECT_EQ(0, MR_bitfield_is_set(bytes.data(), 8));
}

TEST(Bitfield, BehavesLikeAnArrayOfFlags) {
  std::mt19937 random(5);
  std::array<std::uint8_t, 8> bytes = {};
  std::array<bool, 64> flags = {};
  const auto number = [&] { return static_cast<std::int32_t>(random() % flags.size()) + 1; };
  for (int step = 0; step < 500; ++step) {
    const std::int32_t list[] = {number(), number(), 0, number()};
    const auto kind = random() % 3;
    for (const std::int32_t n : {list[0], list[1]}) {
      bool& flag = flags[static_cast<std::size_t>(n - 1)];
      flag = kind == 0 || (kind == 2 && !flag);
    }
    (kind == 0   ? MR_bitfield_set_multiple
     : kind == 1 ? MR_bitfield_unset_multiple
                 : MR_bitfield_toggle_multiple)(bytes.data(), list);
    const std::int32_t asked[] = {number(), number(), 0};
    ASSERT_EQ(flags[static_cast<std::size_t>(asked[0] - 1)] ||
                  flags[static_cast<std::size_t>(asked[1] - 1)],
              MR_bitfield_is_any_set(bytes.data(), asked) == 1);
    for (int n = 1; n <= 64; ++n) {
      ASSERT_EQ(flags[static_cast<std::size_t>(n - 1)], MR_bitfield_is_set(bytes.data(), n) != 0);
    }
  }
}

TEST(Bitfield, ClearMeansAllOfTheBytesAskedFor) {
  const std::uint8_t bytes[] = {0, 0, 4};
  EXPECT_EQ(1, MR_bitfield_is_clear(bytes, 2));
  EXPECT_EQ(0, MR_bitfield_is_clear(bytes, 3));
  EXPECT_EQ(1, MR_bitfield_is_clear(bytes + 2, 0));
  EXPECT_EQ(1, MR_bitfield_is_clear(bytes + 2, -1));
}

TEST(Bitfield, IntegersTakeTheBytesThatTheyNeed) {
  const auto stored = [](int value) {
    std::array<std::uint8_t, 5> bytes;
    bytes.fill(9);
    MR_bitfield_set_from_int(bytes.data(), value);
    return bytes;
  };
  EXPECT_THAT(stored(0), ElementsAre(0, 9, 9, 9, 9));
  EXPECT_THAT(stored(0x10002), ElementsAre(2, 0, 1, 9, 9));
  EXPECT_THAT(stored(std::numeric_limits<int>::max()), ElementsAre(255, 255, 255, 127, 9));
}

TEST(Bitfield, RefusesNumbersBelowOneAndNegativeValues) {
  std::uint8_t bytes[] = {9, 9, 9};
  EXPECT_DEBUG_DEATH(MR_bitfield_set(bytes + 1, 0), "n >= 1");
  EXPECT_DEBUG_DEATH(MR_bitfield_toggle(bytes + 1, -1), "n >= 1");
  EXPECT_DEBUG_DEATH(MR_bitfield_unset(bytes + 1, std::numeric_limits<int>::min()), "n >= 1");
  EXPECT_DEBUG_DEATH(MR_bitfield_set_from_int(bytes + 1, -1), "value >= 0");
  EXPECT_THAT(bytes, ElementsAre(9, 9, 9));
}
