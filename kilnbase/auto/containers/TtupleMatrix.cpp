#include <algorithm>

#include <kilnbase/auto/containers/TtupleMatrix.h>
#include <kilnbase/auto/containers/detail/tuples.h>
#include <kilnbase/detail/assert.h>

using vxKilnBase::detail::failBoundsCheck;
using vxKilnBase::detail::isMovedFrom;
using vxKilnBase::detail::tupleElements;

namespace {

constexpr const char* kFile = "auto/containers/TtupleMatrix";

unsigned asUnsigned(int n) {
  return static_cast<unsigned>(n);
}

}  // namespace

TtupleMatrix::TtupleMatrix(int size, int rows, int cols, double value)
    : size_(std::max(size, 1)),
      rows_(std::max(rows, 0)),
      cols_(std::max(cols, 0)),
      data_(tupleElements(size_, rows_, cols_).value_or(0), value) {
  dropMissingColumns();
}

TtupleMatrix::TtupleMatrix(int size, int rows, int cols, const DoubleVec& data)
    : size_(std::max(size, 1)), rows_(std::max(rows, 0)), cols_(std::max(cols, 0)), data_(data) {
  const unsigned needed = tupleElements(size_, rows_, cols_).value_or(0);
  if (data_.length() < needed) data_.lengthCheck(needed);
  dropMissingColumns();
}

// Leaves the columns of which all elements are there.
void TtupleMatrix::dropMissingColumns() {
  const long long columnLength = static_cast<long long>(size_) * rows_;
  if (columnLength == 0) return;
  cols_ = static_cast<int>(std::min<long long>(cols_, data_.length() / columnLength));
}

TtupleMatrix& TtupleMatrix::operator=(const TtupleMatrix& other) {
  if (size_ == other.size_ && rows_ == other.rows_ && cols_ == other.cols_ &&
      data_.length() == other.data_.length()) {
    data_ = other.data_;
  } else {
    reference(other.copy());
  }
  return *this;
}

TtupleMatrix& TtupleMatrix::operator=(TtupleMatrix&& other) {
  if (!isMovedFrom(data_)) return *this = other;
  swap(*this, other);
  return *this;
}

void TtupleMatrix::reference(const TtupleMatrix& other) {
  size_ = other.size_;
  rows_ = other.rows_;
  cols_ = other.cols_;
  data_.reference(other.data_);
}

void TtupleMatrix::deepenShallowCopy() {
  data_.deepenShallowCopy();
  dropMissingColumns();
}

TtupleMatrix TtupleMatrix::copy() const {
  TtupleMatrix own = *this;
  own.data_.reference(data_.copy());
  own.dropMissingColumns();
  return own;
}

void TtupleMatrix::boundsCheck(int r, int c) const {
  checkRow(r);
  checkCol(c);
}

void TtupleMatrix::checkRow(int r) const {
  if (!correctRow(r)) failBoundsCheck("bad row", r, kFile, 37);
}

void TtupleMatrix::checkCol(int c) const {
  if (!correctCol(c)) failBoundsCheck("bad column", c, kFile, 41);
}

TtupleVector TtupleMatrix::rowVector(int r) const {
  return TtupleVector(size_, rows(IntVec(1, r)).data_);
}

TtupleVector TtupleMatrix::columnVector(int c) const {
  return TtupleVector(size_, cols(IntVec(1, c)).data_);
}

TtupleMatrix TtupleMatrix::rows(const IntVec& indices) const {
  const int count = static_cast<int>(indices.length());
  for (int k = 0; k < count; ++k) checkRow(indices(k));
  return gridOf(count, cols_, [&](int k, int c) { return point(indices(k), c); });
}

TtupleMatrix TtupleMatrix::cols(const IntVec& indices) const {
  const int count = static_cast<int>(indices.length());
  for (int k = 0; k < count; ++k) checkCol(indices(k));
  return gridOf(rows_, count, [&](int r, int k) { return point(r, indices(k)); });
}

// A new grid with `pointAt(r, c)` in row r and column c.
template <class PointAt>
TtupleMatrix TtupleMatrix::gridOf(int rows, int cols, PointAt pointAt) const {
  TtupleMatrix grid(size_, rows, cols, 0.0);
  grid.size_ = size_;
  for (int c = 0; c < grid.cols_; ++c) {
    for (int r = 0; r < rows; ++r) grid.point(r, c) = pointAt(r, c);
  }
  return grid;
}

DoubleGenMat TtupleMatrix::component(int k) const {
  KILN_ASSERT(correctTuple(k));
  if (!correctTuple(k)) return {};
  const unsigned points = asUnsigned(rows_) * asUnsigned(cols_);
  const DoubleVec elements = points == 0 ? DoubleVec() : data_.slice(k, points, size_);
  return DoubleGenMat(elements, asUnsigned(rows_), asUnsigned(cols_));
}

int TtupleMatrix::setComponent(int k, const DoubleGenMat& values) {
  const bool isOfThisSize =
      values.rows() == asUnsigned(rows_) && values.cols() == asUnsigned(cols_);
  if (!correctTuple(k) || !isOfThisSize) return 0;
  component(k) = values;
  return 1;
}

DoubleGenMat TtupleMatrix::vecLen() const {
  DoubleGenMat lengths(asUnsigned(rows_), asUnsigned(cols_));
  for (int c = 0; c < static_cast<int>(lengths.cols()); ++c) {
    for (int r = 0; r < rows_; ++r) lengths(r, c) = point(r, c).vecLen();
  }
  return lengths;
}

void TtupleMatrix::printOn(std::ostream&) const {}
void TtupleMatrix::printRaw(std::ostream&) const {}
int TtupleMatrix::readRaw(std::istream&) {
  return 0;
}
