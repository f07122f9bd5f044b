/* Bit sets in the caller's bytes.
 *
 * Bits are numbered from 1: bit n is bit (n - 1) % 8 of byte (n - 1) / 8, counted from the least
 * significant bit. Lists of bit numbers end with 0.
 *
 * The caller's bytes must reach as far as the numbers; that is not checked. A number must not be
 * below 1. Asserted in debug builds; in release builds such a number changes nothing and counts as
 * not set.
 */
#ifndef KILNBASE_UTIL_MR_BITFIELD_H
#define KILNBASE_UTIL_MR_BITFIELD_H

#include <stdint.h>

#include <kilnbase/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Change bit `n`. */
KILNBASE_API void MR_bitfield_set(uint8_t* bytes, int n);
KILNBASE_API void MR_bitfield_unset(uint8_t* bytes, int n);
KILNBASE_API void MR_bitfield_toggle(uint8_t* bytes, int n);

/** The mask of bit `n` in its byte (1, 2, 4, ... 128) when it is set, else 0. */
KILNBASE_API int MR_bitfield_is_set(const uint8_t* bytes, int n);

/** Change the bits of the list. */
KILNBASE_API void MR_bitfield_set_multiple(uint8_t* bytes, const int32_t* list);
KILNBASE_API void MR_bitfield_unset_multiple(uint8_t* bytes, const int32_t* list);
KILNBASE_API void MR_bitfield_toggle_multiple(uint8_t* bytes, const int32_t* list);

/** 1 when a bit of the list is set, else 0. */
KILNBASE_API int MR_bitfield_is_any_set(const uint8_t* bytes, const int32_t* list);

/** 1 when the first `byte_count` bytes are all 0, else 0. */
KILNBASE_API int MR_bitfield_is_clear(const uint8_t* bytes, int byte_count);

/** Stores `value`, least significant byte first, in as many bytes as the value needs, at least one.
 * The bytes behind stay as they are. `value` must not be negative. Asserted in debug builds; in
 * release builds nothing is stored. */
KILNBASE_API void MR_bitfield_set_from_int(uint8_t* bytes, int value);

#ifdef __cplusplus
}
#endif

#endif
