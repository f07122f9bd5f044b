// Loops over strided elements and masked bytes as everybody writes them, compiled for this
// processor.
#pragma once

#include <cstdint>

namespace bench {

/// Sum of the products of `n` elements, `stride` apart.
double plainDot(int n, const double* a, const double* b, int stride);
double plainSum(int n, const double* a, int stride);
/// a += b.
void plainAdd(int n, double* a, const double* b, int stride);

/// Bit n, counted from 1, least significant first; lists of numbers end with 0.
void plainToggleBit(std::uint8_t* bytes, int n);
int plainIsBitSet(const std::uint8_t* bytes, int n);
void plainSetBits(std::uint8_t* bytes, const std::int32_t* list);

}  // namespace bench
