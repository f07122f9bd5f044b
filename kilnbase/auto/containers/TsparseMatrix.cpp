#include <algorithm>
#include <climits>
#include <cstddef>
#include <numeric>

#include <kilnbase/auto/containers/TsparseMatrix.h>
#include <kilnbase/auto/containers/detail/tuples.h>
#include <kilnbase/linalg/detail/errors.h>

using vxKilnBase::detail::isMovedFrom;
using vxKilnBase::detail::raiseMatrixVectorProduct;
using vxKilnBase::detail::raiseVectorMatrixProduct;

namespace {

constexpr const char* kClassName = "TsparseMatrix";

unsigned asLength(int n) {
  return static_cast<unsigned>(std::max(n, 0));
}

// The product of two capacities, 0 where no int holds it.
int elementCapacity(int maxRows, int maxCols) {
  const long long product = static_cast<long long>(asLength(maxRows)) * asLength(maxCols);
  return product <= INT_MAX ? static_cast<int>(product) : 0;
}

// Whether the positions from `first` on lie among the `elements` of the storage.
bool isInside(int first, int count, int elements) {
  return (first | count) >= 0 && count <= elements - first;
}

long long nonzeros(const DoubleVec& v) {
  return v.length() - v.countValue(0.0, 0.0);
}

}  // namespace

// --- Making and rebinding

TsparseMatrix::TsparseMatrix(int maxRows, int maxCols)
    : TsparseMatrix(maxRows, maxCols, elementCapacity(maxRows, maxCols)) {}

TsparseMatrix::TsparseMatrix(int maxRows, int maxCols, int maxElements)
    : maxNumberOfRows_(std::max(maxRows, 0)),
      maxNumberOfCols_(std::max(maxCols, 0)),
      maxNumberOfElements_(std::max(maxElements, 0)),
      beginnings_(asLength(maxCols), 0),
      counts_(asLength(maxCols), 0),
      indices_(asLength(maxElements)),
      data_(asLength(maxElements)) {
  emptyUnlessStored();
}

TsparseMatrix::TsparseMatrix(const DoubleGenMat& dense)
    : rows_(static_cast<int>(dense.rows())), maxNumberOfRows_(rows_) {
  if (add(dense, 1) == 0) reference(TsparseMatrix());
}

TsparseMatrix::TsparseMatrix(TsparseMatrix&& other) noexcept {
  const DoubleVec marksThisAsMovedFrom = std::move(data_);
  swap(*this, other);
}

TsparseMatrix& TsparseMatrix::operator=(TsparseMatrix&& other) {
  if (!isMovedFrom(data_)) return *this = other;
  swap(*this, other);
  return *this;
}

void swap(TsparseMatrix& a, TsparseMatrix& b) noexcept {
  std::swap(a.rows_, b.rows_);
  std::swap(a.cols_, b.cols_);
  std::swap(a.numberOfElements_, b.numberOfElements_);
  std::swap(a.maxNumberOfRows_, b.maxNumberOfRows_);
  std::swap(a.maxNumberOfCols_, b.maxNumberOfCols_);
  std::swap(a.maxNumberOfElements_, b.maxNumberOfElements_);
  swap(a.beginnings_, b.beginnings_);
  swap(a.counts_, b.counts_);
  swap(a.indices_, b.indices_);
  swap(a.data_, b.data_);
}

TsparseMatrix& TsparseMatrix::operator=(const TsparseMatrix& other) {
  TsparseMatrix own = other;
  own.deepenShallowCopy();
  swap(*this, own);
  return *this;
}

void TsparseMatrix::reference(const TsparseMatrix& other) {
  rows_ = other.rows_;
  cols_ = other.cols_;
  numberOfElements_ = other.numberOfElements_;
  maxNumberOfRows_ = other.maxNumberOfRows_;
  maxNumberOfCols_ = other.maxNumberOfCols_;
  maxNumberOfElements_ = other.maxNumberOfElements_;
  beginnings_.reference(other.beginnings_);
  counts_.reference(other.counts_);
  indices_.reference(other.indices_);
  data_.reference(other.data_);
}

