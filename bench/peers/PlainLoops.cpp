#include "peers/PlainLoops.h"

namespace bench {

double plainDot(int n, const double* a, const double* b, int stride) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += a[i * stride] * b[i * stride];
  return sum;
}

double plainSum(int n, const double* a, int stride) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += a[i * stride];
  return sum;
}

void plainAdd(int n, double* a, const double* b, int stride) {
  for (int i = 0; i < n; ++i) a[i * stride] += b[i * stride];
}

void plainToggleBit(std::uint8_t* bytes, int n) {
  bytes[(n - 1) / 8] ^= static_cast<std::uint8_t>(1 << ((n - 1) % 8));
}

int plainIsBitSet(const std::uint8_t* bytes, int n) {
  return bytes[(n - 1) / 8] & (1 << ((n - 1) % 8));
}

void plainSetBits(std::uint8_t* bytes, const std::int32_t* list) {
  for (; *list != 0; ++list) {
    bytes[(*list - 1) / 8] |= static_cast<std::uint8_t>(1 << ((*list - 1) % 8));
  }
}

}  // namespace bench
