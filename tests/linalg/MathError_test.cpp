#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>

#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/RWBlock.h>
#include <kilnbase/linalg/detail/SmallObjects.h>

#include "tests/support/MathErrors.h"

using kilntest::RecordedMathErrors;
using vxKilnBase::findMathMessage;
using vxKilnBase::raiseMathError;

namespace {

int answerSeven(const MathErrorRecord&, std::va_list) {
  return 7;
}

// Takes one hold away, and gives it back: a start-up object ends that was never built, and the
// reverse.
template <class Init>
void dropOneHold() {
  alignas(Init) unsigned char storage[sizeof(Init)];
  reinterpret_cast<Init*>(storage)->~Init();
}
template <class Init>
void takeOneHold() {
  alignas(Init) unsigned char storage[sizeof(Init)];
  new (storage) Init;
}

std::string textOf(std::uint16_t number) {
  return findMathMessage(number)->message;
}

}  // namespace

TEST(MathError, DefaultHandlerReportsAndContinuesOrTerminates) {
  const MathErrorRecord nothing = {0, 2, 0x900E};
  const MathErrorRecord lenient = {0x3005, 0, 0x900E};
  const MathErrorRecord strict = {0x3011, 2, 0x900E};
  testing::internal::CaptureStderr();
  EXPECT_EQ(0, raiseMathError(0));
  EXPECT_EQ(0, raiseMathError(nothing, "DoubleVec"));
  raiseMathError(0x3011, "IntVec", "maxIndex");
  raiseMathError(lenient, "DoubleVec", -1, 4U);
  EXPECT_EQ(
      "** [ZEROVEC: IntVec]: maxIndex: vector is empty.\n** Processing continues.\n"
      "** [INDEX: DoubleVec]: Index (-1) out of range [0->4].\n** Processing continues.\n",
      testing::internal::GetCapturedStderr());
  EXPECT_DEATH(
      raiseMathError(0x3003, "IntVec"),
      "\\*\\* \\[DIVZERO: IntVec\\]: Divide by zero\\.\\.\n\\*\\* Processing terminated\\.");
  EXPECT_DEATH(raiseMathError(strict, "DoubleVec", "minIndex"), "empty.\n.. Processing terminated");
  EXPECT_DEATH(raiseMathError(0x700A),
               "\\*\\* Error number 0x700a\\.\\*\\* Processing terminated\\.");
}

TEST(MathError, HandlerIsReplaceableAndItsAnswerComesBack) {
  const auto before = vxKilnBase::setMathErrorHandler(answerSeven);
  EXPECT_EQ(7, raiseMathError(0x4000));
  EXPECT_EQ(answerSeven, vxKilnBase::setMathErrorHandler(before));

  RecordedMathErrors errors;
  raiseMathError(0x5012, 9);
  raiseMathError(MathErrorRecord{0x300D, 1, 0x9024}, "SCharVec");
  const auto raised = errors.takeAll();
  ASSERT_EQ(2U, raised.size());
  EXPECT_EQ("Pivoting position specifier must be INITIAL,FREE, or FINAL, not 9", raised[0].text);
  EXPECT_EQ(0xF000, raised[0].classTag);
  EXPECT_EQ(1U, raised[0].severity);
  EXPECT_EQ("[STRIDE: SCharVec]: Stride must be 1", raised[1].text);
  EXPECT_EQ(0x9024, raised[1].classTag);
}

TEST(MathError, CataloguesHoldTheirMessagesInOrder) {
  EXPECT_EQ("[BADORDER: %s]: Mismatch of function (%u) and rhs (%u) order", textOf(0x3000));
  EXPECT_EQ("[VNMATCH: %s]: Vector lengths do not match (%u vs %u)", textOf(0x300F));
  EXPECT_EQ("[BADROOT: %s]: Zero'th root of 1 requested", textOf(0x3013));
  EXPECT_EQ("matrix not symmetric", textOf(0x400E));
  EXPECT_EQ("Restoring %s, data vector len %d, expected %u", textOf(0x4019));
  EXPECT_EQ("Condition number not calculated", textOf(0x5001));
  EXPECT_EQ("Can't solve system of equations, matrix not successfully factorized", textOf(0x5011));
  std::string warnings;
  for (int number : {0x3010, 0x3011, 0x4000, 0x400D, 0x400E, 0x4013, 0x4014, 0x5001, 0x5003, 0x500F,
                     0x5010, 0x5012}) {
    warnings += findMathMessage(static_cast<std::uint16_t>(number))->severity == 0 ? 'w' : 'F';
  }
  EXPECT_EQ("wwwFwwFwwwFF", warnings);
}