void TsparseMatrix::deepenShallowCopy() {
  beginnings_.deepenShallowCopy();
  counts_.deepenShallowCopy();
  indices_.deepenShallowCopy();
  data_.deepenShallowCopy();
  emptyUnlessStored();
}

// Empties the matrix if one of its vectors did not get its storage.
void TsparseMatrix::emptyUnlessStored() {
  if (beginnings_.length() != asLength(maxNumberOfCols_) ||
      counts_.length() != asLength(maxNumberOfCols_) ||
      indices_.length() != asLength(maxNumberOfElements_) ||
      data_.length() != asLength(maxNumberOfElements_)) {
    reference(TsparseMatrix());
  }
}

bool TsparseMatrix::isDeep() const {
  const auto isOwn = [](const auto& v) { return v.length() == 0 || v.isDeep(); };
  return isOwn(beginnings_) && isOwn(counts_) && isOwn(indices_) && isOwn(data_);
}

bool TsparseMatrix::hasCapacity(int cols, int elements) const {
  return maxNumberOfCols_ == cols && maxNumberOfElements_ == elements;
}

// --- Reading and changing elements

// The number of columns that have a place in `beginnings_` and `counts_`.
int TsparseMatrix::storedCols() const {
  return std::clamp(cols_, 0, maxNumberOfCols_);
}

// Where column c stands; nowhere if a caller wrote to the vectors and it left the storage.
TsparseMatrix::Span TsparseMatrix::span(int c) const {
  if (c < 0 || c >= storedCols()) return {0, 0};
  const Span stored = {beginnings_.sub(c), counts_.sub(c)};
  return isInside(stored.first, stored.count, maxNumberOfElements_) ? stored : Span{0, 0};
}

// The position of element (r, c), or -1.
int TsparseMatrix::position(int r, int c) const {
  if (r < 0 || r >= rows_) return -1;
  const auto [first, count] = span(c);
  const int* const begin = indices_.data() + first;
  const int* const place = std::find(begin, begin + count, r);
  return place == begin + count ? -1 : static_cast<int>(place - indices_.data());
}

double TsparseMatrix::element(int r, int c) const {
  const int k = position(r, c);
  return k < 0 ? 0.0 : data_.sub(k);
}

int TsparseMatrix::setElement(int r, int c, double v) {
  const int k = position(r, c);
  if (k < 0) return 0;
  data_.sub(k) = v;
  return 1;
}

DoubleVec TsparseMatrix::row(int r) const {
  DoubleVec dense(asLength(cols_), 0.0);
  for (int c = 0; c < static_cast<int>(dense.length()); ++c) dense.sub(c) = element(r, c);
  return dense;
}

DoubleVec TsparseMatrix::col(int c) const {
  DoubleVec dense(asLength(rows_), 0.0);
  scatter(c, dense);
  return dense;
}

// Writes the elements of column c to their rows, backwards: of equal rows the first one stays.
void TsparseMatrix::scatter(int c, DoubleVec& column) const {
  const auto [first, count] = span(c);
  for (int k = first + count - 1; k >= first; --k) {
    const int r = indices_.sub(k);
    if (r >= 0 && static_cast<unsigned>(r) < column.length()) column(r) = data_.sub(k);
  }
}

int TsparseMatrix::storedCol(int c, DoubleVec& values, IntVec& rows) const {
  if (c < 0 || c >= cols_) return 0;
  const auto [first, count] = span(c);
  values.reference(data_.slice(first, asLength(count)).copy());
  rows.reference(indices_.slice(first, asLength(count)).copy());
  return 1;
}

DoubleGenMat TsparseMatrix::convert() const {
  DoubleGenMat dense(asLength(rows_), asLength(cols_), 0.0);
  for (int c = 0; c < static_cast<int>(dense.cols()); ++c) {
    DoubleVec column = dense.col(c);
    scatter(c, column);
  }
  return dense;
}

// --- Appending

int TsparseMatrix::addCol(const IntVec& rowIndices, const DoubleVec& values, int grow) {
  const unsigned n = values.length();
  if (n == 0 || rowIndices.length() != n || !makeRoom(1, n, grow)) return 0;
  append(rowIndices, values);
  return 1;
}

