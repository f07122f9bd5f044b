// Severities and formats of the numeric errors, in the order of their numbers.
#pragma once

#include <iterator>

#include <kilnbase/linalg/MathError.h>

namespace vxKilnBase::detail {

inline constexpr std::uint32_t kWarning = 0;
inline constexpr std::uint32_t kDefault = 1;  // the severity of the catalogue entry
inline constexpr std::uint32_t kFatal = 2;

inline constexpr MathCatalogEntry kGeneralMessages[] = {
    {kFatal, "[BADORDER: %s]: Mismatch of function (%u) and rhs (%u) order"},
    {kFatal, "[BADPARITY: %s]: Length (%u) of a real series must be %s"},
    {kFatal, "[BADVERNO: %s]: Bad formatting version number.  Expected %d; got %d"},
    {kFatal, "[DIVZERO: %s]: Divide by zero."},
    {kFatal, "[GENERIC: %s]: Generic error number %d; %s"},
    {kFatal, "[INDEX: %s]: Index (%d) out of range [0->%u]"},
    {kFatal, "[LUNDEF: %s]: Undefined LU factorization"},
    {kFatal, "[MNMATCH: %s]: Rows or columns do not match: (%u, %u) vs (%u, %u)"},
    {kFatal, "[NOMEM: %s]: Out of memory"},
    {kFatal, "[NPOINTS: %s]: Vector (%u) %s %d"},
    {kFatal, "[NSQUARE: %s]: Matrix (%u, %u) is not square"},
    {kFatal, "[RWBREQ: %s]: RWBlock new request of size %d != correct: %d"},
    {kFatal, "[SLICE: %s]: slice (%d, %u, %d) cannot be made from vector (%u)"},
    {kFatal, "[STRIDE: %s]: Stride must be 1"},
    {kFatal, "[VMNMATCH: %s]: %s Vector (%u) does not match matrix: (%u, %u)"},
    {kFatal, "[VNMATCH: %s]: Vector lengths do not match (%u vs %u)"},
    {kWarning, "[ZEROSD: %s]: Series has zero standard deviation"},
    {kWarning, "[ZEROVEC: %s]: %s: vector is empty"},
    {kFatal, "[ZPIVOT: %s]: Pivot number %d is zero"},
    {kFatal, "[BADROOT: %s]: Zero'th root of 1 requested"},
};

inline constexpr MathCatalogEntry kMatrixMessages[] = {
    {kWarning, "Internal error, you've found a bug"},
    {kFatal, "Matrix pick out of range: index %d not in 0->%d"},
    {kFatal, "Constant reference was changed from %g to %g"},
    {kFatal, "Complex constant reference was changed from %g+i%g to %g+i%g"},
    {kFatal, "Matrix sizes don't match (%dx%d) vs (%dx%d)"},
    {kFatal, "Element (%dx%d) not in matrix of size (%ux%u)"},
    {kFatal, "Row (%d) not in matrix with %u rows"},
    {kFatal, "Column (%d) not in matrix with %u columns"},
    {kFatal, "Diagonal %d not in %s matrix of size (%ux%u)"},
    {kFatal, "Can't change element (%d,%d) of %s"},
    {kFatal, "Wrong number of points (%u) for %ux%u %s"},
    {kFatal, "Wrong number of points (%u) for %ux%u %s with bandwidth %u"},
    {kFatal, "Bandwidths don't match: lower: %u & %u, upper: %u & %u"},
    {kFatal, "%dx%d matrix not square"},
    {kWarning, "matrix not symmetric"},
    {kWarning, "matrix not anti-symmetric"},
    {kWarning, "matrix not hermetian"},
    {kWarning, "matrix not banded"},
    {kWarning, "matrix not triangular"},
    {kWarning, "matrix not tri-diagonal"},
    {kFatal, "inner product not possible between %s (%ux%u) and vector (%u)"},
    {kFatal, "inner product not possible vector(%u) and %s (%ux%u)"},
    {kFatal, "inner product not possible %s matrices (%u,%u) and (%ux%u)"},
    {kFatal, "wrong number of elements (%u) for %s (%ux%u)"},
    {kFatal, "cant build order %u leading submatrix of order %u matrix"},
    {kFatal, "Restoring %s, data vector len %d, expected %u"},
};

inline constexpr MathCatalogEntry kFactorizationMessages[] = {
    {kWarning, "Internal error, you've found a bug"},
    {kWarning, "Condition number not calculated"},
    {kFatal, "b vector length wrong (%u!=%u)"},
    {kWarning, "diagonal of Hermetian matrix being factorized is non-real"},
    {kFatal, "vector wrong length to permute (%u!=%u)"},
    {kFatal, "Invalid Cholesky shift direction"},
    {kFatal, "Invalid Cholesky shift columns (%d,%d)"},
    {kFatal, "Data matrix wrong height (%u!=%u)"},
    {kFatal, "Vector to hold sines or cosines wrong length (%u!=%u)"},
    {kFatal, "Different number of residuals than data columns (%u!=%u)"},
    {kFatal, "Internal error: The normal equations are not positive definite"},
    {kFatal, "Data %d doesn't exist, only %d data columns"},
    {kFatal, "vec pointers must have stride == 1"},
    {kFatal, "Can't factorize, %ux%u matrix not square"},
    {kFatal, "Can't factorize, bandwidth %d too big for %dx%d matrix"},
    {kWarning, "Called factor, but a factorization has already been computed"},
    {kFatal, "Matrix must have more rows than cols to be factorizable, but %d<%d"},
    {kFatal, "Can't solve system of equations, matrix not successfully factorized"},
    {kFatal, "Pivoting position specifier must be INITIAL,FREE, or FINAL, not %d"},
    {kWarning, "Can't find eigenvalues: %s"},
};

static_assert(std::size(kGeneralMessages) == kZerothRootError - kFunctionOrderError + 1);
static_assert(std::size(kMatrixMessages) == kRestoredLengthError - kMatrixInternalError + 1);
static_assert(std::size(kFactorizationMessages) ==
              kEigenvaluesError - kFactorizationInternalError + 1);

/// The entry of an error of the three catalogues above.
consteval const MathCatalogEntry& messageOf(MathErrorNumber number) {
  constexpr const MathCatalogEntry* kCatalogs[] = {kGeneralMessages, kMatrixMessages,
                                                   kFactorizationMessages};
  return kCatalogs[(number >> 12U) - 3][number & 0x0FFFU];
}

}  // namespace vxKilnBase::detail
