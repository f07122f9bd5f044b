#include <array>
#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <kilnbase/util/mr_bitfield.h>

using testing::ElementsAre;

TEST(Bitfield, BitsAreNumberedFromOneAndAnswerWithTheirMask) {
  std::array<std::uint8_t, 3> bytes = {0, 1, 128};
  EXPECT_EQ(1, MR_bitfield_is_set(bytes.data(), 9));
  EXPECT_EQ(128, MR_bitfield_is_set(bytes.data(), 24));
  EXPECT_EQ(0, MR_bitfield_is_clear(bytes.data() + 1, 2));
  EXPECT_EQ(1, MR_bitfield_is_clear(bytes.data(), 1));
}

TEST(Bitfield, ListsAreChangedAndAskedTogether) {
  std::array<std::uint8_t, 2> bytes = {0xFF, 0};
  const std::int32_t list[] = {2, 9, 16, 0, 3};
  MR_bitfield_toggle_multiple(bytes.data(), list);
  EXPECT_THAT(bytes, ElementsAre(0xFD, 0x81));
  EXPECT_EQ(1, MR_bitfield_is_any_set(bytes.data(), list));
  MR_bitfield_unset_multiple(bytes.data(), list);
  EXPECT_THAT(bytes, ElementsAre(0xFD, 0));
  EXPECT_EQ(0, MR_bitfield_is_any_set(bytes.data(), list));
  MR_bitfield_set_multiple(bytes.data(), list);
  EXPECT_THAT(bytes, ElementsAre(0xFF, 0x81));
}

TEST(Bitfield, IntegersTakeTheBytesThatTheyNeed) {
  const auto stored = [](int value) {
    std::array<std::uint8_t, 5> bytes = {9, 9, 9, 9, 9};
    MR_bitfield_set_from_int(bytes.data(), value);
    return bytes;
  };
  EXPECT_THAT(stored(0), ElementsAre(0, 9, 9, 9, 9));
  EXPECT_THAT(stored(0x10002), ElementsAre(2, 0, 1, 9, 9));
  EXPECT_DEBUG_DEATH(EXPECT_THAT(stored(-1), testing::Each(9)), "value >= 0");
}

TEST(Bitfield, RefusesNumbersBelowOne) {
  std::uint8_t bytes[] = {9, 9, 9};
  EXPECT_DEBUG_DEATH(MR_bitfield_set(bytes + 1, 0), "n >= 1");
  EXPECT_THAT(bytes, testing::Each(9));
}