int TsparseMatrix::addCol(const DoubleVec& column, int grow) {
  if (!makeRoom(1, nonzeros(column), grow)) return 0;
  append(column);
  return 1;
}

int TsparseMatrix::add(const TsparseMatrix& other, int grow) {
  const int columns = other.storedCols();
  long long elements = 0;
  for (int c = 0; c < columns; ++c) elements += other.span(c).count;
  if (!makeRoom(columns, elements, grow)) return 0;
  for (int c = 0; c < columns; ++c) {
    const auto [first, count] = other.span(c);
    append(other.indices_.slice(first, asLength(count)), other.data_.slice(first, asLength(count)));
  }
  return 1;
}

int TsparseMatrix::add(const DoubleGenMat& dense, int grow) {
  if (!makeRoom(dense.cols(), nonzeros(dense), grow)) return 0;
  for (int c = 0; c < static_cast<int>(dense.cols()); ++c) append(dense.col(c));
  return 1;
}

int TsparseMatrix::set(const DoubleGenMat& dense, int maxRows, int maxCols) {
  const int rows = static_cast<int>(dense.rows());
  const int cols = std::max({maxCols, static_cast<int>(dense.cols()), 0});
  TsparseMatrix result(std::max(maxRows, rows), cols);
  result.rows_ = rows;
  if (result.maxNumberOfCols_ != cols || result.add(dense, 1) == 0) return 0;
  swap(*this, result);
  return 1;
}

// Makes storage that is this matrix's own and has room for so much more. False, with nothing
// changed, where it may not grow or cannot.
bool TsparseMatrix::makeRoom(long long columns, long long elements, int grow) {
  const long long neededCols = cols_ + columns;
  const long long neededElements = numberOfElements_ + elements;
  if (cols_ < 0 || neededCols > INT_MAX || neededElements > INT_MAX) return false;
  const bool fits = neededCols <= maxNumberOfCols_ && neededElements <= maxNumberOfElements_;
  if (!fits && grow == 0) return false;
  return growTo(fits ? 0 : rows_, static_cast<int>(neededCols), static_cast<int>(neededElements));
}

// Raises the capacity, of storage that is this matrix's own afterwards. False, with nothing
// changed, when there is no memory.
bool TsparseMatrix::growTo(int maxRows, int maxCols, int maxElements) {
  const int columns = std::max(maxNumberOfCols_, maxCols);
  const int elements = std::max(maxNumberOfElements_, maxElements);
  const int rows = std::max(maxNumberOfRows_, maxRows);
  if (isDeep() && hasCapacity(columns, elements)) {
    maxNumberOfRows_ = rows;
    return true;
  }
  TsparseMatrix grown = *this;
  grown.maxNumberOfRows_ = rows;
  grown.maxNumberOfCols_ = columns;
  grown.maxNumberOfElements_ = elements;
  grown.beginnings_.resize(asLength(columns));
  grown.counts_.resize(asLength(columns));
  grown.indices_.resize(asLength(elements));
  grown.data_.resize(asLength(elements));
  grown.deepenShallowCopy();
  if (!grown.hasCapacity(columns, elements)) return false;
  swap(*this, grown);
  return true;
}

void TsparseMatrix::append(const IntVec& rowIndices, const DoubleVec& values) {
  const int beginning = numberOfElements_;
  indices_.slice(beginning, values.length()) = rowIndices;
  data_.slice(beginning, values.length()) = values;
  numberOfElements_ += static_cast<int>(values.length());
  endColumn(beginning);
}

void TsparseMatrix::append(const DoubleVec& column) {
  const int beginning = numberOfElements_;
  for (int i = 0; i < static_cast<int>(column.length()); ++i) {
    if (column(i) != 0.0) appendElement(i, column(i));
  }
  endColumn(beginning);
}

void TsparseMatrix::appendElement(int row, double value) {
  indices_.sub(numberOfElements_) = row;
  data_.sub(numberOfElements_) = value;
  ++numberOfElements_;
}

