// Factorization of a symmetric indefinite matrix with an estimate of the condition.
#pragma once

namespace vxKilnBase::linpack {

/// Factors A as `dspfa` does and returns an estimate of its reciprocal condition in the 1-norm.
///
/// The estimate is in [0, 1], and not below the true reciprocal condition up to rounding. It is 0
/// when A is found singular, when A is 0, and when A or its factors have an element that is
/// infinite or NaN. `z` is a work vector of n elements. Cost: 4 n^2
/// operations more than those of the factoring.
///
/// Source: LINPACK Users' Guide, SIAM 1979, chapter 5.
double dspco(double* ap, int n, int* kpvt, double* z);

}  // namespace vxKilnBase::linpack
