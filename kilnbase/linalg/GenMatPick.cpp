#include <algorithm>

#include <kilnbase/linalg/GenMatPick.h>
#include <kilnbase/linalg/detail/errors.h>

namespace vxKilnBase {

namespace {

void checkIndices(const Vec<int>& indices, unsigned bound) {
  for (int k = static_cast<int>(indices.length()) - 1; k >= 0; --k) {
    const int index = indices(k);
    const bool inside = index >= 0 && static_cast<unsigned>(index) < bound;
    if (!inside) detail::raiseMatrixPick(index, static_cast<int>(bound) - 1);
  }
}

}  // namespace

template <class T>
GenMatPick<T>::GenMatPick(const GenMat<T>& matrix, const Vec<int>& rowIndices,
                          const Vec<int>& columnIndices)
    : matrix_(matrix), rowIndices_(rowIndices), columnIndices_(columnIndices) {
  checkIndices(rowIndices_, matrix_.rows());
  checkIndices(columnIndices_, matrix_.cols());
}

template <class T>
GenMatPick<T>& GenMatPick<T>::operator=(const GenMat<T>& a) {
  if (a.rows() != rows() || a.cols() != cols()) {
    detail::raiseMatrixSizes(a.rows(), a.cols(), rows(), cols());
  }
  const GenMat<T> source = a.copy();
  for (int q = 0; q < static_cast<int>(std::min(cols(), source.cols())); ++q) {
    for (int p = 0; p < static_cast<int>(std::min(rows(), source.rows())); ++p) {
      (*this)(p, q) = source(p, q);
    }
  }
  return *this;
}

template <class T>
GenMatPick<T>& GenMatPick<T>::operator=(const GenMatPick& pick) {
  return *this = GenMat<T>(pick);
}

template <class T>
GenMatPick<T>& GenMatPick<T>::operator=(T value) {
  for (int q = 0; q < static_cast<int>(cols()); ++q) {
    for (int p = 0; p < static_cast<int>(rows()); ++p) (*this)(p, q) = value;
  }
  return *this;
}

template class GenMatPick<double>;
template class GenMatPick<int>;

}  // namespace vxKilnBase
