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

}  // namespace bench
