#include <cstdio>

#include <vx/Report.h>

void rptVError(const char* format, va_list arguments) {
  std::vfprintf(stderr, format, arguments);
}

void rptError(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  rptVError(format, arguments);
  va_end(arguments);
}
