// Numeric errors of the library as exceptions, for a program that must not abort.
#pragma once

#include <stdexcept>

#include <kilnbase/linalg/MathError.h>

namespace surfacefit {

/// A numeric error other than the lack of memory. What it says is the library's message.
class NumericError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// While it lives, a numeric error throws: std::bad_alloc where memory is missing, otherwise
/// NumericError. The end of its life brings the handler before it back.
class ThrowingNumericErrors {
 public:
  ThrowingNumericErrors();
  ~ThrowingNumericErrors();
  ThrowingNumericErrors(const ThrowingNumericErrors&) = delete;
  ThrowingNumericErrors& operator=(const ThrowingNumericErrors&) = delete;

 private:
  vxKilnBase::MathErrorHandler previous_;
};

}  // namespace surfacefit
