#include <algorithm>

#include <kilnbase/linalg/GenMat.h>
#include <kilnbase/linalg/GenMatPick.h>
#include <kilnbase/linalg/detail/counts.h>
#include <kilnbase/linalg/detail/errors.h>
#include <kilnbase/linalg/detail/matrixText.h>

namespace vxKilnBase {

void detail::raiseSizesDiffer(unsigned bRows, unsigned bCols, unsigned rows, unsigned cols) {
  raiseMatrixSizes(bRows, bCols, rows, cols);
}

using detail::asInt;
using detail::elementCount;

namespace {

unsigned asUnsigned(std::size_t n) {
  return static_cast<unsigned>(n);
}

// The length of the longest row.
template <class T>
unsigned longest(std::initializer_list<std::initializer_list<T>> rows) {
  std::size_t length = 0;
  for (const auto& row : rows) length = std::max(length, row.size());
  return asUnsigned(length);
}

}  // namespace

// --- Making and rebinding

template <class T>
GenMat<T>::GenMat(unsigned m, unsigned n) : Base(elementCount(m, n)) {
  setSize(m, n);
}

template <class T>
GenMat<T>::GenMat(unsigned m, unsigned n, T value) : Base(elementCount(m, n), value) {
  setSize(m, n);
}

template <class T>
GenMat<T>::GenMat(std::initializer_list<std::initializer_list<T>> rows)
    : GenMat(asUnsigned(rows.size()), longest(rows), T(0)) {
  if (this->data() == nullptr) return;
  unsigned i = 0;
  for (const auto& row : rows) {
    if (row.size() != ncols_) {
      detail::raiseVectorLengths({className, 0xF000}, ncols_, asUnsigned(row.size()));
    }
    std::ranges::copy(row, this->row(asInt(i++)).begin());
  }
}

template <class T>
GenMat<T>::GenMat(const Vec<T>& v, unsigned m, unsigned n) : Base(v), ncols_(n), nrows_(m) {
  if (v.length() != std::uint64_t{m} * n) detail::raiseMatrixPoints(v.length(), m, n, className);
}

template <class T>
GenMat<T>::GenMat(const GenMatPick<T>& pick) : GenMat(pick.rows(), pick.cols()) {
  for (int j = 0; j < asInt(ncols_); ++j) {
    for (int i = 0; i < asInt(nrows_); ++i) (*this)(i, j) = pick(i, j);
  }
}

// Sets the size to m by n, or to 0 by 0 when there was no memory for so many elements.
template <class T>
void GenMat<T>::setSize(unsigned m, unsigned n) {
  const bool stored = Base::length() == std::uint64_t{m} * n;
  nrows_ = stored ? m : 0;
  ncols_ = stored ? n : 0;
}

// A view of these elements as a matrix of this size.
template <class T>
GenMat<T> GenMat<T>::withElements(const Vec<T>& elements) const {
  GenMat result(elements);
  result.setSize(nrows_, ncols_);
  return result;
}

template <class T>
GenMat<T>& GenMat<T>::operator=(const GenMat& b) {
  if (Base::isMovedFrom()) {
    reference(b.copy());
    return *this;
  }
  Base::sizeCheck(b);
  Vec<T>::operator=(b);
  return *this;
}

template <class T>
GenMat<T>& GenMat<T>::operator=(GenMat&& b) {
  if (!Base::isMovedFrom()) return *this = b;
  Base::exchange(b);
  std::swap(nrows_, b.nrows_);
  std::swap(ncols_, b.ncols_);
  return *this;
}

template <class T>
GenMat<T>& GenMat<T>::operator=(T value) {
  Vec<T>::operator=(value);
  return *this;
}

template <class T>
void GenMat<T>::reference(const GenMat& other) {
  Base::reference(other);
  nrows_ = other.nrows_;
  ncols_ = other.ncols_;
}

template <class T>
void GenMat<T>::resize(unsigned m, unsigned n) {
  if (m == nrows_) {
    Base::resize(elementCount(m, n));
    setSize(m, n);
    return;
  }
  GenMat result(m, n, T(0));
  const unsigned keptRows = std::min(result.nrows_, nrows_);
  for (int j = 0; j < asInt(std::min(result.ncols_, ncols_)); ++j) {
    result.col(j).slice(0, keptRows) = col(j).slice(0, keptRows);
  }
  reference(result);
}

template <class T>
void GenMat<T>::reshape(unsigned m, unsigned n) {
  Base::reshape(elementCount(m, n));
  setSize(m, n);
}

// --- Access

template <class T>
void GenMat<T>::elementCheck(int i, int j) const {
  if (!hasRow(i) || !hasColumn(j)) detail::raiseElement(i, j, nrows_, ncols_);
}

template <class T>
T& GenMat<T>::bcref(int i, int j) {
  elementCheck(i, j);
  return (*this)(i, j);
}

template <class T>
T GenMat<T>::bcval(int i, int j) const {
  elementCheck(i, j);
  return (*this)(i, j);
}

template <class T>
T GenMat<T>::bcset(int i, int j, T value) {
  elementCheck(i, j);
  return set(i, j, value);
}

template <class T>
Vec<T> GenMat<T>::col(int j) const {
  return Vec<T>(Base::block_, Base::begin_ + position(0, j), nrows_, Base::step_);
}

template <class T>
Vec<T> GenMat<T>::row(int i) const {
  return Base::slice(i, ncols_, asInt(nrows_));
}

template <class T>
Vec<T> GenMat<T>::diagonal(int k) const {
  const auto firstRow = std::max<std::int64_t>(-std::int64_t{k}, 0);
  const auto firstColumn = std::max<std::int64_t>(k, 0);
  const auto length = std::min(nrows_ - firstRow, ncols_ - firstColumn);
  if (length <= 0) return Base::slice(0, 0, asInt(nrows_) + 1);
  T* first = Base::begin_ + position(asInt(static_cast<unsigned>(firstRow)),
                                     asInt(static_cast<unsigned>(firstColumn)));
  return Vec<T>(Base::block_, first, static_cast<unsigned>(length),
                Base::offset(asInt(nrows_) + 1));
}

template <class T>
Vec<T> GenMat<T>::bccol(int j) const {
  if (!hasColumn(j)) detail::raiseColumn(j, ncols_);
  return col(j);
}

template <class T>
Vec<T> GenMat<T>::bcrow(int i) const {
  if (!hasRow(i)) detail::raiseRow(i, nrows_);
  return row(i);
}

template <class T>
Vec<T> GenMat<T>::bcdiagonal(int k) const {
  const std::int64_t below = -std::int64_t{k};
  if (k >= std::int64_t{ncols_} || below >= std::int64_t{nrows_}) {
    detail::raiseDiagonal(static_cast<int>(below), className, nrows_, ncols_);
  }
  return diagonal(k);
}

template <class T>
GenMatPick<T> GenMat<T>::matPick(const Vec<int>& rowIndices, const Vec<int>& columnIndices) const {
  return GenMatPick<T>(*this, rowIndices, columnIndices);
}

template <class T>
GenMatPick<T> GenMat<T>::operator()(const Vec<int>& rowIndices,
                                    const Vec<int>& columnIndices) const {
  return matPick(rowIndices, columnIndices);
}

// --- Text

template <class T>
void GenMat<T>::printOn(std::ostream& stream) const {
  detail::printMatrix(stream, *this);
}

template <class T>
void GenMat<T>::scanFrom(std::istream& stream) {
  unsigned m = 0;
  unsigned n = 0;
  Vec<T> values;
  if (!detail::readMatrix(stream, className, m, n, values)) return;
  resize(m, n);
  detail::setRows(*this, values);
}

// --- Element by element

template <class T>
GenMat<T> GenMat<T>::apply(T (*f)(T)) const {
  GenMat result = copy();
  std::transform(result.begin_, result.begin_ + result.npts_, result.begin_, f);
  return result;
}

template class GenMat<double>;
template class GenMat<int>;

}  // namespace vxKilnBase
