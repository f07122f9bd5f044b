#include "examples/surface_fit/NumericErrors.h"

#include <cstdio>
#include <new>

namespace surfacefit {

namespace {

int throwNumericError(const MathErrorRecord& record, std::va_list arguments) {
  if (record.number == vxKilnBase::kOutOfMemoryError) throw std::bad_alloc();
  char text[256] = "numeric error";
  const MathCatalogEntry* entry = vxKilnBase::findMathMessage(record.number);
  if (entry != nullptr) std::vsnprintf(text, sizeof text, entry->message, arguments);
  throw NumericError(text);
}

}  // namespace

ThrowingNumericErrors::ThrowingNumericErrors()
    : previous_(vxKilnBase::setMathErrorHandler(throwNumericError)) {}

ThrowingNumericErrors::~ThrowingNumericErrors() {
  vxKilnBase::setMathErrorHandler(previous_);
}

}  // namespace surfacefit
