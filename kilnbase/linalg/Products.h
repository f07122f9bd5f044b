// Products of matrices and vectors, and transposition.
#pragma once

#include <kilnbase/linalg/GenMat.h>

namespace vxKilnBase {

/// A times B, new. Raises 0x4016 unless A has as many columns as B has rows; when the handler
/// returns, the product is taken over the columns of A and rows of B that both have. So do the two
/// below.
template <class T>
KILNBASE_API GenMat<T> product(const GenMat<T>& a, const GenMat<T>& b);
/// A times B transposed.
template <class T>
KILNBASE_API GenMat<T> transProduct(const GenMat<T>& a, const GenMat<T>& b);
/// A transposed times B.
template <class T>
KILNBASE_API GenMat<T> transposeProduct(const GenMat<T>& a, const GenMat<T>& b);
/// A times a column vector. Raises 0x4014 on a mismatch.
template <class T>
KILNBASE_API Vec<T> product(const GenMat<T>& a, const Vec<T>& v);
/// A row vector times A. Raises 0x4015 on a mismatch.
template <class T>
KILNBASE_API Vec<T> product(const Vec<T>& v, const GenMat<T>& a);
/// A transposed, new.
template <class T>
KILNBASE_API GenMat<T> transpose(const GenMat<T>& a);
/// The Kronecker product, new: block (i, j) is B times A(i, j).
template <class T>
KILNBASE_API GenMat<T> kronecker(const GenMat<T>& a, const GenMat<T>& b);

}  // namespace vxKilnBase
