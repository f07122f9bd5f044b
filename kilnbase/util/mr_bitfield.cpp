#include <cstdint>

#include <kilnbase/detail/assert.h>
#include <kilnbase/util/mr_bitfield.h>

namespace {

bool isBitNumber(int n) {
  KILN_ASSERT(n >= 1);
  return n >= 1;
}

unsigned byteOf(int n) {
  return (static_cast<unsigned>(n) - 1) / 8;
}

std::uint8_t maskOf(int n) {
  return static_cast<std::uint8_t>(1U << ((static_cast<unsigned>(n) - 1) % 8));
}

}  // namespace

void MR_bitfield_set(std::uint8_t* bytes, int n) {
  if (isBitNumber(n)) bytes[byteOf(n)] |= maskOf(n);
}

void MR_bitfield_unset(std::uint8_t* bytes, int n) {
  if (isBitNumber(n)) bytes[byteOf(n)] &= static_cast<std::uint8_t>(~maskOf(n));
}

void MR_bitfield_toggle(std::uint8_t* bytes, int n) {
  if (isBitNumber(n)) bytes[byteOf(n)] ^= maskOf(n);
}

int MR_bitfield_is_set(const std::uint8_t* bytes, int n) {
  return isBitNumber(n) ? bytes[byteOf(n)] & maskOf(n) : 0;
}

void MR_bitfield_set_multiple(std::uint8_t* bytes, const std::int32_t* list) {
  for (; *list != 0; ++list) MR_bitfield_set(bytes, *list);
}

void MR_bitfield_unset_multiple(std::uint8_t* bytes, const std::int32_t* list) {
  for (; *list != 0; ++list) MR_bitfield_unset(bytes, *list);
}

void MR_bitfield_toggle_multiple(std::uint8_t* bytes, const std::int32_t* list) {
  for (; *list != 0; ++list) MR_bitfield_toggle(bytes, *list);
}

int MR_bitfield_is_any_set(const std::uint8_t* bytes, const std::int32_t* list) {
  while (*list != 0 && MR_bitfield_is_set(bytes, *list) == 0) ++list;
  return *list != 0 ? 1 : 0;
}

int MR_bitfield_is_clear(const std::uint8_t* bytes, int byte_count) {
  for (int i = 0; i < byte_count; ++i) {
    if (bytes[i] != 0) return 0;
  }
  return 1;
}

void MR_bitfield_set_from_int(std::uint8_t* bytes, int value) {
  KILN_ASSERT(value >= 0);
  if (value < 0) return;
  do {
    *bytes++ = static_cast<std::uint8_t>(value);
    value >>= 8;
  } while (value != 0);
}
