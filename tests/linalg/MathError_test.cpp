#include <cstdio>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <kilnbase/linalg/DoubleGenMat.h>
#include <kilnbase/linalg/IntVec.h>
#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/RWBlock.h>

#include "tests/support/MathErrors.h"
#include "tests/support/Matrices.h"

using namespace kilntest;
using namespace vxKilnBase;
using testing::HasSubstr;

namespace {

std::string contentOf(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(KILN_SOURCE_DIR "/" + path).rdbuf();
  return text.str();
}

}  // namespace

TEST(MathError, DefaultHandlerReportsAndContinuesOrTerminates) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(0, raiseMathError(0));
  EXPECT_EQ(0, raiseMathError(MathErrorRecord{0, 2, 0x900E}, "DoubleVec"));
  raiseMathError(kEmptyVectorError, "IntVec", "maxIndex");
  raiseMathError(MathErrorRecord{kIndexError, 0, 0x900E}, "DoubleVec", -1, 4U);
  EXPECT_EQ(
      "** [ZEROVEC: IntVec]: maxIndex: vector is empty.\n** Processing continues.\n"
      "** [INDEX: DoubleVec]: Index (-1) out of range [0->4].\n** Processing continues.\n",
      testing::internal::GetCapturedStderr());
  EXPECT_DEATH(
      raiseMathError(kDivisionByZeroError, "IntVec"),
      "\\*\\* \\[DIVZERO: IntVec\\]: Divide by zero\\.\\.\n\\*\\* Processing terminated\\.");
  EXPECT_DEATH(raiseMathError(0x700A),
               "\\*\\* Error number 0x700a\\.\\*\\* Processing terminated\\.");
}

TEST(MathError, HandlerIsReplaceableAndItsAnswerComesBack) {
  const MathErrorHandler answer = [](const MathErrorRecord& record, std::va_list) {
    return static_cast<int>(record.classTag + record.severity);
  };
  const auto before = setMathErrorHandler(answer);
  EXPECT_EQ(0xF001, raiseMathError(kMatrixInternalError));
  EXPECT_EQ(answer, setMathErrorHandler(before));
}

TEST(MathError, HandlerThatThrowsLeavesEverythingAsItWas) {
  DoubleVec v(3U, 0.0, 1.0);
  IntVec whole(3U, 7);
  DoubleGenMat a(2U, 3U, 1.5);
  const DoubleVec other(2U), oldV = v.copy();
  const DoubleGenMat square(2U, 2U), oldA = a.copy();
  const IntVec indices(3U, 0);
  const std::function<void()> failing[] = {
      [&] { v = other; },
      [&] { v += other; },
      [&] { v[3] = 7.0; },
      [&] { v.vecPick(indices) = other; },
      [&] { a.matPick(indices, indices) = square; },
      [&] { whole /= IntVec(3U, 0); },
      [&] { a = square; },
      [&] { a /= square; },
      [&] { a.bcset(2, 0, 7.0); },
      [&] { a.resize(70000, 70000); },
      [&] { a.reshape(70000, 70000); },
      [&] { std::istringstream("2x3 [ 1 2 ]") >> a; },
  };
  const auto before = setMathErrorHandler(
      [](const MathErrorRecord&, std::va_list) -> int { throw std::domain_error("raised"); });
  for (const auto& call : failing) EXPECT_THROW(call(), std::domain_error);
  setMathErrorHandler(before);
  EXPECT_EQ(oldV, v);
  EXPECT_EQ(oldA, a);
  EXPECT_EQ(IntVec(3U, 7), whole);
}

