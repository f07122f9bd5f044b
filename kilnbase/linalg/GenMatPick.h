// The picks of the general-matrix family: DoubleGenMatPick and IntGenMatPick.
#pragma once

#include <kilnbase/linalg/GenMat.h>

namespace vxKilnBase {

/// The sub-matrix of a matrix at given rows and columns, made by `GenMat::matPick`.
///
/// Element (p, q) of the pick is element (rowIndices(p), columnIndices(q)) of the matrix. The pick
/// views the matrix and both index vectors: writing to an element of the pick changes the matrix.
template <class T>
class KILNBASE_API GenMatPick {
 public:
  /// Shares the storage of all three arguments. Each index outside the matrix raises
  /// kMatrixPickError, from the last index to the first, rows before columns.
  GenMatPick(const GenMat<T>& matrix, const Vec<int>& rowIndices, const Vec<int>& columnIndices);
  GenMatPick(const GenMatPick&) = default;

  /// Each of these sets the picked elements. Sizes must agree (kMatrixSizesError). The source
  /// counts as it was before, also where it shares storage with the pick.
  GenMatPick& operator=(const GenMat<T>& a);
  GenMatPick& operator=(const GenMatPick& pick);
  GenMatPick& operator=(T value);

  /// Element (p, q) of the pick, not checked.
  T& operator()(int p, int q) { return matrix_(rowIndices_(p), columnIndices_(q)); }
  T operator()(int p, int q) const { return matrix_(rowIndices_(p), columnIndices_(q)); }

  /// The number of picked rows and columns.
  unsigned rows() const { return rowIndices_.length(); }
  unsigned cols() const { return columnIndices_.length(); }

 private:
  GenMat<T> matrix_;
  Vec<int> rowIndices_;
  Vec<int> columnIndices_;
};

}  // namespace vxKilnBase