// Ends the column of the elements from this position on.
void TsparseMatrix::endColumn(int beginning) {
  beginnings_.sub(cols_) = beginning;
  counts_.sub(cols_) = numberOfElements_ - beginning;
  ++cols_;
}

void TsparseMatrix::resizeMax(int maxRows, int maxCols) {
  growTo(maxRows, maxCols, maxNumberOfElements_);
}

void TsparseMatrix::resizeMax(int maxRows, int maxCols, int maxElements) {
  growTo(maxRows, maxCols, maxElements);
}

// --- Removing

int TsparseMatrix::removeCol(int c) {
  const IntVec column(1, c);
  return column.length() == 0 ? 0 : removeCols(column);
}

int TsparseMatrix::removeCols(const IntVec& columns) {
  return keepOrRemove(columns, false);
}

int TsparseMatrix::keepCols(const IntVec& columns) {
  return keepOrRemove(columns, true);
}

int TsparseMatrix::keepOrRemove(const IntVec& columns, bool keepsNamed) {
  std::vector<bool> kept(asLength(storedCols()), !keepsNamed);
  for (int k = 0; k < static_cast<int>(columns.length()); ++k) {
    const int c = columns(k);
    if (c < 0 || c >= storedCols()) return 0;
    kept[asLength(c)] = keepsNamed;
  }
  return reduceTo(kept, true);
}

void TsparseMatrix::removeZeros() {
  reduceTo(std::vector<bool>(asLength(storedCols()), true), false);
}

// Moves what stays to new storage of the same capacity.
int TsparseMatrix::reduceTo(const std::vector<bool>& keptColumns, bool keepsZeros) {
  TsparseMatrix rest(maxNumberOfRows_, maxNumberOfCols_, maxNumberOfElements_);
  if (!rest.hasCapacity(maxNumberOfCols_, maxNumberOfElements_)) return 0;
  rest.rows_ = rows_;
  for (int c = 0; c < storedCols(); ++c) {
    if (!keptColumns[asLength(c)]) continue;
    const int beginning = rest.numberOfElements_;
    const auto [first, count] = span(c);
    // Columns overlap only where a caller wrote to the vectors.
    if (count > rest.maxNumberOfElements_ - beginning) return 0;
    for (int k = first; k < first + count; ++k) {
      if (keepsZeros || data_.sub(k) != 0.0) rest.appendElement(indices_.sub(k), data_.sub(k));
    }
    rest.endColumn(beginning);
  }
  swap(*this, rest);
  return 1;
}

void TsparseMatrix::printOn(std::ostream&) const {}

// --- Products

namespace {

struct Entries {
  const int* rows;
  const double* values;
  int count;
};

// Whether four rows ascend from above the previous one to below the limit.
bool ascendFour(int previous, const int* rows, int limit) {
  return rows[0] > previous && rows[1] > rows[0] && rows[2] > rows[1] && rows[3] > rows[2] &&
         rows[3] < limit;
}

// y[rows[k]] += factor * values[k], for the leading elements whose rows ascend below the limit, so
// that none comes twice. Returns how many there are: all of most columns.
[[gnu::noinline]] int addAscending(double* y, const Entries& column, int limit, double factor) {
  const auto [rows, values, count] = column;
  int previous = -1;
  int k = 0;
  for (; k + 4 <= count && ascendFour(previous, rows + k, limit); k += 4) {
    for (int i = k; i < k + 4; ++i) y[rows[i]] += factor * values[i];
    previous = rows[k + 3];
  }
  for (; k < count && rows[k] > previous && rows[k] < limit; ++k) {
    y[rows[k]] += factor * values[k];
    previous = rows[k];
  }
  return k;
}

struct PartialSum {
  double sum;
  int count;
};

// The sum of x[rows[k]] * values[k] over the same elements.
[[gnu::noinline]] PartialSum sumAscending(const double* x, const Entries& column, int limit) {
  const auto [rows, values, count] = column;
  double sums[4] = {};
  int previous = -1;
  int k = 0;
  for (; k + 4 <= count && ascendFour(previous, rows + k, limit); k += 4) {
    for (int i = 0; i < 4; ++i) sums[i] += x[rows[k + i]] * values[k + i];
    previous = rows[k + 3];
  }
  double sum = (sums[0] + sums[1]) + (sums[2] + sums[3]);
  for (; k < count && rows[k] > previous && rows[k] < limit; ++k) {
    sum += x[rows[k]] * values[k];
    previous = rows[k];
  }
  return {sum, k};
}

}  // namespace

