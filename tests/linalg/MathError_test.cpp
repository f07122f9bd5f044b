#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/RWBlock.h>
#include <kilnbase/linalg/detail/SmallObjects.h>

#include "tests/support/MathErrors.h"

using kilntest::RecordedMathErrors;
using vxKilnBase::findMathMessage;
using vxKilnBase::raiseMathError;

TEST(MathError, DefaultHandlerReportsAndContinuesOrTerminates) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(0, raiseMathError(0));
  EXPECT_EQ(0, raiseMathError(MathErrorRecord{0, 2, 0x900E}, "DoubleVec"));
  raiseMathError(0x3011, "IntVec", "maxIndex");
  raiseMathError(MathErrorRecord{0x3005, 0, 0x900E}, "DoubleVec", -1, 4U);
  EXPECT_EQ(
      "** [ZEROVEC: IntVec]: maxIndex: vector is empty.\n** Processing continues.\n"
      "** [INDEX: DoubleVec]: Index (-1) out of range [0->4].\n** Processing continues.\n",
      testing::internal::GetCapturedStderr());
  EXPECT_DEATH(
      raiseMathError(0x3003, "IntVec"),
      "\\*\\* \\[DIVZERO: IntVec\\]: Divide by zero\\.\\.\n\\*\\* Processing terminated\\.");
  EXPECT_DEATH(raiseMathError(MathErrorRecord{0x3011, 2, 0x900E}, "DoubleVec", "minIndex"),
               "empty.\n.. Processing terminated");
  EXPECT_DEATH(raiseMathError(0x700A),
               "\\*\\* Error number 0x700a\\.\\*\\* Processing terminated\\.");
}

TEST(MathError, HandlerIsReplaceableAndItsAnswerComesBack) {
  const vxKilnBase::MathErrorHandler answer = [](const MathErrorRecord& record, std::va_list) {
    return static_cast<int>(record.classTag + record.severity);
  };
  const auto before = vxKilnBase::setMathErrorHandler(answer);
  EXPECT_EQ(0xF001, raiseMathError(0x4000));
  EXPECT_EQ(answer, vxKilnBase::setMathErrorHandler(before));
}

TEST(MathError, CataloguesHoldTheirMessagesInOrder) {
  EXPECT_STREQ("[BADORDER: %s]: Mismatch of function (%u) and rhs (%u) order",
               findMathMessage(0x3000)->message);
  EXPECT_STREQ("[BADROOT: %s]: Zero'th root of 1 requested", findMathMessage(0x3013)->message);
  EXPECT_STREQ("matrix not symmetric", findMathMessage(0x400E)->message);
  EXPECT_STREQ("Restoring %s, data vector len %d, expected %u", findMathMessage(0x4019)->message);
  EXPECT_STREQ("Can't solve system of equations, matrix not successfully factorized",
               findMathMessage(0x5011)->message);
  std::string warnings;
  for (const int number : {0x3010, 0x3011, 0x4000, 0x400D, 0x400E, 0x4013, 0x4014, 0x5001, 0x5003,
                           0x500F, 0x5010, 0x5012}) {
    warnings += findMathMessage(static_cast<std::uint16_t>(number))->severity == 0 ? 'w' : 'F';
  }
  EXPECT_EQ("wwwFwwFwwwFF", warnings);
}

TEST(MathError, StartUpObjectsCountTheirHolds) {
  RWMATHInit hold;
  { const RWMATHInit second(hold); }
  std::destroy_at(&hold);
  EXPECT_NE(nullptr, findMathMessage(0x3000));  // the library's own hold is left
  std::destroy_at(&hold);
  EXPECT_EQ(nullptr, findMathMessage(0x3000));
  EXPECT_DEATH(raiseMathError(0x3011, "IntVec", "maxIndex"), "Error number 0x3011.*terminated");
  for (int i = 0; i < 2; ++i) std::construct_at(&hold);
}

TEST(MathError, CataloguesAreAddedOnceAndRemovedById) {
  const MathCatalogEntry entries[] = {{0, "first"}, {2, "second %d"}};
  MathMessageCatalog catalog = {9, entries, 2, nullptr}, shadowed = {9, entries + 1, 1, nullptr};
  for (auto* added : {&catalog, &shadowed, &catalog}) vxKilnBase::addMathCatalog(*added);
  for (const auto* expected : {entries, entries + 1, decltype(+entries)(nullptr)}) {
    EXPECT_EQ(expected, findMathMessage(0x9000));
    vxKilnBase::removeMathCatalog(9);
  }
  EXPECT_NE(nullptr, findMathMessage(0x5012));
}

TEST(RWBlock, CountsAndStorage) {
  EXPECT_EQ(nullptr, RWBlock::create(0, 8)->data);
  EXPECT_TRUE(RWBlock(0, 8).data == nullptr && RWBlock(3, 8).data != nullptr);
  for (unsigned count : {1U, 63U, 64U, 1000U}) {
    RWBlock* block = RWBlock::create(count, 8);
    ASSERT_NE(nullptr, block->data);
    EXPECT_TRUE(count < 64 || reinterpret_cast<std::uintptr_t>(block->data) % 64 == 0);
    block->acquire();
    RWBlock::release(block);
    EXPECT_EQ(1, block->refs);
    // Too many views never free it early.
    for (int i = 0; i < 70000; ++i) block->acquire();
    for (int i = 0; i < 70000; ++i) RWBlock::release(block);
    EXPECT_EQ(0xFFFF, block->refs);  // saturated: kept for good
    block->refs = 1;
    RWBlock::release(block);
  }
  constexpr std::size_t unobtainable = std::size_t{1} << 30U;
  RecordedMathErrors errors;
  const RWBlock none(0xFFFFFFFFU, unobtainable);
  EXPECT_TRUE(none.data == nullptr && none.refs == 1);
  for (const std::size_t size : {unobtainable, std::size_t{0x100000001}}) {
    RWBlock* made = RWBlock::create(0xFFFFFFFFU, size);  // the last one overflows with its header
    EXPECT_EQ(nullptr, made->data);
    RWBlock::release(made);
  }
  const auto raised = errors.takeAll();
  EXPECT_EQ(3U, raised.size());
  for (const auto& error : raised) {
    EXPECT_EQ("[NOMEM: RWBlock]: Out of memory", error.text);
    EXPECT_TRUE(error.severity == 2 && error.classTag == 0x901A);
  }
}

TEST(SmallObjects, KeepsTheLastFiveOfASize) {
  using namespace vxKilnBase::detail;
  void* objects[6];
  for (void*& object : objects) object = takeSmallObject(7);
  // 7 is rounded up to 8; the last finds no room.
  for (void* object : objects) releaseSmallObject(object, 8);
  void* other = takeSmallObject(9);
  for (int i = 4; i >= 0; --i) EXPECT_EQ(objects[i], takeSmallObject(8));
  for (int i = 0; i < 5; ++i) releaseSmallObject(objects[i], 8);
  releaseSmallObject(other, 10);
}
