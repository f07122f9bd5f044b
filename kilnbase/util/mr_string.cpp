#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <kilnbase/util/mr_string.h>

void MR_string_leading_trailing_remove(char* s, char c) {
  if (!s) return;
  MR_string_trailing_remove(s, c);
  const char* first = s;
  while (*first != '\0' && *first == c) ++first;
  std::memmove(s, first, std::strlen(first) + 1);
}

void MR_string_trailing_remove(char* s, char c) {
  if (!s) return;
  std::size_t length = std::strlen(s);
  while (length > 0 && s[length - 1] == c) --length;
  s[length] = '\0';
}

void MR_string_stripchar(char* s, char c) {
  MR_string_strcpy_stripchar(s, s, c);
}

void MR_string_strcpy_stripchar(char* dst, const char* src, char c) {
  if (!dst) return;
  for (; src && *src != '\0'; ++src) {
    if (*src != c) *dst++ = *src;
  }
  *dst = '\0';
}

void MR_string_number_de_zero(char* s) {
  if (!s) return;
  MR_string_trailing_remove(s, '0');
  const std::size_t length = std::strlen(s);
  if (length == 0 || s[length - 1] == '.') std::memcpy(s + length, "0", 2);
}

void* MR_int2ptr(int value) {
  return std::bit_cast<void*>(std::uintptr_t{static_cast<unsigned>(value)});
}

int MR_ptr2int(const void* pointer) {
  return static_cast<int>(static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(pointer)));
}
