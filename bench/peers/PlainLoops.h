// Loops over strided elements as everybody writes them, compiled for this processor.
#pragma once

namespace bench {

/// Sum of the products of `n` elements, `stride` apart.
double plainDot(int n, const double* a, const double* b, int stride);
double plainSum(int n, const double* a, int stride);
/// a += b.
void plainAdd(int n, double* a, const double* b, int stride);

}  // namespace bench
