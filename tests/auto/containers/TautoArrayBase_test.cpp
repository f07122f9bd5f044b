#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include <kilnbase/auto/containers/TautoArrayBase.h>

namespace {

struct Scratch : TautoArrayBase {
  using TautoArrayBase::base;
  using TautoArrayBase::count;
  Scratch(std::size_t size, std::size_t count) : TautoArrayBase(size, count) {}
  char* bytes() const { return static_cast<char*>(base()); }
};

}  // namespace

TEST(TautoArrayBase, PlacesElementsAtMultiplesOfTheirSize) {
  const Scratch bytes(1, 3);
  const Scratch points(24, 2);
  const Scratch lanes(64, 1);
  EXPECT_EQ(128U + 64U, TautoArrayBase::currentUse());
  EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(lanes.base()) % 64);
  const auto base = reinterpret_cast<std::uintptr_t>(points.base());
  std::uintptr_t words[5];  // table, first element, size, count, padding
  static_assert(sizeof words == sizeof(TautoArrayBase));
  std::memcpy(words, static_cast<const void*>(&points), sizeof words);
  words[2] &= USHRT_MAX;
  EXPECT_THAT(words, testing::ElementsAre(testing::_, base, 24, 2, 21));
}

TEST(TautoArrayBase, GrowsByStepsWhileArraysKeepTheBlocksThatItOutgrows) {
  EXPECT_EQ(8192U, TautoArrayBase::incrementalSize());
  TautoArrayBase::setIncrementSize(1000);
  {
    const std::size_t before = TautoArrayBase::bufferSize();
    const Scratch first(8, before / 8 + 1);  // nothing is in use, so the old block is freed
    EXPECT_EQ(before + 1000, TautoArrayBase::bufferSize());
    const std::string ones(8 * first.count(), '1');
    const std::string twos(before + 2000 - ones.size(), '2');
    const Scratch second(1, twos.size());  // short by exactly one step: grows by two
    EXPECT_EQ(before + 3000, TautoArrayBase::bufferSize());
    ones.copy(first.bytes(), ones.size());
    twos.copy(second.bytes(), twos.size());
    std::fill_n(Scratch(2, 3000).bytes(), 6000, '3');
    EXPECT_EQ(ones, std::string(first.bytes(), ones.size()));
    EXPECT_EQ(twos, std::string(second.bytes(), twos.size()));
  }
  EXPECT_EQ(0U, TautoArrayBase::currentUse());
  TautoArrayBase::setIncrementSize(8192);
}

TEST(TautoArrayBase, ReservesNothingWithoutMemory) {
  const std::size_t before = TautoArrayBase::bufferSize();
  for (const std::size_t count : {SIZE_MAX, SIZE_MAX / 24, SIZE_MAX / 48 - 1}) {
    EXPECT_EQ(nullptr, Scratch(24, count).base());
  }
  TautoArrayBase::setIncrementSize(SIZE_MAX - 62);
  EXPECT_EQ(nullptr, Scratch(1, before + 1).base());
  TautoArrayBase::setIncrementSize(8192);
  EXPECT_EQ(0U, TautoArrayBase::currentUse());
  EXPECT_EQ(before, TautoArrayBase::bufferSize());
  for (const std::size_t size : {0, 65536}) {
    EXPECT_DEBUG_DEATH(EXPECT_EQ(nullptr, Scratch(size, 1).base()), "sizeFits");
  }
}
