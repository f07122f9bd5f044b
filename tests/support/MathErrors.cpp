#include "tests/support/MathErrors.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <utility>

namespace kilntest {

namespace {

std::vector<RaisedMathError> raised;

int recordMathError(const MathErrorRecord& record, std::va_list arguments) {
  char text[512] = "";
  const MathCatalogEntry* entry = vxKilnBase::findMathMessage(record.number);
  if (entry != nullptr) std::vsnprintf(text, sizeof text, entry->message, arguments);
  raised.push_back({record.number, record.severity, record.classTag, text});
  return 0;
}

}  // namespace

RecordedMathErrors::RecordedMathErrors()
    : previous_(vxKilnBase::setMathErrorHandler(recordMathError)) {
  raised.clear();
}

RecordedMathErrors::~RecordedMathErrors() {
  vxKilnBase::setMathErrorHandler(previous_);
}

std::vector<RaisedMathError> RecordedMathErrors::takeAll() {
  return std::exchange(raised, {});
}

std::vector<std::string> RecordedMathErrors::takeTexts() {
  std::vector<std::string> texts;
  for (RaisedMathError& error : takeAll()) texts.push_back(std::move(error.text));
  return texts;
}

void expectErrors(const std::vector<FailingCall>& table) {
  RecordedMathErrors errors;
  for (const FailingCall& row : table) {
    SCOPED_TRACE(row.text);
    row.call();
    const std::vector<RaisedMathError> raisedErrors = errors.takeAll();
    ASSERT_EQ(1U, raisedErrors.size());
    EXPECT_EQ(row.text, raisedErrors[0].text);
    EXPECT_EQ(row.number, raisedErrors[0].number);
    EXPECT_EQ(row.classTag, raisedErrors[0].classTag);
  }
}

}  // namespace kilntest
