// Products of matrices and vectors, and transposition.
#pragma once

#include <kilnbase/linalg/GenMat.h>

namespace vxKilnBase {

// Results are new. Each product raises an error unless the inner dimensions agree; when the handler
// returns, the sums run over the indices that both factors have. A product of double with at least
// 384 rows, columns and terms a sum takes 1.8 MB of scratch while it runs. Without this memory the
// product takes longer.

/// A times B. Raises kMatrixProductError unless A has as many columns as B has rows.
template <class T>
[[nodiscard]] KILNBASE_API GenMat<T> product(const GenMat<T>& a, const GenMat<T>& b);
/// A times B transposed. Raises kMatrixProductError unless the numbers of columns agree.
template <class T>
[[nodiscard]] KILNBASE_API GenMat<T> transProduct(const GenMat<T>& a, const GenMat<T>& b);
/// A transposed times B. Raises kMatrixProductError unless the numbers of rows agree.
template <class T>
[[nodiscard]] KILNBASE_API GenMat<T> transposeProduct(const GenMat<T>& a, const GenMat<T>& b);
/// A times a column vector. Raises kMatrixVectorProductError unless A has as many columns as v
/// elements.
template <class T>
[[nodiscard]] KILNBASE_API Vec<T> product(const GenMat<T>& a, const Vec<T>& v);
/// A row vector times A. Raises kVectorMatrixProductError unless A has as many rows as v elements.
template <class T>
[[nodiscard]] KILNBASE_API Vec<T> product(const Vec<T>& v, const GenMat<T>& a);
/// A transposed.
template <class T>
[[nodiscard]] KILNBASE_API GenMat<T> transpose(const GenMat<T>& a);
/// The Kronecker product: block (i, j) is B times A(i, j).
template <class T>
[[nodiscard]] KILNBASE_API GenMat<T> kronecker(const GenMat<T>& a, const GenMat<T>& b);

}  // namespace vxKilnBase