// The columns of a matrix as products read them: rows in [0, limit), of equal ones the first.
class TsparseMatrix::Columns {
 public:
  Columns(const TsparseMatrix& a, int limit)
      : beginnings_(a.beginnings_.data()),
        counts_(a.counts_.data()),
        rows_(a.indices_.data()),
        values_(a.data_.data()),
        elements_(a.maxNumberOfElements_),
        limit_(limit) {}

  // The same as `span` tells, for a column that has a place in the storage.
  Entries operator[](int c) const {
    const int first = beginnings_[c];
    const int count = counts_[c];
    if (!isInside(first, count, elements_)) return {rows_, values_, 0};
    return {rows_ + first, values_ + first, count};
  }

  // What is left of a column behind its first n elements, which ascend.
  [[gnu::noinline]] Entries distinctAfter(int n, int c) {
    const auto [rows, values, count] = (*this)[c];
    lastColumn_.resize(asLength(limit_), -1);
    distinctRows_.clear();
    distinctValues_.clear();
    for (int k = 0; k < count; ++k) {
      if (rows[k] < 0 || rows[k] >= limit_ || lastColumn_[asLength(rows[k])] == c) continue;
      lastColumn_[asLength(rows[k])] = c;
      if (k < n) continue;
      distinctRows_.push_back(rows[k]);
      distinctValues_.push_back(values[k]);
    }
    return {distinctRows_.data(), distinctValues_.data(), static_cast<int>(distinctRows_.size())};
  }

 private:
  const int* beginnings_;
  const int* counts_;
  const int* rows_;
  const double* values_;
  int elements_;
  int limit_;
  std::vector<int> lastColumn_;  // that each row was seen in, once a column did not ascend
  std::vector<int> distinctRows_;
  std::vector<double> distinctValues_;
};

DoubleVec product(const TsparseMatrix& a, const DoubleVec& v) {
  const unsigned cols = asLength(a.cols_);
  DoubleVec result(asLength(a.rows_), 0.0);
  if (v.length() != cols) {
    raiseMatrixVectorProduct(kClassName, result.length(), cols, v.length());
  }
  double* const y = result.data();
  const int limit = static_cast<int>(result.length());
  TsparseMatrix::Columns columns(a, limit);
  for (int c = 0; c < std::min(a.storedCols(), static_cast<int>(v.length())); ++c) {
    const Entries column = columns[c];
    const int added = addAscending(y, column, limit, v(c));
    if (added == column.count) continue;
    const auto [rows, values, count] = columns.distinctAfter(added, c);
    for (int k = 0; k < count; ++k) y[rows[k]] += v(c) * values[k];
  }
  return result;
}

DoubleVec product(const DoubleVec& v, const TsparseMatrix& a) {
  const unsigned rows = asLength(a.rows_);
  DoubleVec result(asLength(a.cols_), 0.0);
  if (v.length() != rows) {
    raiseVectorMatrixProduct(v.length(), kClassName, rows, result.length());
  }
  const DoubleVec own = v.stride() == 1 ? v : v.copy();
  const double* const x = own.data();
  const int limit = static_cast<int>(std::min(own.length(), rows));
  TsparseMatrix::Columns columns(a, limit);
  for (int c = 0; c < std::min(a.storedCols(), static_cast<int>(result.length())); ++c) {
    const Entries column = columns[c];
    auto [sum, added] = sumAscending(x, column, limit);
    if (added != column.count) {
      const Entries rest = columns.distinctAfter(added, c);
      for (int k = 0; k < rest.count; ++k) sum += x[rest.rows[k]] * rest.values[k];
    }
    result.sub(c) = sum;
  }
  return result;
}
