// The picks of the general-matrix family: DoubleGenMatPick and IntGenMatPick.
#pragma once

#include <kilnbase/linalg/GenMat.h>

namespace vxKilnBase {

/// The sub-matrix of a matrix at given rows and columns, made by `GenMat::matPick`.
///
/// Element (p, q) of the pick is element (row index p, column index q) of the matrix. The pick
/// views the matrix and both index vectors: writing through it changes the matrix.
template <class T>
class KILNBASE_API GenMatPick {
 public:
  /// Shares the storage of all three. Each index outside the matrix raises 0x4001, from the last to
  /// the first, rows before columns.
  GenMatPick(const GenMat<T>& matrix, const Vec<int>& rowIndices, const Vec<int>& columnIndices);
  GenMatPick(const GenMatPick&) = default;

  /// Each of these sets the picked elements; sizes must agree (0x4004). A source that shares
  /// storage with the pick is copied first.
  GenMatPick& operator=(const GenMat<T>& a);
  GenMatPick& operator=(const GenMatPick& pick);
  GenMatPick& operator=(T value);

  T& operator()(int p, int q) { return matrix_(rowIndices_(p), columnIndices_(q)); }
  T operator()(int p, int q) const { return matrix_(rowIndices_(p), columnIndices_(q)); }

  unsigned rows() const { return rowIndices_.length(); }
  unsigned cols() const { return columnIndices_.length(); }

 private:
  GenMat<T> matrix_;
  Vec<int> rowIndices_;
  Vec<int> columnIndices_;
};

}  // namespace vxKilnBase
