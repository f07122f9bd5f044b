#include <cstdarg>
#include <cstdio>

#include <vx/Format.h>

int MR_vsnprintf(char* out, std::size_t size, const char* format, std::va_list arguments) {
  const int length = std::vsnprintf(out, size, format, arguments);
  if (length >= 0 && static_cast<std::size_t>(length) < size) return length;
  if (length < 0 && size > 0) out[0] = '\0';
  return -1;
}