TEST(MathError, StartUpObjectsCountTheirHolds) {
  {
    const RWMATHInit second;
    const RWMATHInit third(second);
  }
  EXPECT_NE(nullptr, findMathMessage(0x3000));  // the library's own hold is left
  dropOneHold<RWMATHInit>();
  EXPECT_EQ(nullptr, findMathMessage(0x3000));
  EXPECT_DEATH(raiseMathError(0x3011, "IntVec", "maxIndex"), "Error number 0x3011.*terminated");
  takeOneHold<RWMATHInit>();
  EXPECT_NE(nullptr, findMathMessage(0x3000));
}

TEST(MathError, CataloguesAreAddedOnceAndRemovedById) {
  const MathCatalogEntry entries[] = {{0, "first"}, {2, "second %d"}};
  MathMessageCatalog catalog = {9, entries, 2, nullptr};
  MathMessageCatalog shadowed = {9, entries + 1, 1, nullptr};
  vxKilnBase::addMathCatalog(catalog);
  vxKilnBase::addMathCatalog(catalog);
  vxKilnBase::addMathCatalog(shadowed);
  EXPECT_EQ(entries, findMathMessage(0x9000));
  vxKilnBase::removeMathCatalog(9);
  EXPECT_EQ(entries + 1, findMathMessage(0x9000));
  vxKilnBase::removeMathCatalog(9);
  vxKilnBase::removeMathCatalog(9);
  EXPECT_EQ(nullptr, findMathMessage(0x9000));
  EXPECT_NE(nullptr, findMathMessage(0x5012));
}

TEST(RWBlock, CountsAndStorage) {
  RWBlock none(0, 8);
  EXPECT_EQ(nullptr, none.data);
  EXPECT_EQ(1, none.refs);
  RWBlock some(3, 8);
  static_cast<double*>(some.data)[2] = 1.0;

  for (unsigned count : {1U, 63U, 64U, 1000U}) {
    RWBlock* block = RWBlock::create(count, 8);
    ASSERT_NE(nullptr, block->data);
    if (count >= 64) {
      EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(block->data) % 64);
    }
    block->acquire();
    RWBlock::release(block);
    EXPECT_EQ(1, block->refs);
    RWBlock::release(block);
  }
  EXPECT_EQ(nullptr, RWBlock::create(0, 8)->data);
}

TEST(RWBlock, ExhaustedMemoryIsFatalAndLeavesAnEmptyBlock) {
  constexpr std::size_t unobtainable = std::size_t{1} << 30U;
  RecordedMathErrors errors;
  const RWBlock block(0xFFFFFFFFU, unobtainable);
  EXPECT_EQ(nullptr, block.data);
  EXPECT_EQ(1, block.refs);
  for (const std::size_t size : {unobtainable, std::size_t{0x100000001}}) {
    RWBlock* made = RWBlock::create(0xFFFFFFFFU, size);  // the last one overflows with its header
    EXPECT_EQ(nullptr, made->data);
    RWBlock::release(made);
  }
  const auto raised = errors.takeAll();
  EXPECT_EQ(3U, raised.size());
  for (const auto& error : raised) {
    EXPECT_EQ("[NOMEM: RWBlock]: Out of memory", error.text);
    EXPECT_EQ(2U, error.severity);
    EXPECT_EQ(0x901A, error.classTag);
  }
}

TEST(RWBlock, ManyViewsNeverFreeTheBlockEarly) {
  RWBlock* block = RWBlock::create(1, 8);
  for (int i = 0; i < 70000; ++i) block->acquire();
  for (int i = 0; i < 70000; ++i) RWBlock::release(block);
  EXPECT_EQ(0xFFFF, block->refs);  // saturated: kept for good
  block->refs = 1;
  RWBlock::release(block);
}

TEST(SmallObjects, KeepsTheLastFiveOfASize) {
  using vxKilnBase::detail::releaseSmallObject;
  using vxKilnBase::detail::takeSmallObject;
  void* objects[6];
  for (void*& object : objects) object = takeSmallObject(7);
  for (void* object : objects)
    releaseSmallObject(object, 8);  // 7 is rounded up to 8; the last finds no room
  void* other = takeSmallObject(9);
  for (int i = 4; i >= 0; --i) EXPECT_EQ(objects[i], takeSmallObject(8));
  for (int i = 0; i < 5; ++i) releaseSmallObject(objects[i], 8);
  releaseSmallObject(other, 10);
}