// Every row of the table in docs/errors.md agrees with the catalogues and with MathError.h.
TEST(MathError, DocumentedNumbersNamesAndTextsAreThoseOfTheSources) {
  const std::string header = contentOf("kilnbase/linalg/MathError.h");
  std::istringstream table(contentOf("docs/errors.md"));
  int rows = 0;
  for (std::string line; std::getline(table, line);) {
    if (!line.starts_with("| 0x")) continue;
    ++rows;
    char name[40], severity[10], message[100];
    unsigned number = 0;
    ASSERT_EQ(4, std::sscanf(line.c_str(), "| %x | `%39[^`]` | %9[a-z] | `%99[^`]` |", &number,
                             name, severity, message));
    const MathCatalogEntry* entry = findMathMessage(static_cast<std::uint16_t>(number));
    EXPECT_STREQ(entry->message, message);
    EXPECT_STREQ(entry->severity == 0 ? "warning" : "fatal", severity) << message;
    EXPECT_THAT(header, HasSubstr(name + (" = " + line.substr(2, 6)) + ","));
  }
  EXPECT_EQ(66, rows);
}

TEST(MathError, StartUpObjectsCountTheirHolds) {
  RWMATHInit hold;
  { const RWMATHInit second(hold); }
  std::destroy_at(&hold);
  EXPECT_NE(nullptr, findMathMessage(kFunctionOrderError));  // the library holds it too
  std::destroy_at(&hold);
  EXPECT_EQ(nullptr, findMathMessage(kFunctionOrderError));
  EXPECT_DEATH(raiseMathError(kEmptyVectorError, "IntVec", "maxIndex"),
               "Error number 0x3011.*terminated");
  for (int i = 0; i < 2; ++i) std::construct_at(&hold);
}

TEST(MathError, CataloguesAreAddedOnceAndRemovedById) {
  const MathCatalogEntry entries[] = {{0, "first"}, {2, "second %d"}};
  MathMessageCatalog catalog = {9, entries, 2, nullptr}, shadowed = {9, entries + 1, 1, nullptr};
  for (auto* added : {&catalog, &shadowed, &catalog}) addMathCatalog(*added);
  for (const auto* expected : {entries, entries + 1, decltype(+entries)(nullptr)}) {
    EXPECT_EQ(expected, findMathMessage(0x9000));
    removeMathCatalog(9);
  }
  EXPECT_NE(nullptr, findMathMessage(kPivotPositionError));
}

TEST(RWBlock, CountsAndStorage) {
  EXPECT_EQ(nullptr, RWBlock::create(0, 8)->data);
  EXPECT_EQ(nullptr, RWBlock(0, 8).data);
  EXPECT_NE(nullptr, RWBlock(3, 8).data);
  for (unsigned count : {1U, 63U, 64U, 1000U}) {
    RWBlock* block = RWBlock::create(count, 8);
    ASSERT_NE(nullptr, block->data);
    const auto place = reinterpret_cast<std::uintptr_t>(block->data);
    EXPECT_EQ(0U, place % (count < 64 ? 16 : 64));
    block->acquire();
    RWBlock::release(block);
    EXPECT_EQ(1, block->refs);
    // A block with too many views is never freed.
    for (int i = 0; i < 70000; ++i) block->acquire();
    for (int i = 0; i < 70000; ++i) RWBlock::release(block);
    EXPECT_EQ(0xFFFF, block->refs);
    block->refs = 1;
    RWBlock::release(block);
  }
}

TEST(RWBlock, WithoutMemoryIsEmpty) {
  constexpr std::size_t unobtainable = std::size_t{1} << 30U;
  RecordedMathErrors errors;
  const RWBlock none(0xFFFFFFFFU, unobtainable);
  EXPECT_EQ(nullptr, none.data);
  EXPECT_EQ(1, none.refs);
  for (const std::size_t size : {unobtainable, std::size_t{0x100000001}}) {
    RWBlock* made =
        RWBlock::create(0xFFFFFFFFU, size);  // header and storage of the last are 2^64 bytes
    EXPECT_EQ(nullptr, made->data);
    RWBlock::release(made);
  }
  const auto raised = errors.takeAll();
  ASSERT_EQ(3U, raised.size());
  for (const auto& error : raised) EXPECT_EQ(kOutOfMemoryError, error.number);
  EXPECT_EQ(2U, raised[0].severity);
}
