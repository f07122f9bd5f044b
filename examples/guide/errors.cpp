// The program of docs/guide/errors.md.
#include <cstdarg>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <string>

#include <kilnbase/linalg/DoubleGenFact.h>
#include <kilnbase/linalg/DoubleVec.h>
#include <kilnbase/linalg/MathError.h>
#include <kilnbase/linalg/vecmath.h>
#include <kilnbase/util/DS/mr_register.h>
#include <kilnbase/util/mr_status.h>
#include <vx/File.h>
#include <vx/Report.h>

#include "examples/guide/expect.h"

namespace {

using guide::expect;

//! [handler]
class NumericError : public std::runtime_error {
 public:
  NumericError(unsigned aNumber, const char* text) : runtime_error(text), number(aNumber) {}
  unsigned number;
};

int throwError(const MathErrorRecord& error, std::va_list arguments) {
  if (error.number == vxKilnBase::kOutOfMemoryError) throw std::bad_alloc();
  char text[256] = "numeric error";
  const MathCatalogEntry* entry = vxKilnBase::findMathMessage(error.number);
  if (entry) std::vsnprintf(text, sizeof text, entry->message, arguments);
  throw NumericError(error.number, text);
}
//! [handler]

void shortest() {
  //! [shortest]
  vxKilnBase::setMathErrorHandler(throwError);  // once, at the start of the program
  const DoubleVec v{1, 2, 3};
  std::string text;
  try {
    text = std::to_string(v[3]);
  } catch (const NumericError& error) {
    expect(error.number == vxKilnBase::kIndexError);
    text = error.what();
  }
  expect(text == "[INDEX: DoubleVec]: Index (3) out of range [0->2]");
  //! [shortest]
}

void unchanged() {
  //! [unchanged]
  DoubleVec v(3, 1.0);
  bool isThrown = false;
  try {
    v = DoubleVec(4, 2.0);  // lengths 3 and 4
  } catch (const NumericError&) {
    isThrown = true;
  }
  expect(isThrown);
  expect(v == DoubleVec(3, 1.0));  // as before the call, and nothing leaks
  //! [unchanged]
}

//! [scope]
class ThrowsNumericErrors {
 public:
  ThrowsNumericErrors() : before_(vxKilnBase::setMathErrorHandler(throwError)) {}
  ~ThrowsNumericErrors() { vxKilnBase::setMathErrorHandler(before_); }
  ThrowsNumericErrors(const ThrowsNumericErrors&) = delete;
  ThrowsNumericErrors& operator=(const ThrowsNumericErrors&) = delete;

 private:
  vxKilnBase::MathErrorHandler before_;
};
//! [scope]

void goingOn() {
  //! [goingon]
  static int errors;
  errors = 0;
  const auto before = vxKilnBase::setMathErrorHandler([](const MathErrorRecord&, std::va_list) {
    ++errors;
    return 0;  // the operation goes on as docs/errors.md says
  });
  const DoubleVec sum = DoubleVec(3, 1.0) + DoubleVec(2, 1.0);
  expect(errors == 1);
  expect(sum.length() == 3);
  expect(sum(1) == 2.0);
  expect(sum(2) == 0.0);  // the elements that only one of them has
  vxKilnBase::setMathErrorHandler(before);
  //! [goingon]
}

//! [own]
constexpr MathCatalogEntry kSurveyErrors[] = {{2, "station %u: reading %g is out of range"}};
MathMessageCatalog surveyCatalog = {9, kSurveyErrors, 1, nullptr};
constexpr std::uint16_t kReadingError = 0x9000;  // catalogue 9, message 0

void checkReading(unsigned station, double value) {
  if (!(value >= 0.0)) vxKilnBase::raiseMathError(kReadingError, station, value);
}
//! [own]

void ownErrors() {
  const ThrowsNumericErrors scope;
  vxKilnBase::addMathCatalog(surveyCatalog);
  std::string text;
  try {
    checkReading(12, -0.5);
  } catch (const NumericError& error) {
    text = error.what();
  }
  vxKilnBase::removeMathCatalog(9);
  expect(text == "station 12: reading -0.5 is out of range");
}

void singular() {
  //! [singular]
  DoubleGenMat a(2, 2, 1.0);  // two equal rows
  const DoubleGenFact lu(a);  // no error yet
  expect(lu.fail());
  bool isThrown = false;
  try {
    const DoubleVec x = lu.solve(DoubleVec(2, 1.0));  // this is one
    expect(x.length() == 0);                          // not reached
  } catch (const NumericError& error) {
    isThrown = error.number == vxKilnBase::kNotFactoredError;
  }
  expect(isThrown);
  //! [singular]
}

void statusCodes() {
  //! [status]
  int pen = 0;
  DS_Structure* tools = nullptr;
  StatusCode status = MR_NO_ERROR;  // before each call, or group of calls: success writes nothing
  expect(MR_register_item(7, &pen, &tools, &status) == 1);
  expect(status == MR_NO_ERROR);
  expect(MR_register_item(7, &pen, &tools, &status) == 0);
  expect(status == MR_INVALID_FUNCTION);  // the id is in use
  expect(MR_get_id_registration(8, tools, &status) == nullptr);
  expect(status == MR_ITEM_NOT_FOUND);
  MR_clear_registrations(tools, &status);
  DS_destructor(&tools, nullptr, nullptr, &status);
  //! [status]
}

void services() {
  //! [services]
  vxOS::FileStatus status;
  expect(!vxOS::File::query("no/such/file", status));  // no error: there is nothing
  expect(!status.exists);
  const vxUtil::Error error = vxOS::File::remove("no/such/file");
  expect(error.code() != 0);
  expect(!error.message().isEmpty());  // a text for the user
  //! [services]
}

//! [reports]
std::string gShown;

void show(const char* text) {
  gShown += text;
}  // must not throw

void reports() {
  RptSinks sinks = {};  // null members: the default functions
  sinks.error = show;
  const RptSinks before = rptSetSinks(&sinks);
  rptError("cannot open %s\n", "wing.wire");
  vxKilnBase::setMathErrorHandler(nullptr);  // the default handler writes to the report
  const int index = vxKilnBase::maxIndex(DoubleVec());
  rptSetSinks(&before);
  expect(index == -1);
  expect(gShown ==
         "cannot open wing.wire\n"
         "** [ZEROVEC: DoubleVec]: maxIndex: vector is empty.\n"
         "** Processing continues.\n");
}
//! [reports]

}  // namespace

int main() {
  shortest();
  unchanged();
  goingOn();
  ownErrors();
  singular();
  statusCodes();
  services();
  reports();
}
